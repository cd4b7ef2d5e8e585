// The tables of the content and the connector database, and the statements that create them on each engine.
// For tools and tests: the components never create or alter a table.
#pragma once

#include "data/Connection.h"

#include <span>
#include <vector>

namespace dax::Schema {

enum class Database { Content, Connector };

enum class ColumnType {
    Key,      // a text compared exactly where the engine lets us choose; at most 255 units where it needs a limit
    LongText, // a text of any length
    Number,   // 32 bits
    Date,     // date and time, to the second at least
    Counter,  // a number that the database generates
};

struct Column {
    TextView name;
    ColumnType type;
    bool isInKey = false;
};

struct Table {
    TextView name;
    std::span<const Column> columns; // in the order in which statements list them
    bool isOptional = false;         // of the discussion feature
    TextView indexed = {};           // a column that many rows share and that is looked up
};

std::span<const Table> Tables(Database database);

// One statement for each table and index, in the order in which they must run. Throws Error for Engine::Other.
std::vector<Text> CreateStatements(Database database, Engine engine);

// The same for one of the tables, under that name.
std::vector<Text> CreateStatements(const Table& table, Engine engine, TextView name);

// The documented statements spell one table in two ways. Throws Error for a server whose table names are
// case-sensitive.
void RequireCaseInsensitiveNames(Connection& connection);

// The same as a script: with a heading, each statement ended by a semicolon.
Text Script(Database database, Engine engine);

} // namespace dax::Schema
