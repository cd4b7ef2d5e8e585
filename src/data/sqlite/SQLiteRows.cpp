#include "data/sqlite/SQLiteRows.h"

#include "base/Dates.h"

namespace dax {

SQLiteRows::SQLiteRows(SQLiteConnection& connection, const Text& table, const std::vector<RowColumn>& columns)
    : owner(connection), texts(columns.size()) {
    Text names, marks;
    for (const RowColumn& column : columns) {
        names.append(names.empty() ? u"" : u", ").append(column.name);
        marks += marks.empty() ? u"?" : u", ?";
    }
    const Text text = u"INSERT INTO " + table + u" (" + names + u") VALUES (" + marks + u")";
    Observe(text);
    const std::string utf8 = ToUtf8(text);
    sqlite3_stmt* made = nullptr;
    const SQLiteWaitScope waiting(owner.Wait());
    owner.BeginCall();
    owner.Check(sqlite3_prepare_v3(owner.Handle(), utf8.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr));
    insert.reset(made);
}

void SQLiteRows::Put(std::span<const RowField> row) {
    owner.RequireTransaction();
    for (size_t i = 0; i < row.size(); ++i) owner.Check(Bind(static_cast<int>(i) + 1, row[i], texts[i]));
    const SQLiteWaitScope waiting(owner.Wait());
    owner.BeginCall();
    const int result = sqlite3_step(insert.get());
    sqlite3_reset(insert.get());
    if (result != SQLITE_DONE) owner.Check(result);
}

int SQLiteRows::Bind(int position, const RowField& field, std::string& bytes) {
    switch (field.kind) {
    case RowField::Kind::Null:
        return sqlite3_bind_null(insert.get(), position);
    case RowField::Kind::Number:
        return sqlite3_bind_int64(insert.get(), position, field.number);
    case RowField::Kind::Date: // a file keeps a date in the form in which a program wrote it
    case RowField::Kind::Text:
        break;
    }
    ToUtf8(field.text, bytes);
    return sqlite3_bind_text64(insert.get(), position, bytes.data(), bytes.size(), SQLITE_STATIC, SQLITE_UTF8);
}

} // namespace dax
