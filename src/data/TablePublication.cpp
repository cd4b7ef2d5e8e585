#include "data/TablePublication.h"

#include <algorithm>

namespace dax::TablePublication {

namespace {

constexpr TextView temporaryPrefix = u"dax_rows_", stagingPrefix = u"dax_copy_";

Text StagingName(const Schema::Table& table) { return Text(stagingPrefix).append(table.name); }

Text Columns(const Schema::Table& table) {
    Text columns;
    for (const Schema::Column& column : table.columns)
        columns.append(columns.empty() ? u"" : u", ").append(column.name);
    return columns;
}

// The names of the new tables, or nothing.
Text Listed(const std::vector<Part>& parts, TextView before, Text (*name)(const Schema::Table&)) {
    Text list;
    for (const Part& part : parts)
        if (part.isNew) list.append(list.empty() ? before : u", ").append(name(*part.table));
    return list;
}

Text FinalName(const Schema::Table& table) { return Text(table.name); }

Text Renaming(const Schema::Table& table) { return StagingName(table) + u" TO " + Text(table.name); }

void Fill(const Part& part, TextView name, Text& statement) {
    const Text columns = Columns(*part.table);
    statement.append(u"INSERT INTO ").append(name).append(u" (" + columns + u") SELECT " + columns + u" FROM ");
    statement.append(TemporaryName(*part.table)).append(u";\n");
    if (part.lastGenerated > 0)
        for (const Text& step : GenerateNumber(*part.table, name, part.lastGenerated)) statement.append(step + u";\n");
}

} // namespace

Text TemporaryName(const Schema::Table& table) { return Text(temporaryPrefix).append(table.name); }

Text CreateTemporary(const Part& part) {
    const Text name = TemporaryName(*part.table);
    if (!part.isNew) return u"CREATE TEMPORARY TABLE " + name + u" LIKE " + Text(part.table->name);
    Text statement = Schema::CreateStatements(*part.table, Engine::MariaDB, name).front();
    return statement.insert(TextView(u"CREATE ").size(), u"TEMPORARY ");
}

Text Statement(const std::vector<Part>& parts) {
    Text statement = u"BEGIN NOT ATOMIC\n"
                     u"DECLARE isPublic INT DEFAULT 0;\n"
                     u"DECLARE EXIT HANDLER FOR SQLEXCEPTION BEGIN\n"
                     u"ROLLBACK;\n"
                     u"IF isPublic THEN" +
                     Listed(parts, u" DROP TABLE ", FinalName) + u"; ELSE " + DropLeftoverTable(parts) +
                     u"; END IF;\n"
                     u"RESIGNAL;\n"
                     u"END;\n" +
                     DropLeftoverTable(parts) + u";\n";
    for (const Part& part : parts)
        if (part.isNew)
            for (const Text& create : Schema::CreateStatements(*part.table, Engine::MariaDB, StagingName(*part.table)))
                statement.append(create).append(u";\n");
    statement += u"START TRANSACTION;\n";
    for (const Part& part : parts)
        if (part.isNew) Fill(part, StagingName(*part.table), statement);
    statement += u"COMMIT;\n";
    for (const Part& part : parts)
        if (part.isNew)
            statement.append(u"IF (SELECT Count(*) FROM " + StagingName(*part.table) + u") <> " + ToText(part.rows) +
                             u" THEN SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = 'Another program has written into the "
                             u"tables of this copy.'; END IF;\n");
    statement.append(Listed(parts, u"RENAME TABLE ", Renaming)).append(u";\nSET isPublic = 1;\n");
    // Last, so that whatever fails before has not touched them.
    statement += u"START TRANSACTION;\n";
    for (const Part& part : parts) {
        if (part.isNew) continue;
        statement.append(u"DELETE FROM ").append(part.table->name).append(u";\n");
        if (part.isFilled) Fill(part, part.table->name, statement);
    }
    return statement.append(u"COMMIT;\nEND");
}

Text DropLeftoverTable(const std::vector<Part>& parts) { return Listed(parts, u"DROP TABLE IF EXISTS ", StagingName); }

bool IsLeftoverTable(TextView table) {
    const Text lower = LowerAscii(table);
    if (!lower.starts_with(stagingPrefix)) return false;
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector})
        for (const Schema::Table& ours : Schema::Tables(kind))
            if (EqualNoCase(ours.name, TextView(lower).substr(stagingPrefix.size()))) return true;
    return false;
}

std::vector<Text> GenerateNumber(const Schema::Table& table, TextView name, int64_t number) {
    const auto counter = std::ranges::find(table.columns, Schema::ColumnType::Counter, &Schema::Column::type);
    const Text column(counter->name), digits = ToText(number);
    return {u"INSERT INTO " + Text(name) + u" (" + column + u") VALUES (" + digits + u")",
            u"DELETE FROM " + Text(name) + u" WHERE " + column + u" = " + digits};
}

} // namespace dax::TablePublication
