#include "data/Dialect.h"

#include <array>

namespace dax {

namespace {

// Waiting for a lock ends after two seconds everywhere, so that a control never hangs on another user's work.
constexpr std::array<Dialect, 6> dialects = {{
    {
        .engine = Engine::Access,
        .name = u"Microsoft Access",
        .isBuiltIn = false,
        .connectOptions = u"",
        .firstStatement = u"",
        .adapts = false,
        .narrowOnUnix = false,
        .longestLiteral = 0,
        .statementsPerCall = 1,
        .datesAsText = false,
        .fractionDigits = 0,
        .openQuote = u'[',
        .closeQuote = u']',
        .howToGetDriver = u"On Windows install \"Microsoft Access Database Engine 2016 Redistributable\" (the 64-bit "
                          u"one for 64-bit programs). On Linux no driver can write Access files: move the data to a "
                          u"SQLite file.",
    },
    {
        .engine = Engine::SQLServer,
        .name = u"SQL Server",
        .isBuiltIn = false,
        .connectOptions = u"",
        .firstStatement = u"SET LOCK_TIMEOUT 2000",
        .adapts = false,
        .narrowOnUnix = false,
        .longestLiteral = 0,
        .statementsPerCall = 1,
        .datesAsText = false,
        .fractionDigits = 3,
        .openQuote = u'[',
        .closeQuote = u']',
        .howToGetDriver = u"On Windows install \"Microsoft ODBC Driver 18 for SQL Server\". On Debian and Ubuntu "
                          u"install the package msodbcsql18 from Microsoft's package source.",
    },
    {
        .engine = Engine::SQLite,
        .name = u"SQLite",
        .isBuiltIn = true,
        .connectOptions = u"",
        .firstStatement = u"",
        .adapts = true,
        .narrowOnUnix = false,
        .longestLiteral = 0,
        .statementsPerCall = 1,
        .datesAsText = true,
        .fractionDigits = 9,
        .openQuote = u'"',
        .closeQuote = u'"',
        .howToGetDriver = u"",
    },
    {
        .engine = Engine::PostgreSQL,
        .name = u"PostgreSQL",
        .isBuiltIn = false,
        // The protocol with a savepoint per statement: a failed statement must not spoil the transaction.
        .connectOptions = u"Protocol=7.4-2",
        .firstStatement = u"SET lock_timeout = 2000",
        .adapts = true,
        .narrowOnUnix = false,
        .longestLiteral = 0,
        .statementsPerCall = 100,
        .datesAsText = false,
        .fractionDigits = 6,
        .openQuote = u'"',
        .closeQuote = u'"',
        .howToGetDriver = u"On Debian and Ubuntu install the package odbc-postgresql. On Windows install \"psqlODBC\" "
                          u"(psqlodbc_x64.msi for 64-bit programs, psqlodbc_x86.msi for 32-bit ones).",
    },
    {
        .engine = Engine::MariaDB,
        .name = u"MariaDB",
        .isBuiltIn = false,
        // OPTION: 2 counts rows found instead of rows changed, 67108864 takes several statements in one call.
        .connectOptions = u"OPTION=67108866;CHARSET=utf8mb4",
        .firstStatement = u"SET SESSION sql_mode = CONCAT(@@SESSION.sql_mode, ',NO_BACKSLASH_ESCAPES'), "
                          u"innodb_lock_wait_timeout = 2, lock_wait_timeout = 2",
        .adapts = true,
        // The driver takes a unit whose low byte is D8 to DB for half of a pair, and reads on behind the end.
        .narrowOnUnix = true,
        // The driver needs time quadratic in the quotes inside a literal.
        .longestLiteral = 8000,
        .statementsPerCall = 100,
        .datesAsText = false,
        .fractionDigits = 6,
        .openQuote = u'`',
        .closeQuote = u'`',
        .howToGetDriver = u"On Debian and Ubuntu install the package odbc-mariadb. On Windows install \"MariaDB "
                          u"Connector/ODBC\".",
    },
    {
        .engine = Engine::Other,
        .name = u"the database",
        .isBuiltIn = false,
        .connectOptions = u"",
        .firstStatement = u"",
        .adapts = false,
        .narrowOnUnix = false,
        .longestLiteral = 0,
        .statementsPerCall = 1,
        .datesAsText = false,
        .fractionDigits = 3,
        .openQuote = u'"',
        .closeQuote = u'"',
        .howToGetDriver = u"Check its name in the connection string, or install it.",
    },
}};

} // namespace

const Dialect& DialectOf(Engine engine) {
    for (const Dialect& dialect : dialects)
        if (dialect.engine == engine) return dialect;
    return dialects.back();
}

Engine EngineFromName(TextView name) {
    static constexpr std::pair<TextView, Engine> words[] = {
        {u"sqlite", Engine::SQLite},        {u"postgres", Engine::PostgreSQL}, {u"psqlodbc", Engine::PostgreSQL},
        {u"mariadb", Engine::MariaDB},      {u"maodbc", Engine::MariaDB},      {u"mysql", Engine::MariaDB},
        {u"sql server", Engine::SQLServer}, {u"msodbcsql", Engine::SQLServer}, {u"freetds", Engine::SQLServer},
        {u"access", Engine::Access},        {u".mdb", Engine::Access},
    };
    const Text lower = LowerAscii(name);
    for (const auto& [word, engine] : words)
        if (lower.find(word) != Text::npos) return engine;
    return Engine::Other;
}

} // namespace dax
