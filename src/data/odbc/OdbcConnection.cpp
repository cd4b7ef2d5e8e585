#include "data/odbc/OdbcConnection.h"

#include "data/odbc/OdbcErrors.h"
#include "data/odbc/OdbcStatement.h"

#include <array>

namespace dax {

namespace {

SQLPOINTER AsPointer(uintptr_t number) { return reinterpret_cast<SQLPOINTER>(number); }

} // namespace

OdbcConnection::OdbcConnection(const ConnectionTarget& target)
    : environment(OpenEnvironment()), dialect(&DialectOf(target.engine)) {
    connection = ConnectionHandle(environment.Get());
    if (!connection) ThrowOdbcError(SQL_HANDLE_ENV, environment.Get(), *dialect);
    Connect(target);
    try {
        Prepare();
    } catch (...) {
        SQLDisconnect(connection.Get());
        throw;
    }
}

OdbcConnection::~OdbcConnection() {
    if (inTransaction) SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_ROLLBACK);
    if (isConnected) SQLDisconnect(connection.Get());
}

void OdbcConnection::Connect(const ConnectionTarget& target) {
    SQLSetConnectAttr(connection.Get(), SQL_ATTR_LOGIN_TIMEOUT, AsPointer(static_cast<uintptr_t>(target.timeout)), 0);
    SQLSMALLINT length = 0;
    SQLRETURN result;
    if (IsNarrow()) {
        const std::string utf8 = ToUtf8(target.odbcString);
        std::array<SQLCHAR, 1024> completed;
        result = SQLDriverConnect(connection.Get(), nullptr, Narrow(utf8.c_str()), SQL_NTS, completed.data(),
                                  static_cast<SQLSMALLINT>(completed.size()), &length, SQL_DRIVER_NOPROMPT);
    } else {
        std::array<char16_t, 1024> completed;
        result = SQLDriverConnectW(connection.Get(), nullptr, Wide(target.odbcString.c_str()), SQL_NTS,
                                   Wide(completed.data()), static_cast<SQLSMALLINT>(completed.size()), &length,
                                   SQL_DRIVER_NOPROMPT);
    }
    if (!SQL_SUCCEEDED(result)) ThrowConnectError(target);
    isConnected = true;
}

void OdbcConnection::ThrowConnectError(const ConnectionTarget& target) {
    const Diagnostic diagnostic = ReadDiagnostic(SQL_HANDLE_DBC, connection.Get(), *dialect);
    if (DriverIsMissing(diagnostic)) {
        if (target.driver.empty())
            throw Error(ErrorNumbers::Unspecified, u"The data source of the connection string is not set up on this "
                                                   u"machine, or its driver is missing: " +
                                                       diagnostic.message);
        throw Error(ErrorNumbers::Unspecified,
                    u"The ODBC driver \"" + target.driver + u"\" is not installed. " + Text(dialect->howToGetDriver));
    }
    ThrowOdbcError(SQL_HANDLE_DBC, connection.Get(), *dialect);
}

void OdbcConnection::Prepare() {
    if (dialect->engine == Engine::Other) {
        std::array<SQLCHAR, 256> name{};
        SQLSMALLINT length = 0;
        SQLGetInfo(connection.Get(), SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &length);
        dialect = &DialectOf(EngineFromName(FromUtf8(reinterpret_cast<const char*>(name.data()))));
    }
    SQLUINTEGER extensions = 0;
    constexpr SQLUINTEGER freely = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BOUND;
    SQLGetInfo(connection.Get(), SQL_GETDATA_EXTENSIONS, &extensions, sizeof extensions, nullptr);
    getsDataFreely = (extensions & freely) == freely;

    if (!dialect->firstStatement.empty()) OdbcStatement(*this).ExecuteUnobserved(dialect->firstStatement);
}

std::unique_ptr<Statement> OdbcConnection::NewStatement() { return std::make_unique<OdbcStatement>(*this); }

void OdbcConnection::Begin() {
    if (inTransaction) throw Error(ErrorNumbers::Unspecified, u"A transaction is open already on this connection.");
    CheckOdbc(SQLSetConnectAttr(connection.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_OFF), 0),
              SQL_HANDLE_DBC, connection.Get(), *dialect);
    inTransaction = true;
}

void OdbcConnection::Commit() {
    if (!inTransaction) throw Error(ErrorNumbers::Unspecified, u"No transaction is open on this connection.");
    CheckOdbc(SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_COMMIT), SQL_HANDLE_DBC, connection.Get(), *dialect);
    EndTransaction();
}

void OdbcConnection::Rollback() {
    if (!inTransaction) return;
    const SQLRETURN result = SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_ROLLBACK);
    // Whatever went wrong: what was not committed is lost, and autocommit may go on only when nothing is pending.
    inTransaction = false;
    CheckOdbc(result, SQL_HANDLE_DBC, connection.Get(), *dialect);
    EndTransaction();
}

void OdbcConnection::EndTransaction() {
    inTransaction = false;
    CheckOdbc(SQLSetConnectAttr(connection.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_ON), 0), SQL_HANDLE_DBC,
              connection.Get(), *dialect);
}

std::vector<Text> OdbcConnection::KeyColumns(const Text& table) {
    OdbcStatement keys(*this);
    SQLRETURN result;
    if (IsNarrow()) {
        const std::string utf8 = ToUtf8(table);
        result = SQLPrimaryKeys(keys.Handle(), nullptr, 0, nullptr, 0, Narrow(utf8.c_str()), SQL_NTS);
    } else {
        result = SQLPrimaryKeysW(keys.Handle(), nullptr, 0, nullptr, 0, Wide(table.c_str()), SQL_NTS);
    }
    std::vector<Text> columns;
    if (!SQL_SUCCEEDED(result)) return columns;
    keys.OpenRows();
    while (keys.Next()) columns.emplace_back(keys.FieldText(3)); // COLUMN_NAME
    return columns;
}

} // namespace dax
