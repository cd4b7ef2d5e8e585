// Rows of a statement or a table, read by field name or position, and rows added or updated, in ADO's vocabulary.
#pragma once

#include "data/Connection.h"

#include <memory>
#include <optional>

namespace dax {

class RecordsetState;

class Recordset {
public:
    Recordset();
    ~Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    // adUseClient reads all rows at once, so that the connection is free for other statements and RecordCount is known.
    void SetCursorLocation(CursorLocations location);

    // `source` is a statement, or a bare table name with adCmdTable. Stands on the first row afterwards.
    void Open(const Text& source, Connection& connection, CursorTypes cursor = adOpenForwardOnly,
              LockTypes lock = adLockReadOnly, int options = adOptionUnspecified);
    // Opens a connection of its own, closed with the recordset.
    void Open(const Text& source, const Text& connectionString, CursorTypes cursor = adOpenForwardOnly,
              LockTypes lock = adLockReadOnly, int options = adOptionUnspecified);
    bool IsOpen() const;
    void Cancel() noexcept;
    void Close();

    bool Eof() const;
    void MoveNext();
    // Rows in all with a client-side cursor, else -1.
    int64_t RecordCount() const;

    size_t FieldCount() const;
    Text FieldName(size_t column) const;
    // Field names match without regard to case; an unknown one throws Error.
    size_t FieldIndex(TextView name) const;
    Value Field(TextView name) const { return Field(FieldIndex(name)); }
    Value Field(size_t column) const;
    // The fast way for long loops: the text of a column in a buffer that the next MoveNext overwrites. NULL is empty.
    TextView FieldText(size_t column) const;
    std::optional<TextView> FieldTextOrNull(size_t column) const;
    bool FieldIsNull(size_t column) const { return !FieldTextOrNull(column); }

    // Start a new row (adCmdTable or an updatable lock); Update writes it.
    void AddNew();
    // Sets a field of the new or the current row, in the order of the calls; nothing is written before Update.
    void SetField(TextView name, Value value);
    void Update();

private:
    std::unique_ptr<RecordsetState> state;
};

} // namespace dax
