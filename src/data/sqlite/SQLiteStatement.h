// One statement of a SQLite file: compiled, run, and its rows read as they come.
#pragma once

#include "data/sqlite/SQLiteConnection.h"
#include "data/sqlite/StatementShape.h"

namespace dax {

class SQLiteStatement final : public Statement {
public:
    explicit SQLiteStatement(SQLiteConnection& connection);
    ~SQLiteStatement() override;
    SQLiteStatement(const SQLiteStatement&) = delete;
    SQLiteStatement& operator=(const SQLiteStatement&) = delete;

    int64_t RowCount() const override { return changes; }
    const std::vector<Column>& OpenRows() override;
    bool Next() override;
    bool IsNull(size_t column) override;
    TextView FieldText(size_t column) override;
    bool AppendField(size_t column, Text& text) override;
    std::optional<int64_t> FieldInteger(size_t column) override;
    void Close() noexcept override;
    void Cancel() noexcept override;

    // The connection is being closed: every later call throws Error.
    void Abandon() noexcept;

protected:
    const Dialect& SqlDialect() const override { return Owner().SqlDialect(); }
    void Run(TextView adapted, std::span<const Value> parameters, std::span<const int> codes) override;

private:
    struct Field {
        Text text;
        std::optional<int64_t> number;
        uint64_t row = 0, numbersRow = 0; // which the text and the number are of
        bool isNull = false;
    };
    const Field& Read(size_t column);
    bool Append(sqlite3_value* value, Text& text) const;
    SQLiteConnection& Owner() const;
    sqlite3_stmt* Opened() const;
    bool RunRepeated(TextView text);
    SQLiteStatementHandle Compile(TextView text, unsigned flags);
    void Finish(sqlite3_int64 changesBefore);
    void Bind(int position, const Value& value);
    void Step(sqlite3_stmt* statement);
    Column Describe(int column) const;

    SQLiteConnection* owner;
    SQLiteStatementHandle handle;
    std::string utf8; // the text that was sent last, whose memory is used again
    int64_t changes = -1;
    bool hasRow = false, isFresh = false; // a row is there, and not yet fetched by the caller
    std::atomic<bool> isRunning = false;
    uint64_t row = 0;
    std::vector<Column> columns;
    std::vector<Field> fields;
    StatementShape shape;
    Text lastTemplate;              // of the last statement that can be repeated; empty: none
    SQLiteStatementHandle repeated; // compiled from it at the second use
};

} // namespace dax
