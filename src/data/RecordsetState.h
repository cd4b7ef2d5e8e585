// What a recordset holds: its statement, the current row wherever it comes from, and the fields set but not written.
#pragma once

#include "data/Recordset.h"
#include "data/StoredRows.h"

#include <optional>

namespace dax {

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
