#include "data/odbc/OdbcConnection.h"

#include "data/odbc/OdbcErrors.h"
#include "data/odbc/OdbcStatement.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace dax {

namespace {

SQLPOINTER AsPointer(uintptr_t number) { return reinterpret_cast<SQLPOINTER>(number); }

constexpr SQLINTEGER sqliteNotADatabase = 26;

Text DescribeFile(const Text& path, const Diagnostic& diagnostic) {
    const Text name = u"'" + path + u"'";
    switch (KindOfFile(path)) {
    case FileKind::Missing:
        return u"The database file " + name + u" does not exist.";
    case FileKind::Directory:
        return name + u" is a folder, not a database file.";
    case FileKind::Access:
        return name + u" is a Microsoft Access file, not a SQLite file. " +
               Text(DialectOf(Engine::Access).howToGetDriver);
    case FileKind::Unknown:
        if (diagnostic.native == sqliteNotADatabase) return name + u" is not a database file, or it is encrypted.";
        break;
    default:
        break;
    }
    return u"The database file " + name + u" cannot be opened: " + diagnostic.message;
}

// What the string means on this machine. The manager reads its files several times for each driver that it names, so
// they are asked for once, and again when the one that is wanted was not among them.
ConnectionTarget TargetHere(const Text& connectionString, const EnvironmentHandle& environment) {
    static std::mutex mutex;
    static std::vector<Text> known;
    const std::scoped_lock lock(mutex);
    const auto translate = [&] {
        return TranslateConnectionString(connectionString, {known, [&](TextView dataSource) {
                                                                return DriverOfDataSource(environment, dataSource);
                                                            }});
    };
    if (known.empty()) known = InstalledDrivers(environment);
    ConnectionTarget target = translate();
    if (target.driver.empty() ||
        std::ranges::any_of(known, [&](const Text& name) { return EqualNoCase(name, target.driver); }))
        return target;
    known = InstalledDrivers(environment);
    return translate();
}

} // namespace

OdbcConnection::OdbcConnection(const Text& connectionString) : environment(OpenEnvironment()) {
    const ConnectionTarget target = TargetHere(connectionString, environment);
    dialect = &DialectOf(target.engine);
    connection = ConnectionHandle(environment.Get());
    if (!connection) ThrowOdbcError(SQL_HANDLE_ENV, environment.Get(), *dialect);
    Connect(target);
    try {
        Prepare(target);
    } catch (...) {
        scratch.reset();
        SQLDisconnect(connection.Get());
        throw;
    }
}

OdbcConnection::~OdbcConnection() {
    scratch.reset();
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
    if (!target.path.empty() && dialect->engine == Engine::SQLite)
        throw Error(NumberOf(diagnostic, dialect->engine), DescribeFile(target.path, diagnostic));
    ThrowOdbcError(SQL_HANDLE_DBC, connection.Get(), *dialect);
}

void OdbcConnection::Prepare(const ConnectionTarget& target) {
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

    OdbcStatement& statement = Scratch();
    if (!dialect->firstStatement.empty()) statement.ExecuteUnobserved(dialect->firstStatement);
    if (dialect->probe.empty()) return;
    try {
        statement.ExecuteUnobserved(dialect->probe);
        statement.CloseCursor();
    } catch (const Error& error) {
        if (target.path.empty()) throw;
        const Diagnostic diagnostic = statement.LastDiagnostic();
        throw Error(error.Number(), DescribeFile(target.path, diagnostic));
    }
}

void OdbcConnection::Begin() {
    if (inTransaction) throw Error(ErrorNumbers::Unspecified, u"A transaction is open already on this connection.");
    CheckOdbc(SQLSetConnectAttr(connection.Get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_OFF), 0),
              SQL_HANDLE_DBC, connection.Get(), *dialect);
    inTransaction = true;
}

void OdbcConnection::Commit() {
    if (!inTransaction) throw Error(ErrorNumbers::Unspecified, u"No transaction is open on this connection.");
    Scratch().CloseCursor();
    CheckOdbc(SQLEndTran(SQL_HANDLE_DBC, connection.Get(), SQL_COMMIT), SQL_HANDLE_DBC, connection.Get(), *dialect);
    EndTransaction();
}

void OdbcConnection::Rollback() {
    if (!inTransaction) return;
    Scratch().CloseCursor();
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

OdbcStatement& OdbcConnection::Scratch() {
    if (!scratch) scratch = std::make_unique<OdbcStatement>(*this);
    return *scratch;
}

void OdbcConnection::Cancel() noexcept {
    if (scratch) scratch->Cancel();
}

} // namespace dax
