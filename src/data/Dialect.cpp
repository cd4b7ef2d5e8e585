#include "data/Dialect.h"

#include <array>

namespace dax {

namespace {

constexpr DriverOption postgresOptions[] = {
    // A savepoint before each statement of a transaction: without it a failed one takes with it what was done before.
    {.keyword = u"Protocol", .otherNames = u"A1", .value = u"7.4-2"},
    {.keyword = u"LFConversion", .otherNames = u"C5", .value = u"0"}, // or "\n" is read as "\r\n"
    {.keyword = u"IgnoreTimeout", .otherNames = u"D9", .value = u"0"},
    {.keyword = u"UseDeclareFetch", .otherNames = u"B6", .value = u"0"}, // fetching would wait for the server
    // Keep-alive: a connection whose server has stopped ends by itself, also an abandoned one.
    {.keyword = u"KeepaliveTime", .otherNames = u"", .value = u"30", .isDefault = true},
    {.keyword = u"KeepaliveInterval", .otherNames = u"", .value = u"10", .isDefault = true},
    {.keyword = u"AB", .otherNames = u"", .value = u"", .clearedBits = 8, .isHexadecimal = true}, // reads NULL as ''
};

constexpr DriverOption mariaOptions[] = {
    // Counts rows found instead of rows changed, takes several statements in one call. Cleared: blanks after texts,
    // columns named with their table, no transactions, and reconnecting automatically, which would continue half a
    // transaction and without the settings below, rows read while they are fetched, which would wait for the server.
    // Other drivers of this engine have words for them.
    {.keyword = u"OPTION",
     .otherNames = u"OPTIONS;FOUND_ROWS;MULTI_STATEMENTS;PAD_SPACE;FULL_COLUMN_NAMES;NO_TRANSACTIONS;NO_CACHE",
     .value = u"",
     .setBits = 2 + 67108864,
     .clearedBits = 512 + 1024 + 262144 + 1048576 + 4194304},
    {.keyword = u"AUTO_RECONNECT", .otherNames = u"", .value = u"0"},
    {.keyword = u"CHARSET", .otherNames = u"", .value = u"utf8mb4"},
};

constexpr SessionSetting serverSettings[] = {
    {.statement = u"SET LOCK_TIMEOUT 2000"},
    // Dates are written year/month/day; the rest may differ by the server's "user options".
    {.statement = u"SET DATEFORMAT ymd SET NOCOUNT OFF SET XACT_ABORT OFF SET IMPLICIT_TRANSACTIONS OFF SET ROWCOUNT 0 "
                  u"SET TEXTSIZE 2147483647"},
};

constexpr SessionSetting postgresSettings[] = {
    {.statement = u"SET standard_conforming_strings = on",
     .asQuery = u"SELECT set_config('standard_conforming_strings', 'on', false)",
     .isProbed = true},
    {.statement = u"SET client_encoding = 'UTF8'", .asQuery = u"SELECT set_config('client_encoding', 'UTF8', false)"},
    {.statement = u"SET DateStyle = 'ISO, YMD'", .asQuery = u"SELECT set_config('DateStyle', 'ISO, YMD', false)"},
    {.statement = u"SET lock_timeout = 2000",
     .otherwise = u"SET statement_timeout = 30000",
     .asQuery = u"SELECT set_config('lock_timeout', '2000', false)"},
};

constexpr SessionSetting mariaSettings[] = {
    {.statement = u"SET character_set_client = utf8mb4, character_set_connection = utf8mb4, "
                  u"character_set_results = utf8mb4"},
    // Whole: of the other modes some store texts cut, or "?" for letters that a column cannot hold, without an error,
    // and some read '' as NULL.
    {.statement = u"SET sql_mode = 'NO_BACKSLASH_ESCAPES,STRICT_ALL_TABLES,NO_ENGINE_SUBSTITUTION'"},
    {.statement = u"SET autocommit = 1, sql_select_limit = 18446744073709551615"},
    {.statement = u"SET innodb_lock_wait_timeout = 2, lock_wait_timeout = 2",
     .otherwise = u"SET lock_wait_timeout = 2"},
    // On a node of a cluster, reading waits for what was committed on the others. A node that has lost touch with them
    // would call that a lock; without waiting it says what is wrong. A server without clusters lacks the variable.
    {.statement = u"SET wsrep_sync_wait = IF(@@wsrep_on, (SELECT VARIABLE_VALUE = 'ON' FROM "
                  u"information_schema.GLOBAL_STATUS WHERE VARIABLE_NAME = 'wsrep_ready'), 0)",
     .otherwise = u"SET autocommit = 1"},
};

// Waiting for a lock ends after two seconds everywhere, so that a control never hangs on another user's work.
constexpr std::array<Dialect, 6> dialects = {{
    {
        .engine = Engine::Access,
        .name = u"Microsoft Access",
        // Its driver requires all its calls on one thread.
        .timeoutBy = TimeoutBy::Driver,
        .openQuote = u'[',
        .closeQuote = u']',
        .howToGetDriver = u"On Windows install \"Microsoft Access Database Engine 2016 Redistributable\" (the 64-bit "
                          u"one for 64-bit programs). On Linux no driver can write Access files: move the data to a "
                          u"SQLite file.",
    },
    {
        .engine = Engine::SQLServer,
        .name = u"SQL Server",
        .settings = serverSettings,
        .fractionDigits = 3,
        .openQuote = u'[',
        .closeQuote = u']',
        .howToGetDriver = u"On Windows install \"Microsoft ODBC Driver 18 for SQL Server\". On Debian and Ubuntu "
                          u"install the package msodbcsql18 from Microsoft's package source.",
        .lockingRead = u" WITH (TABLOCKX, HOLDLOCK)",
    },
    {
        .engine = Engine::SQLite,
        .name = u"SQLite",
        .isBuiltIn = true,
        .timeoutBy = TimeoutBy::Driver,
        .valueQuoting = ValueQuoting::WhereNeeded,
        .adapts = true,
        .datesAsText = true,
        // Changes nothing, and makes the transaction one that writes.
        .blockWriters = u"UPDATE velmoraLessons SET lessonID = lessonID WHERE 1 = 0",
    },
    {
        .engine = Engine::PostgreSQL,
        .name = u"PostgreSQL",
        .driverOptions = postgresOptions,
        .valueQuoting = ValueQuoting::Secrets,
        .settings = postgresSettings,
        .probe = u"SELECT length('\\\\')",
        .answer = u"2",
        .adapts = true,
        .statementsPerCall = 100,
        .fractionDigits = 6,
        .howToGetDriver = u"On Debian and Ubuntu install the package odbc-postgresql. On Windows install \"psqlODBC\" "
                          u"(psqlodbc_x64.msi for 64-bit programs, psqlodbc_x86.msi for 32-bit ones).",
        .blockWriters = u"LOCK TABLE velmoraLessons IN SHARE ROW EXCLUSIVE MODE",
        .connectsOneAtATime = true,
    },
    {
        .engine = Engine::MariaDB,
        .name = u"MariaDB",
        .driverOptions = mariaOptions,
        .valueQuoting = ValueQuoting::Trimmed,
        .settings = mariaSettings,
        .probe = u"SELECT CHAR_LENGTH('\\\\ü')",
        .answer = u"3",
        .adapts = true,
        // The driver takes a unit whose low byte is D8 to DB for half of a pair, and reads beyond the end.
        .narrowOnUnix = true,
        // The driver needs time quadratic in the quotes inside a literal.
        .maxLiteral = 8000,
        .statementsPerCall = 100,
        .fractionDigits = 6,
        .openQuote = u'`',
        .closeQuote = u'`',
        .howToGetDriver = u"On Debian and Ubuntu install the package odbc-mariadb. On Windows install \"MariaDB "
                          u"Connector/ODBC\".",
        .lockingRead = u" FOR UPDATE",
    },
    {
        .engine = Engine::Other,
        .name = u"the database",
        .valueQuoting = ValueQuoting::WhereNeeded,
        .fractionDigits = 3,
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
