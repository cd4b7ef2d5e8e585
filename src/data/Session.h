// The seam between the hosts' vocabulary (Connection, Recordset, Command) and the ways to reach a database. There are
// two: SQLite's own interface (data/sqlite) and ODBC (data/odbc). Nothing above it knows which of them it talks to.
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

// Tells the observer; whatever sends a statement that did not come through Statement calls it.
void Observe(TextView statement);

// How the values of a column are to be read; what does not fit stays a text.
enum class FieldType { Text, Boolean, Integer, Fraction, Date };

struct Column {
    Text name;
    FieldType type = FieldType::Text;
    int code = 0; // what a parameter that goes to this column is told (see Execute); 0: nothing
};

// One statement at a time, with its rows, used again and again. Every call but Close and Cancel throws Error.
class Statement {
public:
    virtual ~Statement() = default;

    // Adapts the statement to the engine, notifies the observer, runs it. `codes`, when given, are those of the columns
    // that the parameters go to: an engine with strict types needs them for NULL and for texts.
    void Execute(TextView statement, std::span<const Value> parameters = {}, std::span<const int> codes = {});
    // The same, but may return before the engine has done it, so that the next one can be prepared meanwhile. Await
    // waits for it and throws what went wrong; so does the next statement. Until then nothing else may be asked of this
    // one.
    void Start(TextView statement, std::vector<Value> parameters);
    virtual void Await() {}
    // Several that were fitted already, in one call where the engine takes that; all are done, or Error of the first
    // that failed.
    void ExecuteBatch(std::span<const Text> adapted);

    // Rows that the last statement changed, -1 where the engine does not report it.
    virtual int64_t RowCount() const = 0;

    // Describes the columns; Error when the statement has no rows to give. Then Next stands on the first row, and on
    // each one after it; false at the end, behind which nobody may ask.
    virtual const std::vector<Column>& OpenRows() = 0;
    virtual bool Next() = 0;
    virtual bool IsNull(size_t column) = 0;
    // Valid until the next row; NULL is empty.
    virtual TextView FieldText(size_t column) = 0;
    // The same behind a text that collects many; false, and nothing, for NULL.
    virtual bool AppendField(size_t column, Text& text) {
        if (IsNull(column)) return false;
        text += FieldText(column);
        return true;
    }
    // The value where the engine keeps it as a whole number, which spares reading it from a text.
    virtual std::optional<int64_t> FieldInteger(size_t) { return std::nullopt; }

    // Gives the rows back, and whatever the engine holds for them.
    virtual void Close() noexcept = 0;
    // From any thread; what runs ends soon, with an error.
    virtual void Cancel() noexcept = 0;

protected:
    virtual const Dialect& SqlDialect() const = 0;
    // The text as it is, behind what ran before.
    virtual void Run(TextView adapted, std::span<const Value> parameters, std::span<const int> codes) = 0;
    virtual void RunAsync(Text adapted, std::vector<Value> parameters) { Run(adapted, parameters, {}); }
    virtual void RunBatch(std::span<const Text> adapted);
};

// An open connection and its transaction. Its end rolls back what was not committed.
class Session {
public:
    // Takes every form of connection string (see ConnectionString.h); throws Error with what a person can do about it.
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
    // Nothing when no transaction is open. Whatever goes wrong, none is open afterwards.
    virtual void Rollback() = 0;
    virtual bool InTransaction() const = 0;

    // From now on a call may take that much longer than the connection string allows, and when that is over the server
    // is not asked to stop: for a statement that does the work of many, and must not be left half done.
    virtual void ExtendLimit(std::chrono::seconds) {}

    // The columns of a table's key, none when it has no key or none can be told.
    virtual std::vector<Text> KeyColumns(const Text& table) = 0;
    // Of the catalog or file, without the engine's own; on a server also those of other schemas.
    virtual std::vector<Text> TableNames() = 0;
    // Ends before its session does.
    virtual std::unique_ptr<RowWriter> NewRows(const Text& table, const std::vector<RowColumn>& columns);

protected:
    Session() = default;
    // Told when it can be used: until then all calls together have the time for opening, from then on each its own.
    virtual void EndOpening() {}
};

} // namespace dax
