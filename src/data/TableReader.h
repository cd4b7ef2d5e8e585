// All rows of a table on the server or in the file, of which memory holds only a few at a time.
#pragma once

#include "data/RowWriter.h"
#include "data/Schema.h"
#include "data/Session.h"

namespace dax {

// Within a transaction, which shows all rows as they are at one moment. Nothing else runs on the session meanwhile.
class TableReader {
public:
    // In the order in which the engine gives the rows fastest, or by the schema's key: numbers by their value, texts by
    // their code points. Only where the engine can do that; MariaDB always gives them in the order of a key of one
    // column.
    enum class Order { AsStored, ByKey };
    TableReader(Session& session, const Schema::Table& table, const Text& name, Order order = Order::AsStored);

    bool Next();
    // Valid until the next row.
    std::span<const RowField> Row() const { return row; }

private:
    // Drivers of some engines fetch all rows of a query before they return the first: there several queries read a part
    // each, from a cursor, after the last key, or after the number of rows read so far.
    enum class ReadMode { Whole, Cursor, ByKey, ByNumber };
    static ReadMode ReadModeOf(Session& session, const std::vector<Text>& keys);
    void OpenBatch();

    std::unique_ptr<Statement> statement;
    std::span<const Schema::Column> columns;
    Text query;
    std::vector<Text> keys; // of the table as it is
    size_t keyColumn = 0;
    ReadMode mode;
    std::vector<RowField> row;
    Text lastKey;
    size_t limit = 0, rowsRead = 0, unitsRead = 0, rowsBefore = 0; // of this batch; of those before
};

} // namespace dax
