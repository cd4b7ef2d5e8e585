// Complete statement texts: adapting them to an engine, and parsing them with regard to quotes and comments.
#pragma once

#include "data/Dialect.h"

#include <optional>

namespace dax {

// `SELECT TOP n …` becomes `SELECT … LIMIT n`, #y/m/d h:m:s# becomes 'yyyy-mm-dd hh:mm:ss', never inside '…', "…",
// […], `…` or a comment; nothing is touched after a quote that does not end. Engines that do not adapt get it verbatim.
Text AdaptStatement(TextView statement, const Dialect& dialect);
// True, at little cost, for most of the statements that adapting leaves as they are.
bool PassesUnchanged(TextView statement, const Dialect& dialect);

// True when the statement ends where it seems to, so that another may follow it in one call: every quote is closed,
// there is no comment and no semicolon outside quotes.
bool IsSingleStatement(TextView statement);

// Replaces the literals of more than `maxUnits` units by question marks.
// Nothing when there is none, or when the statement already has question marks.
struct Parametrized {
    Text statement;
    std::vector<Value> values;
};
std::optional<Parametrized> ParametrizeLongLiterals(TextView statement, size_t maxUnits);
// The same for the literals that contain a NUL character; nothing also when one is outside literals.
std::optional<Parametrized> ParametrizeLiteralsWithNul(TextView statement);

// The table that a simple SELECT reads: the first name after FROM.
Text TableOf(TextView statement);

} // namespace dax
