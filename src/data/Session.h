// The interface between the classes for hosts (Connection, Recordset, Command) and the database back ends. There are
// two: SQLite's own interface (data/sqlite) and ODBC (data/odbc). Code above it does not depend on which is used.
#pragma once

#include "base/Value.h"
#include "data/Dialect.h"
#include "data/RowWriter.h"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace dax {

// Notifies the observer; to be called for statements that are not sent through Statement.
void Observe(TextView statement);

// How the values of a column are to be read; what does not fit stays a text.
enum class FieldType { Text, Boolean, Integer, Fraction, Date };

struct Column {
    Text name;
    FieldType type = FieldType::Text;
    int code = 0; // the type code for a parameter of this column (see Execute); 0: none
};

// One statement at a time, with its rows, used again and again. Every call but Close and Cancel throws Error.
class Statement {
public:
    virtual ~Statement() = default;

    // Adapts the statement to the engine, notifies the observer, runs it. `codes`, when given, are those of the columns
    // of the parameters: an engine with strict types needs them for NULL and for texts.
    void Execute(TextView statement, std::span<const Value> parameters = {}, std::span<const int> codes = {});
    // The same, but may return before the engine has done it, so that the next one can be prepared meanwhile. Await
    // waits for it and throws its error; so does the next statement. Until then no other member of this object may be
    // called.
    void Start(TextView statement, std::vector<Value> parameters);
    virtual void Await() {}
    // Several that were adapted already, in one call where the engine takes that; all are done, or Error of the first
    // that failed.
    void ExecuteBatch(std::span<const Text> adapted);

    // Rows that the last statement changed, -1 where the engine does not report it.
    virtual int64_t RowCount() const = 0;

    // Describes the columns; Error when the statement has no rows to give. Then Next moves to the first row, and to
    // each one after it; false at the end, after which Next must not be called.
    virtual const std::vector<Column>& OpenRows() = 0;
    virtual bool Next() = 0;
    virtual bool IsNull(size_t column) = 0;
    // Valid until the next row; NULL is empty.
    virtual TextView FieldText(size_t column) = 0;
    // Appends it to a text; false, and no change, for NULL.
    virtual bool AppendField(size_t column, Text& text) {
        if (IsNull(column)) return false;
        text += FieldText(column);
        return true;
    }
    // The value where the engine keeps it as a whole number, which avoids parsing a text.
    virtual std::optional<int64_t> FieldInteger(size_t) { return std::nullopt; }

    // Closes the rows and frees what the engine holds for them.
    virtual void Close() noexcept = 0;
    // From any thread; a running statement ends soon, with an error.
    virtual void Cancel() noexcept = 0;

protected:
    virtual const Dialect& SqlDialect() const = 0;
    // Sends the text as it is, after what is still running.
    virtual void Run(TextView adapted, std::span<const Value> parameters, std::span<const int> codes) = 0;
    virtual void RunAsync(Text adapted, std::vector<Value> parameters) { Run(adapted, parameters, {}); }
    virtual void RunBatch(std::span<const Text> adapted);
};

// An open connection and its transaction. The destructor rolls back what was not committed.
class Session {
public:
    // Takes every form of connection string (see ConnectionString.h); throws Error with what the user can do about it.
    static std::unique_ptr<Session> Open(const Text& connectionString);
    virtual ~Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    virtual const Dialect& SqlDialect() const = 0;
    // Ends before its session does.
    virtual std::unique_ptr<Statement> NewStatement() = 0;

    virtual void Begin() = 0;
    // A failed commit leaves the transaction open.
    virtual void Commit() = 0;
    // Does nothing when no transaction is open. Even after an error none is open.
    virtual void Rollback() = 0;
    virtual bool InTransaction() const = 0;

    // From now on a call may take that much longer than the connection string allows, and after a time-out the server
    // is not requested to stop: for one statement that does the work of many and must not be left incomplete.
    virtual void ExtendLimit(std::chrono::seconds) {}

    // The columns of a table's key, none when it has no key or it cannot be determined.
    virtual std::vector<Text> KeyColumns(const Text& table) = 0;
    // Of the catalog or file, without the engine's own; on a server also those of other schemas.
    virtual std::vector<Text> TableNames() = 0;
    // Ends before its session does.
    virtual std::unique_ptr<RowWriter> NewRows(const Text& table, const std::vector<RowColumn>& columns);

protected:
    Session() = default;
    // Called when opening is complete: until then all calls share the time for opening, then each has its own.
    virtual void EndOpening() {}
};

} // namespace dax
