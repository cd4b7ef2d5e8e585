// What a recordset holds: its statement, the current row wherever it comes from, and the fields set but not written.
#pragma once

#include "data/Recordset.h"
#include "data/Session.h"

#include <optional>

namespace dax {

// All rows of a client-side cursor: one long text and where each value ends in it.
class StoredRows {
public:
    void Read(Statement& rows, size_t columnCount);
    size_t Count() const { return count; }
    std::optional<TextView> Field(size_t row, size_t column) const; // nothing for NULL

private:
    size_t columns = 0, count = 0;
    std::vector<uint64_t> places = {0}; // behind the first: twice where each value ends, and 1 more when it is NULL
    Text texts;
};

class RecordsetState {
public:
    void Open(const Text& source, Connection& connection, CursorTypes cursor, LockTypes lock, int options);
    void Close() noexcept;
    bool IsOpen() const { return connection != nullptr; }
    void RequireOpen() const;

    bool Eof();
    void MoveNext();
    int64_t RecordCount();
    const std::vector<Column>& Columns() const { return columns; }
    size_t FieldIndex(TextView name) const;
    // These throw when there is no current row.
    TextView FieldText(size_t column);
    std::optional<TextView> FieldTextOrNull(size_t column);
    Value Field(size_t column);

    void AddNew();
    void SetField(TextView name, Value value);
    void Update();
    void Cancel() noexcept;

    CursorLocations location = adUseServer;
    std::unique_ptr<Connection> ownConnection;

private:
    void Run(const Text& text);
    void FetchDeferred();
    void RequireRow(size_t column);
    void Insert();
    void UpdateRow();
    Text Quoted(size_t column) const;
    std::vector<size_t> KeyColumns();

    Connection* connection = nullptr;
    Text table; // empty when the recordset is not updatable
    bool isUpdatable = false, isDeferred = false, isAdding = false, atEnd = true;
    std::unique_ptr<Statement> rows; // none when all were read, or stored
    std::optional<StoredRows> stored;
    size_t storedRow = 0;
    std::vector<Column> columns;
    std::vector<std::pair<size_t, Value>> changes; // in the order of the calls
};

} // namespace dax
