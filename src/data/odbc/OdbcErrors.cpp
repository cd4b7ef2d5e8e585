#include "data/odbc/OdbcErrors.h"

#include <array>

namespace dax {

namespace {

struct Rule {
    Engine engine; // Other: every engine
    int32_t number;
    TextView state{};    // the beginning of the SQLSTATE
    TextView fragment{}; // of the message; empty: any
    SQLINTEGER native{}; // 0: any
};

// The first rule that fits decides. For engines that report everything as HY000, native number and text decide.
constexpr Rule rules[] = {
    {Engine::PostgreSQL, ErrorNumbers::Authentication, u"", u"password authentication failed"},
    {Engine::PostgreSQL, ErrorNumbers::Authentication, u"", u"no password supplied"},
    {Engine::PostgreSQL, ErrorNumbers::Authentication, u"28"},
    {Engine::PostgreSQL, ErrorNumbers::NoTable, u"42P01"},
    {Engine::PostgreSQL, ErrorNumbers::Permission, u"42501"},
    {Engine::PostgreSQL, ErrorNumbers::Permission, u"25006"},
    {Engine::PostgreSQL, ErrorNumbers::Timeout, u"55P03"},
    {Engine::PostgreSQL, ErrorNumbers::Timeout, u"57014"},
    {Engine::MariaDB, ErrorNumbers::Timeout, u"", u"", 1205},
    {Engine::MariaDB, ErrorNumbers::Permission, u"", u"", 1044},
    {Engine::MariaDB, ErrorNumbers::Permission, u"", u"", 1142},
    {Engine::MariaDB, ErrorNumbers::Permission, u"", u"", 1143},
    {Engine::MariaDB, ErrorNumbers::Permission, u"", u"", 1290},
    {Engine::MariaDB, ErrorNumbers::DataOverflow, u"", u"", 1406},
    // State and number are lost for a late statement of several in one call.
    {Engine::MariaDB, ErrorNumbers::Integrity, u"HY000", u"Duplicate entry"},
    {Engine::MariaDB, ErrorNumbers::Integrity, u"HY000", u"foreign key constraint fails"},
    {Engine::MariaDB, ErrorNumbers::Integrity, u"HY000", u"cannot be null"},
    {Engine::MariaDB, ErrorNumbers::NoTable, u"HY000", u"doesn't exist"},
    {Engine::MariaDB, ErrorNumbers::SyntaxOrColumn, u"HY000", u"SQL syntax"},
    {Engine::MariaDB, ErrorNumbers::Timeout, u"HY000", u"Lock wait timeout"},
    {Engine::SQLServer, ErrorNumbers::Timeout, u"", u"", 1222},
    {Engine::SQLServer, ErrorNumbers::Permission, u"", u"", 229},
    {Engine::Other, ErrorNumbers::NoTable, u"42S02"},
    {Engine::Other, ErrorNumbers::SyntaxOrColumn, u"42"},
    {Engine::Other, ErrorNumbers::Integrity, u"23"},
    {Engine::Other, ErrorNumbers::Authentication, u"28"},
    {Engine::Other, ErrorNumbers::DataOverflow, u"22001"},
    {Engine::Other, ErrorNumbers::DataOverflow, u"22003"},
    {Engine::Other, ErrorNumbers::DataMismatch, u"22"},
    {Engine::Other, ErrorNumbers::Timeout, u"HYT"},
};

// What the engine's message lacks: what has become of the user's work, and what to do.
struct Advice {
    Engine engine; // Other: every engine
    TextView sentence;
    TextView state{}; // the others as in a rule
    TextView fragment{};
    SQLINTEGER native{};
};

constexpr TextView conflictAdvice = u"Another transaction changed the same rows at the same moment, so the server "
                                    u"rolled this one back. Try again, or load again to see what has changed.";
constexpr TextView lostServer =
    u"The connection to the server was lost, and with it what was not committed. Check that "
    u"the server is running and can be reached, and try again.";
constexpr Advice advices[] = {
    {Engine::MariaDB, conflictAdvice, u"", u"", 1213},
    {Engine::MariaDB, conflictAdvice, u"", u"Deadlock found"},
    {Engine::PostgreSQL, conflictAdvice, u"40"},
    {Engine::MariaDB,
     u"This server has lost its connection to most of its cluster and accepts no statements until it is "
     u"restored. Connect to another node, or ask the administrator.",
     u"", u"", 1047},
    {Engine::MariaDB, lostServer, u"", u"", 2006},
    {Engine::MariaDB, lostServer, u"", u"", 2013},
    {Engine::MariaDB, lostServer, u"", u"Lost connection to server"},
    {Engine::PostgreSQL, lostServer, u"57P0"},
    {Engine::PostgreSQL, lostServer, u"", u"server closed the connection"},
    {Engine::PostgreSQL, lostServer, u"", u"internal SAVEPOINT failed"},
    {Engine::Other, lostServer, u"08S01"},
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
    while (message.starts_with(u'[')) {
        const size_t end = message.find(u']');
        if (end == TextView::npos) break;
        message.remove_prefix(end + 1);
    }
    constexpr TextView driversRemark = u";\nError while executing the query";
    if (message.ends_with(driversRemark)) message.remove_suffix(driversRemark.size());
    return Text(TrimBlanks(message.substr(0, message.find_last_not_of(u"\r\n") + 1)));
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
    // SQL Server says first that the login failed, and then that it failed because the catalog is missing.
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
        diagnostic.message = u"The ODBC driver for " + Text(dialect.name) + u" failed without a message.";
    ThrowDiagnostic(diagnostic, dialect.engine);
}

void ThrowDiagnostic(const Diagnostic& diagnostic, Engine engine) {
    throw Error(NumberOf(diagnostic, engine), WithAdvice(diagnostic, engine));
}

} // namespace dax
