// Statements that differ in their literals only, as those of a save do, are compiled once: the literals go as
// parameters, which the engine treats the same wherever a statement without rows may have them.
#pragma once

#include "base/Text.h"
#include "data/sqlite/SQLite.h"

#include <vector>

namespace dax {

// A statement with a question mark for each literal, and the literals.
class StatementShape {
public:
    // False for a statement that is to be run as it is: one that is no INSERT, UPDATE or DELETE, or that has no
    // literals, parameters of its own, a comment or a second statement.
    bool Read(TextView statement);
    // False when a number in it may be that of a column (ORDER BY 1), which no parameter can be.
    bool MayRepeat() const;
    const Text& Template() const { return text; }
    // In the order of the question marks; the texts stay as long as the statement that was read does.
    int Bind(sqlite3_stmt* compiled);

private:
    struct Literal {
        TextView quoted; // without the outer quotes; empty for a number
        bool isText = false;
        sqlite3_int64 number = 0;
    };
    bool TakeText(TextView statement, size_t& at, size_t& copied);
    void TakeNumber(TextView statement, size_t& at, size_t& copied);

    Text text, single;
    std::vector<Literal> literals;
    std::vector<std::string> texts; // what is bound, whose memory is used again
};

} // namespace dax
