// Finished statement texts: fitting them to an engine, and looking into them without being fooled by quotes.
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
bool StandsAlone(TextView statement);

// Takes the literals of more than `longest` units out of a statement: a question mark stands for each.
// Nothing when there is none, or when the statement has question marks of its own.
struct Parametrized {
    Text statement;
    std::vector<Value> values;
};
std::optional<Parametrized> TakeLongLiterals(TextView statement, size_t longest);
// The same for the literals that have a character of the number zero; nothing also when one stands anywhere else.
std::optional<Parametrized> TakeLiteralsWithZeros(TextView statement);

// The table that a simple SELECT reads: the first name behind FROM.
Text TableOf(TextView statement);

} // namespace dax
