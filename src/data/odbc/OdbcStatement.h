// One ODBC statement handle: sends a text with its parameters, reports the result.
#pragma once

#include "data/odbc/OdbcConnection.h"
#include "data/odbc/OdbcErrors.h"

#include <deque>
#include <span>

namespace dax {

class OdbcRows;

class OdbcStatement final : public Statement {
public:
    explicit OdbcStatement(OdbcConnection& connection);
    ~OdbcStatement() override;

    int64_t RowCount() const override;
    const std::vector<Column>& OpenRows() override;
    // True when the last statement returned rows, which are to be closed.
    bool ReturnsRows() const;
    const std::vector<Column>& Columns() const; // of the rows that are open
    bool Next() override;
    bool IsNull(size_t column) override;
    TextView FieldText(size_t column) override;
    bool AppendField(size_t column, Text& text) override;
    void Close() noexcept override;
    void Cancel() noexcept override { SQLCancel(Handle()); }

    SQLHSTMT Handle() const { return handle.Get(); }
    OdbcConnection& Owner() const { return owner; }
    void Check(SQLRETURN result);

    const Dialect& SqlDialect() const override { return owner.SqlDialect(); }
    void Run(TextView adapted, std::span<const Value> values, std::span<const int> codes) override;
    void RunBatch(std::span<const Text> adapted) override { RunBatchText(Joined(adapted)); }
    // Several statements as the engine takes them in one call.
    static Text Joined(std::span<const Text> adapted);
    void RunBatchText(const Text& batch);

private:
    struct Parameter {
        Text text;
        std::string utf8; // instead of the text, for a driver that takes UTF-8
        SQLINTEGER small = 0;
        SQLBIGINT number = 0;
        double fraction = 0;
        SQL_TIMESTAMP_STRUCT date{};
        SQLLEN length = 0;
    };
    void Bind(SQLUSMALLINT position, const Value& value, SQLSMALLINT columnType);
    void BindText(SQLUSMALLINT position, Parameter& parameter, SQLSMALLINT columnType);
    void Unbind() noexcept;
    void Send(TextView text);

    OdbcConnection& owner;
    StatementHandle handle;
    std::deque<Parameter> parameters; // drivers keep their addresses
    std::unique_ptr<OdbcRows> rows;
};

} // namespace dax
