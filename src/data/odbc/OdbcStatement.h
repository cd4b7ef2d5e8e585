// One ODBC statement handle: sends a text with its parameters, tells what came of it.
#pragma once

#include "data/odbc/OdbcConnection.h"
#include "data/odbc/OdbcErrors.h"

#include <deque>
#include <span>

namespace dax {

class OdbcStatement {
public:
    explicit OdbcStatement(OdbcConnection& connection);

    // Adapts the statement, tells the observer, sends it. `columnTypes`, when given, are the ODBC types of the columns
    // that the parameters go to (0: not known): an engine with strict types wants them for NULL and for texts.
    void Execute(TextView statement, std::span<const Value> parameters = {},
                 std::span<const SQLSMALLINT> columnTypes = {});
    // Several in one call; all are done, or Error of the first that failed.
    void ExecuteBatch(std::span<const Text> adapted);
    void ExecuteUnobserved(TextView adapted);

    int64_t RowCount() const;
    void CloseCursor() noexcept;
    void Cancel() noexcept { SQLCancel(Handle()); }

    SQLHSTMT Handle() const { return handle.Get(); }
    OdbcConnection& Owner() const { return owner; }
    const Diagnostic& LastDiagnostic() const { return lastDiagnostic; }
    void Check(SQLRETURN result);

private:
    struct Parameter {
        Text text;
        std::string utf8; // instead of the text, for a driver that speaks UTF-8
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
    Diagnostic lastDiagnostic;
};

void Observe(TextView statement);

} // namespace dax
