// Tables made and filled at once on a server on which making a table ends a transaction (MariaDB).
#pragma once

#include "data/Schema.h"

namespace dax {

// The rows are first put into temporary tables, which other connections do not see and which vanish with this one. Then
// one statement makes the tables under other names, copies the rows, and gives all tables their names in one step. The
// server carries it out even when the client has ended, and drops what it has made when something fails.
namespace TablePublication {

struct Part {
    const Schema::Table* table;
    bool isMade = true; // otherwise it exists, and its rows are replaced
    int64_t rows = 0;
    bool isFilled = true;        // otherwise it is only emptied
    int64_t numberToBeDrawn = 0; // and given up, so that the next one drawn is higher; 0: none
};

// Where the rows are put.
Text TemporaryName(const Schema::Table& table);
Text MakeTemporary(const Part& part);

Text Statement(const std::vector<Part>& parts);
// Of those that are made, what a server that crashed within the statement, or that was told to end it, has left.
Text DropLeftoverTable(const std::vector<Part>& parts);
bool IsLeftoverTable(TextView table);

// Draws a number for the counter of the table and gives it up.
std::vector<Text> GenerateNumber(const Schema::Table& table, TextView name, int64_t number);

} // namespace TablePublication

} // namespace dax
