// Tables created and filled at once on a server on which creating a table ends a transaction (MariaDB).
#pragma once

#include "data/Schema.h"

namespace dax {

// The rows are first put into temporary tables, which other connections do not see and which are dropped when this one
// is closed. Then one statement creates the tables under other names, copies the rows, and gives all tables their names
// in one step. The server carries it out even when the client has ended, and drops what it has created when something
// fails.
namespace TablePublication {

struct Part {
    const Schema::Table* table;
    bool isNew = true; // otherwise it exists, and its rows are replaced
    int64_t rows = 0;
    bool isFilled = true;      // otherwise it is only emptied
    int64_t lastGenerated = 0; // inserted and deleted, so that AUTO_INCREMENT goes on above it; 0: not
};

// Where the rows are put.
Text TemporaryName(const Schema::Table& table);
Text CreateTemporary(const Part& part);

Text Statement(const std::vector<Part>& parts);
// Removes, of the new tables, what was left when the server crashed within the statement or cancelled it.
Text DropLeftoverTable(const std::vector<Part>& parts);
bool IsLeftoverTable(TextView table);

// Generates a number for the counter of the table and discards it.
std::vector<Text> GenerateNumber(const Schema::Table& table, TextView name, int64_t number);

} // namespace TablePublication

} // namespace dax
