// The differences between the engines: one row per engine. No other code depends on the engine.
#pragma once

#include "data/Connection.h"

#include <span>

namespace dax {

// A driver option that is set whatever the host's string or a data source says, because texts, rows or transactions
// would silently be wrong otherwise.
struct DriverOption {
    TextView keyword;
    TextView otherNames; // aliases of the driver for it, or for parts of it; separated by ';'
    TextView value;      // instead of the host's; empty: the host's number, but for these bits
    uint32_t setBits = 0, clearedBits = 0;
    bool isHexadecimal = false;
    bool isDefault = false; // only when the string does not set it
};

// A statement that a session begins with, for the same reason.
struct SessionSetting {
    TextView statement;
    TextView otherwise = {}; // where the engine rejects it
    TextView asQuery = {};   // where the driver is set to pass only queries
    bool isProbed = false;   // when all are refused, the probe shows whether it is needed at all
};

// Which values are put in braces in a string for the driver, and which cannot be passed at all.
enum class ValueQuoting {
    WhereNeeded, // the driver is unknown: only what would end a value too early
    Standard,    // whatever has a special character
    Secrets,     // passwords and statements, which would be decoded otherwise; of others the driver keeps the braces
    Trimmed,     // as Standard, but the driver cuts blanks off the ends all the same
};

// What ends a call that takes longer than the connection string allows.
enum class TimeoutBy {
    Driver,     // the driver, or nothing: its calls run on the caller's thread
    CallThread, // we: its calls run on a thread of the connection, which is abandoned
};

struct Dialect {
    Engine engine;
    TextView name;          // for messages
    bool isBuiltIn = false; // reached without a driver

    TimeoutBy timeoutBy = TimeoutBy::CallThread;

    // Connecting: the options that are always set, the statements run first, a query that must return `answer`.
    std::span<const DriverOption> driverOptions = {};
    ValueQuoting valueQuoting = ValueQuoting::Standard;
    std::span<const SessionSetting> settings = {};
    TextView probe = {};
    TextView answer = {};

    // Statement texts: TOP and #dates# rewritten; sent as UTF-8 because the Unix driver has no wide functions;
    // literals longer than this become parameters (0: never); how many statements go in one call.
    bool adapts = false;
    bool narrowOnUnix = false;
    size_t maxLiteral = 0;
    size_t statementsPerCall = 1;

    // Parameters: dates as text, for columns that keep dates as text; digits of a second that a date can carry.
    bool datesAsText = false;
    int fractionDigits = 0;

    // Quotes around identifiers in generated statements.
    char16_t openQuote = u'"', closeQuote = u'"';

    // How to get a driver, for users who have none.
    TextView howToGetDriver = {};

    // Inside a transaction: a statement that blocks other writers of velmoraLessons until its end, and what follows
    // the table's name in a query that does. Access has neither: only its own row locks protect there.
    TextView blockWriters = {}, lockingRead = {};

    // The driver changes the process's locale while it connects, which two threads must not do at a time.
    bool connectsOneAtATime = false;
};

// What a batch may hold in all, in UTF-16 units.
inline constexpr size_t maxBatch = 500000;

const Dialect& DialectOf(Engine engine);
// From the name of a driver, or from the name that a server reports.
Engine EngineFromName(TextView name);

} // namespace dax
