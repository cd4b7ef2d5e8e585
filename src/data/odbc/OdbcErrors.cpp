#include "data/odbc/OdbcErrors.h"

#include <array>

namespace dax {

namespace {

struct Rule {
    Engine engine;     // Other: every engine
    TextView state;    // the beginning of the SQLSTATE
    SQLINTEGER native; // 0: any
    TextView fragment; // of the message; empty: any
    int32_t number;
};

// The first rule that fits decides. Engines that report everything as HY000 tell more by native number and text.
constexpr Rule rules[] = {
    {Engine::PostgreSQL, u"", 0, u"password authentication failed", ErrorNumbers::Authentication},
    {Engine::PostgreSQL, u"", 0, u"no password supplied", ErrorNumbers::Authentication},
    {Engine::PostgreSQL, u"28", 0, u"", ErrorNumbers::Authentication},
    {Engine::PostgreSQL, u"42P01", 0, u"", ErrorNumbers::NoTable},
    {Engine::PostgreSQL, u"42501", 0, u"", ErrorNumbers::Permission},
    {Engine::PostgreSQL, u"25006", 0, u"", ErrorNumbers::Permission},
    {Engine::PostgreSQL, u"55P03", 0, u"", ErrorNumbers::Timeout},
    {Engine::PostgreSQL, u"57014", 0, u"", ErrorNumbers::Timeout},
    {Engine::MariaDB, u"", 1205, u"", ErrorNumbers::Timeout},
    {Engine::MariaDB, u"", 1044, u"", ErrorNumbers::Permission},
    {Engine::MariaDB, u"", 1142, u"", ErrorNumbers::Permission},
    {Engine::MariaDB, u"", 1143, u"", ErrorNumbers::Permission},
    {Engine::MariaDB, u"", 1290, u"", ErrorNumbers::Permission},
    {Engine::MariaDB, u"", 1406, u"", ErrorNumbers::DataOverflow},
    // State and number are lost for a late statement of several in one call.
    {Engine::MariaDB, u"HY000", 0, u"Duplicate entry", ErrorNumbers::Integrity},
    {Engine::MariaDB, u"HY000", 0, u"foreign key constraint fails", ErrorNumbers::Integrity},
    {Engine::MariaDB, u"HY000", 0, u"cannot be null", ErrorNumbers::Integrity},
    {Engine::MariaDB, u"HY000", 0, u"doesn't exist", ErrorNumbers::NoTable},
    {Engine::MariaDB, u"HY000", 0, u"SQL syntax", ErrorNumbers::SyntaxOrColumn},
    {Engine::MariaDB, u"HY000", 0, u"Lock wait timeout", ErrorNumbers::Timeout},
    {Engine::SQLServer, u"", 1222, u"", ErrorNumbers::Timeout},
    {Engine::SQLServer, u"", 229, u"", ErrorNumbers::Permission},
    {Engine::Other, u"42S02", 0, u"", ErrorNumbers::NoTable},
    {Engine::Other, u"42", 0, u"", ErrorNumbers::SyntaxOrColumn},
    {Engine::Other, u"23", 0, u"", ErrorNumbers::Integrity},
    {Engine::Other, u"28", 0, u"", ErrorNumbers::Authentication},
    {Engine::Other, u"22001", 0, u"", ErrorNumbers::DataOverflow},
    {Engine::Other, u"22003", 0, u"", ErrorNumbers::DataOverflow},
    {Engine::Other, u"22", 0, u"", ErrorNumbers::DataMismatch},
    {Engine::Other, u"HYT", 0, u"", ErrorNumbers::Timeout},
};

// What the engine's own words do not tell a person: what has happened to his work, and what he can do.
struct Advice {
    Engine engine;     // Other: every engine
    TextView state;    // the beginning of the SQLSTATE; empty: any
    SQLINTEGER native; // 0: any
    TextView fragment; // of the message; empty: any
    TextView sentence;
};

constexpr TextView metAnother =
    u"Another transaction changed the same rows at the same moment, so the server has taken "
    u"this one back. Try again, or load again to see what has changed.";
constexpr TextView lostServer =
    u"The connection to the server was lost, and with it what was not committed. Check that "
    u"the server is running and can be reached, and try again.";
constexpr Advice advices[] = {
    {Engine::MariaDB, u"", 1213, u"", metAnother},
    {Engine::MariaDB, u"", 0, u"Deadlock found", metAnother},
    {Engine::PostgreSQL, u"40", 0, u"", metAnother},
    {Engine::MariaDB, u"", 1047, u"",
     u"This server has lost touch with most of its cluster and takes no statements until it is back. Connect to "
     u"another "
     u"node, or ask the administrator."},
    {Engine::MariaDB, u"", 2006, u"", lostServer},
    {Engine::MariaDB, u"", 2013, u"", lostServer},
    {Engine::MariaDB, u"", 0, u"Lost connection to server", lostServer},
    {Engine::PostgreSQL, u"57P0", 0, u"", lostServer},
    {Engine::PostgreSQL, u"", 0, u"server closed the connection", lostServer},
    {Engine::PostgreSQL, u"", 0, u"internal SAVEPOINT failed", lostServer},
    {Engine::Other, u"08S01", 0, u"", lostServer},
};

template <typename Rule>
bool Fits(const Rule& rule, const Diagnostic& diagnostic, Engine engine) {
    return (rule.engine == Engine::Other || rule.engine == engine) && diagnostic.state.starts_with(rule.state) &&
           (rule.native == 0 || rule.native == diagnostic.native) &&
           (rule.fragment.empty() || diagnostic.message.find(rule.fragment) != Text::npos);
}

Text WithAdvice(const Diagnostic& diagnostic, Engine engine) {
    for (const Advice& advice : advices)
        if (Fits(advice, diagnostic, engine)) return Text(advice.sentence) + u" (" + diagnostic.message + u")";
    return diagnostic.message;
}

Text WithoutLayers(TextView message) {
    while (!message.empty() && message.front() == u'[') {
        const size_t end = message.find(u']');
        if (end == TextView::npos) break;
        message.remove_prefix(end + 1);
    }
    constexpr TextView driversRemark = u";\nError while executing the query";
    if (message.ends_with(driversRemark)) message.remove_suffix(driversRemark.size());
    while (!message.empty() && (message.back() == u'\n' || message.back() == u'\r')) message.remove_suffix(1);
    return Text(TrimBlanks(message));
}

bool ReadRecord(SQLSMALLINT kind, SQLHANDLE handle, bool narrow, SQLSMALLINT record, Diagnostic& diagnostic) {
    SQLSMALLINT length = 0;
    if (narrow) {
        std::array<SQLCHAR, 6> state{};
        std::array<SQLCHAR, 4096> message{};
        if (!SQL_SUCCEEDED(SQLGetDiagRec(kind, handle, record, state.data(), &diagnostic.native, message.data(),
                                         static_cast<SQLSMALLINT>(message.size()), &length)))
            return false;
        diagnostic.state = FromUtf8(reinterpret_cast<const char*>(state.data()));
        diagnostic.message = WithoutLayers(FromUtf8(reinterpret_cast<const char*>(message.data())));
        return true;
    }
    std::array<char16_t, 6> state{};
    std::array<char16_t, 4096> message{};
    if (!SQL_SUCCEEDED(SQLGetDiagRecW(kind, handle, record, Wide(state.data()), &diagnostic.native,
                                      Wide(message.data()), static_cast<SQLSMALLINT>(message.size()), &length)))
        return false;
    diagnostic.state = state.data();
    diagnostic.message = WithoutLayers(message.data());
    return true;
}

} // namespace

Diagnostic ReadDiagnostic(SQLSMALLINT kind, SQLHANDLE handle, const Dialect& dialect) {
    const bool narrow = dialect.narrowOnUnix && ManagerIsUnix();
    Diagnostic first, current;
    for (SQLSMALLINT record = 1; ReadRecord(kind, handle, narrow, record, current); ++record) {
        if (record == 1) first = current;
        if (!current.state.starts_with(u"01")) return current;
    }
    return first;
}

int32_t NumberOf(const Diagnostic& diagnostic, Engine engine) {
    for (const Rule& rule : rules)
        if (Fits(rule, diagnostic, engine)) return rule.number;
    return ErrorNumbers::Unspecified;
}

void ThrowOpenError(SQLHDBC connection, const Dialect& dialect) {
    Diagnostic diagnostic = ReadDiagnostic(SQL_HANDLE_DBC, connection, dialect);
    if (diagnostic.message.empty()) ThrowOdbcError(SQL_HANDLE_DBC, connection, dialect);
    int32_t number = NumberOf(diagnostic, dialect.engine);
    // SQL Server says first that the login failed, and then that it failed for want of the catalog.
    constexpr SQLINTEGER serverCannotOpenCatalog = 4060;
    if (dialect.engine == Engine::SQLServer) {
        Diagnostic other;
        for (SQLSMALLINT record = 1; ReadRecord(SQL_HANDLE_DBC, connection, false, record, other); ++record) {
            if (other.native != serverCannotOpenCatalog) continue;
            diagnostic = other;
            number = ErrorNumbers::Unspecified;
        }
    }
    if (number != ErrorNumbers::Authentication && number != ErrorNumbers::Timeout) number = ErrorNumbers::Unspecified;
    throw Error(number, diagnostic.message);
}

bool DriverIsMissing(const Diagnostic& diagnostic) {
    return diagnostic.state == u"IM002" || diagnostic.state == u"IM003" ||
           (diagnostic.state == u"01000" && diagnostic.message.find(u"open lib") != Text::npos);
}

void ThrowOdbcError(SQLSMALLINT kind, SQLHANDLE handle, const Dialect& dialect) {
    Diagnostic diagnostic = ReadDiagnostic(kind, handle, dialect);
    if (diagnostic.message.empty())
        diagnostic.message = u"The ODBC driver for " + Text(dialect.name) + u" failed without saying why.";
    ThrowDiagnostic(diagnostic, dialect.engine);
}

void ThrowDiagnostic(const Diagnostic& diagnostic, Engine engine) {
    throw Error(NumberOf(diagnostic, engine), WithAdvice(diagnostic, engine));
}

} // namespace dax
