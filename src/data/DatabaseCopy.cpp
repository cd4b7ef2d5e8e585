#include "data/DatabaseCopy.h"

#include "base/modGeneric.h"
#include "data/ConnectionString.h"
#include "data/Recordset.h"
#include "data/Session.h"
#include "data/TableDigest.h"
#include "data/TableReader.h"

#include <algorithm>
#include <filesystem>

namespace dax {

// What only a copy needs to know of an engine.
struct CopyRules {
    Engine engine;
    TextView beginReading[2]; // before the transaction that reads: all tables as at one moment, and no writing
    bool tablesAreTransacted; // making a table belongs to the transaction
    bool keepsZeros;          // a text may have the character of the number zero
    TextView lastDrawn;       // the last number that velmoraAutonumbers has drawn; NULL or an error where none is known
    TextView drawAbove;       // makes it draw above the number that is put in the place of "?"; empty where a row does
    TextView beforeRows = {}, afterRows = {}; // let numbers be given to it
};

namespace {

// What a killed copy leaves under such a name is empty, and goes with the next one.
constexpr TextView staging = u"dax_copy_";

constexpr CopyRules rulesOfEngines[] = {
    {Engine::SQLite,
     {u"PRAGMA query_only = ON"},
     true,
     true,
     u"SELECT Max(seq) FROM sqlite_sequence WHERE lower(name) = 'velmoraautonumbers'",
     u""},
    {Engine::PostgreSQL,
     {u"SET SESSION CHARACTERISTICS AS TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY"},
     true,
     false,
     u"SELECT pg_sequence_last_value(CAST(pg_get_serial_sequence('velmoraautonumbers', 'nextnumber') AS regclass))",
     u"SELECT setval(pg_get_serial_sequence('velmoraautonumbers', 'nextnumber'), GREATEST(?, COALESCE("
     u"pg_sequence_last_value(CAST(pg_get_serial_sequence('velmoraautonumbers', 'nextnumber') AS regclass)), 1)))"},
    {Engine::MariaDB,
     {u"SET SESSION TRANSACTION ISOLATION LEVEL REPEATABLE READ", u"SET SESSION TRANSACTION READ ONLY"},
     false,
     true,
     u"SELECT AUTO_INCREMENT - 1 FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = "
     u"'velmoraAutonumbers'",
     u""},
    {Engine::SQLServer,
     {u"SET TRANSACTION ISOLATION LEVEL SERIALIZABLE"},
     true,
     true,
     u"SELECT IDENT_CURRENT('velmoraAutonumbers')",
     u"",
     u"SET IDENTITY_INSERT velmoraAutonumbers ON",
     u"SET IDENTITY_INSERT velmoraAutonumbers OFF"},
    {Engine::Access, {}, true, true, u"", u""},
    {Engine::Other, {}, true, true, u"", u""},
};

const CopyRules& RulesOf(Engine engine) {
    return *std::ranges::find_if(rulesOfEngines, [&](const CopyRules& rules) {
        return rules.engine == engine || rules.engine == Engine::Other;
    });
}

bool IsAmong(TextView name, const std::vector<Text>& names) {
    return std::ranges::any_of(names, [&](const Text& known) { return EqualNoCase(known, name); });
}

const Schema::Table* OursNamed(TextView name) {
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector})
        for (const Schema::Table& table : Schema::Tables(kind))
            if (EqualNoCase(table.name, name)) return &table;
    return nullptr;
}

// One and the same, as far as the strings tell.
bool AreSame(const Text& one, const Text& other) {
    if (one == other) return true;
    if (one.find(u'=') != Text::npos || other.find(u'=') != Text::npos) return false;
    std::error_code failure;
    return std::filesystem::equivalent(std::filesystem::path(one), std::filesystem::path(other), failure);
}

std::vector<Text> NamesOf(const Schema::Table& table) {
    std::vector<Text> names;
    for (const Schema::Column& column : table.columns) names.emplace_back(column.name);
    return names;
}

std::vector<RowColumn> ColumnsOf(const Schema::Table& table) {
    using enum Schema::ColumnType;
    std::vector<RowColumn> columns;
    for (const Schema::Column& column : table.columns)
        columns.push_back({Text(column.name), column.type == Number || column.type == Counter ? RowField::Kind::Number
                                              : column.type == Date                           ? RowField::Kind::Date
                                                                                              : RowField::Kind::Text});
    return columns;
}

std::optional<int64_t> NumberOf(Connection& connection, const Text& query) {
    Recordset recordset;
    recordset.Open(query, connection);
    if (recordset.Eof() || recordset.FieldIsNull(0)) return std::nullopt;
    return recordset.FieldNumber(0, 0);
}

const Schema::Column* CounterOf(const Schema::Table& table) {
    for (const Schema::Column& column : table.columns)
        if (column.type == Schema::ColumnType::Counter) return &column;
    return nullptr;
}

std::vector<bool> KeysOf(const Schema::Table& table) {
    std::vector<bool> keys;
    for (const Schema::Column& column : table.columns) keys.push_back(column.isInKey);
    return keys;
}

bool IsOfCopy(TextView name, const std::vector<CopiedTable>& tables) {
    return std::ranges::any_of(tables,
                               [&](const CopiedTable& copied) { return EqualNoCase(copied.table->name, name); });
}

// Throws when one of ours is missing; adds those that are none of ours.
void ReadColumns(Connection& connection, const Schema::Table& table, std::vector<Text>& beyond) {
    const Text name(table.name);
    Recordset recordset;
    recordset.Open(u"SELECT * FROM " + name + u" WHERE 1 = 0", connection);
    std::vector<Text> columns;
    for (size_t i = 0; i < recordset.FieldCount(); ++i) columns.push_back(recordset.FieldName(i));
    for (const Text& ours : NamesOf(table))
        if (!IsAmong(ours, columns))
            throw Error(ErrorNumbers::SyntaxOrColumn, u"The table " + name + u" has no column " + ours + u".");
    for (const Text& column : columns)
        if (!IsAmong(column, NamesOf(table))) beyond.push_back(name + u"." + column);
}

void RequireNoZeros(std::span<const RowField> row, const Schema::Table& table) {
    for (size_t i = 0; i < row.size(); ++i) {
        if (row[i].text.find(u'\0') == TextView::npos) continue;
        throw Error(ErrorNumbers::DataMismatch,
                    u"The value of " + Text(table.columns[i].name) + u" in the row '" + Text(row[0].text) +
                        u"' has a character of the number zero, which the other engine cannot keep. Remove it first.");
    }
}

// What happens at a place is told with its name.
template <typename Action>
auto At(const DatabaseCopy::Place& place, TextView table, Action action) {
    try {
        return action();
    } catch (const Error& error) {
        Text name = u"'" + place.shown + u"': ";
        if (error.Description().starts_with(name)) throw;
        if (!table.empty()) name.append(table).append(u": ");
        throw Error(error.Number(), name + error.Description());
    }
}

[[noreturn]] void ThrowOtherRows(int64_t expected, int64_t found) {
    throw Error(ErrorNumbers::Automation, u"There are " + ToText(found) + u" rows instead of " + ToText(expected) +
                                              u". Another program has changed the table meanwhile; try again.");
}

[[noreturn]] void ThrowChanged(const Schema::Table& table, const TableDigest& expected, const TableDigest& found) {
    if (expected.Rows() != found.Rows()) ThrowOtherRows(expected.Rows(), found.Rows());
    const size_t column = expected.FirstDifference(found);
    const Text name(column < table.columns.size() ? table.columns[column].name : TextView());
    throw Error(ErrorNumbers::Automation,
                (name.empty() ? Text(u"The values") : u"Values of " + name) +
                    u" were not the same when they were read again: the column cannot hold them as they are, or "
                    u"another program has changed the table meanwhile.");
}

} // namespace

DatabaseCopy::DatabaseCopy(Place fromPlace, Place toPlace) : from(std::move(fromPlace)), to(std::move(toPlace)) {
    if (AreSame(from.connectionString, to.connectionString))
        throw Error(ErrorNumbers::Automation, u"'" + to.shown + u"' is the database that would be copied.");
    At(from, {}, [&] { ReadSource(); });
    At(to, {}, [&] { ReadTarget(); });
}

DatabaseCopy::~DatabaseCopy() {
    if (!isFinished) Undo();
}

bool DatabaseCopy::HasContent() const { return tables.front().table == &Schema::Tables(Schema::Database::Content)[0]; }

bool DatabaseCopy::HasConnector() const {
    return std::ranges::any_of(tables, [](const CopiedTable& copied) {
        return copied.table == &Schema::Tables(Schema::Database::Connector)[0];
    });
}

size_t DatabaseCopy::RowsInAll() const {
    int64_t rows = 0;
    for (const CopiedTable& copied : tables) rows += copied.rows;
    return static_cast<size_t>(rows);
}

void DatabaseCopy::ReadSource() {
    source.Open(from.connectionString);
    sourceRules = &RulesOf(source.Kind());
    for (const TextView statement : sourceRules->beginReading)
        if (!statement.empty()) source.Execute(Text(statement));
    source.BeginTrans();
    const std::vector<Text> names = source.Opened().TableNames();
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector}) {
        const std::span<const Schema::Table> ours = Schema::Tables(kind);
        const bool isThere = std::ranges::any_of(
            ours, [&](const Schema::Table& table) { return !table.isOptional && IsAmong(table.name, names); });
        for (const Schema::Table& table : ours) {
            if (!isThere) break;
            if (IsAmong(table.name, names))
                tables.push_back({&table});
            else if (!table.isOptional)
                throw Error(ErrorNumbers::Automation,
                            u"The table " + Text(table.name) + u" is missing, so the database is not whole.");
        }
    }
    if (tables.empty())
        throw Error(ErrorNumbers::Automation, u"It has none of the tables of a content or a connector database.");
    for (const Text& name : names)
        if (!IsOfCopy(name, tables)) beyondSource.push_back(name);
    for (CopiedTable& copied : tables) {
        ReadColumns(source, *copied.table, beyondSource);
        copied.rows = NumberOf(source, u"SELECT Count(*) FROM " + Text(copied.table->name)).value_or(0);
        if (!CounterOf(*copied.table) || sourceRules->lastDrawn.empty()) continue;
        try {
            lastDrawn = NumberOf(source, Text(sourceRules->lastDrawn));
        } catch (const Error&) { // the highest number of a row counts
        }
    }
}

void DatabaseCopy::ReadTarget() {
    target.Open(to.connectionString);
    targetRules = &RulesOf(target.Kind());
    Schema::RequireBlindNames(target);
    const std::vector<Text> names = target.Opened().TableNames();
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector}) {
        if (!(kind == Schema::Database::Content ? HasContent() : HasConnector())) continue;
        for (const Schema::Table& table : Schema::Tables(kind)) {
            if (!IsAmong(table.name, names)) continue;
            present.push_back(&table);
            const Text name(table.name);
            if (taken.empty() && NumberOf(target, u"SELECT Count(*) FROM " + name).value_or(0) > 0) taken = name;
        }
    }
    for (const Text& name : names) {
        const Text lower = LowerAscii(name);
        const bool isLeft = lower.starts_with(staging) && OursNamed(lower.substr(staging.size()));
        if (!isLeft && !std::ranges::any_of(present, [&](const auto* table) { return EqualNoCase(table->name, name); }))
            beyondTarget.push_back(name);
    }
    for (CopiedTable& copied : tables) copied.isMade = std::ranges::find(present, copied.table) == present.end();
}

Text DatabaseCopy::NameInTarget(const CopiedTable& copied) const {
    const bool isStaged = copied.isMade && !targetRules->tablesAreTransacted;
    return isStaged ? Text(staging) + Text(copied.table->name) : Text(copied.table->name);
}

void DatabaseCopy::Write(const std::function<void(size_t done)>& progress) {
    size_t done = 0;
    const auto next = [&] {
        if (++done % 16 == 0) progress(done);
    };
    At(to, {}, [&] {
        if (!targetRules->tablesAreTransacted) MakeTables();
        target.BeginTrans();
        if (targetRules->tablesAreTransacted) MakeTables();
        // Also those that the source lacks: what they hold belongs to what is replaced.
        for (const Schema::Table* table : present) target.Execute(u"DELETE FROM " + Text(table->name));
    });
    std::vector<TableDigest> digests;
    for (CopiedTable& copied : tables) digests.push_back(WriteRows(copied, next));
    for (size_t i = 0; i < tables.size(); ++i) Compare(tables[i], digests[i], next);
    progress(done);
}

void DatabaseCopy::MakeTables() {
    for (const CopiedTable& copied : tables) {
        if (!copied.isMade) continue;
        const Text name = NameInTarget(copied);
        if (name != copied.table->name) {
            target.Execute(u"DROP TABLE IF EXISTS " + name);
            staged.push_back(name);
        }
        for (const Text& statement : Schema::CreateStatements(*copied.table, target.Kind(), name))
            target.Execute(statement);
    }
}

TableDigest DatabaseCopy::WriteRows(CopiedTable& copied, const std::function<void()>& next) {
    const Schema::Table& table = *copied.table;
    const bool draws = CounterOf(table) != nullptr;
    if (draws && !targetRules->beforeRows.empty()) target.Execute(Text(targetRules->beforeRows));
    auto reader = At(from, table.name, [&] { return TableReader(source.Opened(), table, Text(table.name)); });
    const auto writer =
        At(to, table.name, [&] { return target.Opened().NewRows(NameInTarget(copied), ColumnsOf(table)); });
    TableDigest digest(KeysOf(table));
    while (At(from, table.name, [&] { return reader.Next(); })) {
        digest.Add(reader.Row());
        if (draws) lastDrawn = std::max(lastDrawn.value_or(0), reader.Row()[0].number);
        if (!targetRules->keepsZeros) At(from, table.name, [&] { RequireNoZeros(reader.Row(), table); });
        At(to, table.name, [&] { writer->Put(reader.Row()); });
        next();
    }
    At(to, table.name, [&] {
        writer->Finish();
        if (draws) GoOnDrawing(copied);
    });
    if (digest.Rows() != copied.rows) At(from, table.name, [&] { ThrowOtherRows(copied.rows, digest.Rows()); });
    return digest;
}

void DatabaseCopy::GoOnDrawing(const CopiedTable& copied) {
    if (lastDrawn.value_or(0) > 0) {
        const Text number = ToText(*lastDrawn), name = NameInTarget(copied);
        if (!targetRules->drawAbove.empty()) {
            Text statement(targetRules->drawAbove);
            statement.replace(statement.find(u'?'), 1, number);
            target.Execute(statement);
        } else {
            const Text counter(CounterOf(*copied.table)->name);
            const Text where = u" FROM " + name + u" WHERE " + counter + u" = " + number;
            if (NumberOf(target, u"SELECT Count(*)" + where).value_or(0) == 0) {
                target.Execute(u"INSERT INTO " + name + u" (" + counter + u") VALUES (" + number + u")");
                target.Execute(u"DELETE" + where);
            }
        }
    }
    if (!targetRules->afterRows.empty()) target.Execute(Text(targetRules->afterRows));
}

void DatabaseCopy::Compare(const CopiedTable& copied, const TableDigest& expected, const std::function<void()>& next) {
    const Schema::Table& table = *copied.table;
    TableDigest found(KeysOf(table));
    auto reader = At(to, table.name, [&] { return TableReader(target.Opened(), table, NameInTarget(copied)); });
    while (At(to, table.name, [&] { return reader.Next(); })) {
        found.Add(reader.Row());
        next();
    }
    if (found != expected) At(to, table.name, [&] { ThrowChanged(table, expected, found); });
}

void DatabaseCopy::Finish() {
    At(to, {}, [&] {
        target.CommitTrans();
        Text renames;
        for (const Text& name : staged)
            renames.append(renames.empty() ? u"RENAME TABLE " : u", ")
                .append(name)
                .append(u" TO ")
                .append(name.substr(staging.size()));
        if (!renames.empty()) target.Execute(renames);
    });
    isFinished = true;
}

void DatabaseCopy::Undo() noexcept {
    const auto drop = [&](Connection& connection) {
        for (const Text& name : staged) connection.Execute(u"DROP TABLE IF EXISTS " + name);
    };
    try {
        target.RollbackTrans();
        drop(target);
    } catch (...) {
        try { // the connection is lost, perhaps
            target.Close();
            if (staged.empty()) return;
            Connection again;
            again.Open(to.connectionString);
            drop(again);
        } catch (...) {
            // What is left is empty, and goes with the next copy.
        }
    }
}

} // namespace dax
