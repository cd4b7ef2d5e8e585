// Rows for one table of a SQLite file, by one statement that is compiled once.
#pragma once

#include "data/RowWriter.h"
#include "data/sqlite/SQLiteConnection.h"

#include <string>

namespace dax {

// Ends before its connection does.
class SQLiteRows final : public RowWriter {
public:
    SQLiteRows(SQLiteConnection& connection, const Text& table, const std::vector<RowColumn>& columns);
    void Put(std::span<const RowField> row) override;
    void Finish() override {}

private:
    int Bind(int position, const RowField& field, std::string& bytes);

    SQLiteConnection& owner;
    SQLiteStatementHandle insert;
    std::vector<std::string> texts; // what is bound, whose memory is used again
};

} // namespace dax
