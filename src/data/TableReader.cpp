#include "data/TableReader.h"

#include "base/Dates.h"
#include "base/Numbers.h"
#include "data/modDB.h"

#include <algorithm>

namespace dax {

namespace {

constexpr size_t rowsOfFirstBatch = 64, maxRowsOfBatch = 2000, unitsAtATime = 2'000'000;

RowField ReadField(Statement& statement, size_t column, Schema::ColumnType type) {
    using enum Schema::ColumnType;
    RowField field;
    const bool isNumber = type == Number || type == Counter;
    if (isNumber) {
        if (const auto number = statement.FieldInteger(column)) {
            field.kind = RowField::Kind::Number;
            field.number = *number;
            return field;
        }
    }
    if (statement.IsNull(column)) return field;
    field.kind = RowField::Kind::Text;
    field.text = statement.FieldText(column);
    if (isNumber) {
        if (const auto number = ReadNumber<int64_t>(field.text)) {
            field.kind = RowField::Kind::Number;
            field.number = *number;
        }
    } else if (type == Date) {
        if (const auto date = ParseDate(field.text)) {
            field.kind = RowField::Kind::Date;
            field.date = *date;
        }
    }
    return field;
}

Text Joined(const std::vector<Text>& names, TextView before) {
    Text joined;
    for (const Text& name : names) joined.append(joined.empty() ? before : u", ").append(name);
    return joined;
}

// A server whose names are case-insensitive may still list them in lower case.
std::vector<Text> KeyColumnsOf(Session& session, const Text& table) {
    const std::vector<Text> keys = session.KeyColumns(table);
    return keys.empty() ? session.KeyColumns(LowerAscii(table)) : keys;
}

// Empty where the engine cannot order by code points, and where rows come by their key anyway.
Text OrderByKey(Engine engine, const Schema::Table& table) {
    const TextView collation = engine == Engine::PostgreSQL ? u" COLLATE \"C\""
                               : engine == Engine::SQLite   ? u" COLLATE BINARY"
                                                            : u"";
    Text order;
    for (const Schema::Column& column : table.columns) {
        if (!column.isInKey || collation.empty()) continue;
        order.append(order.empty() ? u" ORDER BY " : u", ").append(column.name);
        if (column.type == Schema::ColumnType::Key) order.append(collation);
    }
    return order;
}

} // namespace

TableReader::TableReader(Session& session, const Schema::Table& table, const Text& name, Order order)
    : statement(session.NewStatement()), columns(table.columns), keys(KeyColumnsOf(session, name)),
      mode(ReadModeOf(session, keys)), row(table.columns.size()) {
    for (const Schema::Column& column : columns) query.append(query.empty() ? u"SELECT " : u", ").append(column.name);
    query += u" FROM " + name;
    if (mode == ReadMode::ByKey) {
        const auto isKey = [&](const Schema::Column& column) { return EqualNoCase(column.name, keys.front()); };
        keyColumn = static_cast<size_t>(std::ranges::find_if(columns, isKey) - columns.begin());
        if (keyColumn == columns.size()) mode = ReadMode::ByNumber;
    }
    if (order == Order::ByKey) query += OrderByKey(session.SqlDialect().engine, table);
    if (mode == ReadMode::Whole) {
        statement->Execute(query);
        statement->OpenRows();
    } else if (mode == ReadMode::Cursor) {
        statement->Execute(u"CLOSE ALL");
        statement->Execute(u"DECLARE dax_rows NO SCROLL CURSOR FOR " + query);
    }
}

TableReader::ReadMode TableReader::ReadModeOf(Session& session, const std::vector<Text>& keys) {
    if (session.SqlDialect().engine == Engine::PostgreSQL) return ReadMode::Cursor;
    if (session.SqlDialect().engine != Engine::MariaDB) return ReadMode::Whole;
    return keys.size() == 1 ? ReadMode::ByKey : ReadMode::ByNumber;
}

bool TableReader::Next() {
    if (mode != ReadMode::Whole && rowsRead == limit) OpenBatch();
    if (!statement->Next()) return false;
    ++rowsRead;
    for (size_t i = 0; i < row.size(); ++i) {
        row[i] = ReadField(*statement, i, columns[i].type);
        unitsRead += row[i].text.size();
    }
    if (mode == ReadMode::ByKey && rowsRead == limit) lastKey = statement->FieldText(keyColumn);
    return true;
}

// As many rows as will probably fit into the memory that is meant for them.
void TableReader::OpenBatch() {
    const size_t maxRows = rowsRead == 0 ? rowsOfFirstBatch : std::min(maxRowsOfBatch, limit * 2);
    limit = std::clamp<size_t>(rowsRead == 0 ? maxRows : unitsAtATime / (unitsRead / rowsRead + 1), 1, maxRows);
    rowsBefore += rowsRead;
    rowsRead = unitsRead = 0;
    const Text count = ToText(static_cast<long long>(limit));
    if (mode == ReadMode::Cursor)
        statement->Execute(u"FETCH FORWARD " + count + u" FROM dax_rows");
    else if (mode == ReadMode::ByKey)
        statement->Execute(
            query + (rowsBefore == 0 ? Text() : u" WHERE " + keys.front() + u" > " + modDB::QuoteSQLString(lastKey)) +
            u" ORDER BY " + keys.front() + u" LIMIT " + count);
    else
        statement->Execute(query + Joined(keys, u" ORDER BY ") + u" LIMIT " + count + u" OFFSET " +
                           ToText(static_cast<long long>(rowsBefore)));
    statement->OpenRows();
}

} // namespace dax
