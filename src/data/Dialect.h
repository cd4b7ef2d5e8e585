// What each engine wants and cannot: one row per engine. Nothing else asks which engine it is.
#pragma once

#include "data/Connection.h"

namespace dax {

struct Dialect {
    Engine engine;
    TextView name;  // as people call it
    bool isBuiltIn; // reached without a driver

    // Connecting: keywords added unless the host gives them, statements run first.
    TextView connectOptions;
    TextView firstStatement;

    // Statement texts: TOP and #dates# rewritten; sent as UTF-8 because the Unix driver has no wide functions;
    // literals longer than this become parameters (0: never); how many statements go in one call.
    bool adapts;
    bool narrowOnUnix;
    size_t longestLiteral;
    size_t statementsPerCall;

    // Parameters: dates as text, for columns that keep dates as text; digits of a second that a date can carry.
    bool datesAsText;
    int fractionDigits;

    // Identifiers in generated statements stand between these.
    char16_t openQuote, closeQuote;

    // How to get a driver, for the person who lacks it.
    TextView howToGetDriver;
};

// What a batch may hold in all, in UTF-16 units.
inline constexpr size_t longestBatch = 500000;

const Dialect& DialectOf(Engine engine);
// From the name of a driver, or from the name by which a server introduces itself.
Engine EngineFromName(TextView name);

} // namespace dax
