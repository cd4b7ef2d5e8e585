#include "data/odbc/OdbcConnection.h"

#include "data/odbc/OdbcErrors.h"
#include "data/odbc/OdbcStatement.h"

#include <array>
#include <mutex>
#include <utility>

namespace dax {

namespace {

// Our own limit, where there is one, ends first, with a better message.
int LoginLimit(const ConnectionTarget& target) {
    return target.timeout + (DialectOf(target.engine).timeoutBy == TimeoutBy::CallThread ? secondsForDriver : 0);
}

SQLPOINTER AsPointer(uintptr_t number) { return reinterpret_cast<SQLPOINTER>(number); }

} // namespace

OdbcConnection::OdbcConnection(const ConnectionTarget& target)
    : environment(OpenEnvironment()), dialect(&DialectOf(target.engine)),
      statementLimit(dialect->timeoutBy == TimeoutBy::Driver ? target.commandTimeout : 0) {
    connection = ConnectionHandle(environment.Get());
    if (!connection) ThrowOdbcError(SQL_HANDLE_ENV, environment.Get(), *dialect);
    Connect(target);
    dialect = &DialectOf(EngineConnectedTo());
    SQLUINTEGER extensions = 0;
    constexpr SQLUINTEGER freely = SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER | SQL_GD_BOUND;
    SQLGetInfo(connection.Get(), SQL_GETDATA_EXTENSIONS, &extensions, sizeof extensions, nullptr);
    hasGetDataAnyOrder = (extensions & freely) == freely;
}

OdbcConnection::~OdbcConnection() {
    if (inTransaction) SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_ROLLBACK);
    if (isConnected) SQLDisconnect(connection.Get());
}

void OdbcConnection::Connect(const ConnectionTarget& target) {
    SQLSetConnectAttr(connection.Get(), SQL_ATTR_LOGIN_TIMEOUT, AsPointer(static_cast<uintptr_t>(LoginLimit(target))),
                      0);
    SQLSMALLINT length = 0;
    SQLRETURN result;
    static std::mutex connecting;
    std::unique_lock<std::mutex> turn(connecting, std::defer_lock);
    if (dialect->connectsOneAtATime) turn.lock(); // the driver's own time limit ends what holds it
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
    if (turn) turn.unlock();
    if (!SQL_SUCCEEDED(result)) ThrowConnectError(target);
    isConnected = true;
}

void OdbcConnection::ThrowConnectError(const ConnectionTarget& target) {
    const Diagnostic diagnostic = ReadDiagnostic(SQL_HANDLE_DBC, connection.Get(), *dialect);
    if (DriverIsMissing(diagnostic)) {
        if (target.driver.empty())
            throw Error(u"The data source of the connection string is not set up on this "
                        u"machine, or its driver is missing: " +
                        diagnostic.message);
        throw Error(u"The ODBC driver \"" + target.driver + u"\" is not installed. " + Text(dialect->howToGetDriver));
    }
    ThrowOpenError(connection.Get(), *dialect);
}

Engine OdbcConnection::EngineConnectedTo() const {
    if (dialect->engine != Engine::Other) return dialect->engine;
    std::array<SQLCHAR, 256> name{};
    SQLSMALLINT length = 0;
    SQLGetInfo(connection.Get(), SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &length);
    return EngineFromName(FromUtf8(reinterpret_cast<const char*>(name.data())));
}

std::unique_ptr<Statement> OdbcConnection::NewStatement() { return std::make_unique<OdbcStatement>(*this); }

void OdbcConnection::Begin() {
    if (inTransaction) throw Error(u"A transaction is already open on this connection.");
    CheckOdbc(SQLSetConnectAttr(connection.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_OFF), 0),
              SQL_HANDLE_DBC, connection.Get(), *dialect);
    inTransaction = true;
}

void OdbcConnection::Commit() {
    if (!inTransaction) throw Error(u"No transaction is open on this connection.");
    CheckOdbc(SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_COMMIT), SQL_HANDLE_DBC, connection.Get(), *dialect);
    EndTransaction();
}

void OdbcConnection::Rollback() {
    // After any failure, what was not committed is lost, and autocommit may go on only when nothing is pending.
    if (!std::exchange(inTransaction, false)) return;
    CheckOdbc(SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_ROLLBACK), SQL_HANDLE_DBC, connection.Get(), *dialect);
    EndTransaction();
}

void OdbcConnection::EndTransaction() {
    inTransaction = false;
    CheckOdbc(SQLSetConnectAttr(connection.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_ON), 0), SQL_HANDLE_DBC,
              connection.Get(), *dialect);
}

// Without its name some drivers list the tables of all catalogs.
Text OdbcConnection::CatalogName() const {
    SQLINTEGER length = 0;
    if (IsNarrow()) {
        std::array<SQLCHAR, 1024> name{};
        SQLGetConnectAttr(Handle(), SQL_ATTR_CURRENT_CATALOG, name.data(), static_cast<SQLINTEGER>(name.size()),
                          &length);
        return FromUtf8(reinterpret_cast<const char*>(name.data()));
    }
    std::array<char16_t, 1024> name{};
    SQLGetConnectAttrW(Handle(), SQL_ATTR_CURRENT_CATALOG, name.data(), static_cast<SQLINTEGER>(sizeof name), &length);
    return name.data();
}

std::vector<Text> OdbcConnection::KeyColumns(const Text& table) {
    OdbcStatement keys(*this);
    const Text catalog = CatalogName();
    SQLRETURN result;
    if (IsNarrow()) {
        const std::string name = ToUtf8(catalog), utf8 = ToUtf8(table);
        result = SQLPrimaryKeys(keys.Handle(), name.empty() ? nullptr : Narrow(name.c_str()), SQL_NTS, nullptr, 0,
                                Narrow(utf8.c_str()), SQL_NTS);
    } else {
        result = SQLPrimaryKeysW(keys.Handle(), catalog.empty() ? nullptr : Wide(catalog.c_str()), SQL_NTS, nullptr, 0,
                                 Wide(table.c_str()), SQL_NTS);
    }
    std::vector<Text> columns;
    if (!SQL_SUCCEEDED(result)) return columns;
    keys.OpenRows();
    while (keys.Next()) columns.emplace_back(keys.FieldText(3)); // COLUMN_NAME
    return columns;
}

std::vector<Text> OdbcConnection::TableNames() {
    OdbcStatement names(*this);
    const Text catalog = CatalogName();
    if (IsNarrow()) {
        const std::string name = ToUtf8(catalog);
        names.Check(SQLTables(names.Handle(), name.empty() ? nullptr : Narrow(name.c_str()), SQL_NTS, nullptr, 0,
                              nullptr, 0, Narrow("TABLE"), SQL_NTS));
    } else {
        names.Check(SQLTablesW(names.Handle(), catalog.empty() ? nullptr : Wide(catalog.c_str()), SQL_NTS, nullptr, 0,
                               nullptr, 0, Wide(u"TABLE"), SQL_NTS));
    }
    std::vector<Text> tables;
    names.OpenRows();
    while (names.Next()) tables.emplace_back(names.FieldText(2)); // TABLE_NAME
    return tables;
}

} // namespace dax
