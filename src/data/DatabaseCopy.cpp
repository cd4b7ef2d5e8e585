#include "data/DatabaseCopy.h"

#include "base/Numbers.h"
#include "base/modGeneric.h"
#include "data/ConnectionString.h"
#include "data/Recordset.h"
#include "data/RowComparison.h"
#include "data/Session.h"
#include "data/TableReader.h"

#include <algorithm>
#include <filesystem>

namespace dax {

// Properties of an engine that only copying needs.
struct CopyRules {
    Engine engine;
    TextView beginReading[2]; // before the transaction that reads: all tables as at one moment, and no writing
    bool tablesAreTransacted; // creating a table belongs to the transaction
    bool acceptsNul;          // a text may contain a NUL character
    TextView lastGenerated;   // the last number of velmoraAutonumbers; NULL or an error where it is unknown
    TextView generateAbove;   // makes it generate above the number put for "?"; empty where a row does
    TextView beforeRows = {}, afterRows = {}; // let numbers be given to it
    TextView stableOrder = {};                // a table that is read twice comes in the same order
    bool isOrderedByKey = false;              // rows come in the order of their key, wherever they were put
};

namespace {

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
     u"pg_sequence_last_value(CAST(pg_get_serial_sequence('velmoraautonumbers', 'nextnumber') AS regclass)), 1)))",
     u"",
     u"",
     u"SET synchronize_seqscans = off"},
    {Engine::MariaDB,
     {u"SET SESSION TRANSACTION ISOLATION LEVEL REPEATABLE READ", u"SET SESSION TRANSACTION READ ONLY"},
     false,
     true,
     u"SELECT AUTO_INCREMENT - 1 FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = "
     u"'velmoraAutonumbers'",
     u"",
     u"",
     u"",
     u"",
     true},
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

// The same database, as far as the strings show it.
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
    return ReadNumber<int64_t>(recordset.FieldText(0)).value_or(0);
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

void RequireNoNul(std::span<const RowField> row, const Schema::Table& table) {
    for (size_t i = 0; i < row.size(); ++i) {
        if (row[i].text.find(u'\0') == TextView::npos) continue;
        throw Error(ErrorNumbers::DataMismatch,
                    u"The value of " + Text(table.columns[i].name) + u" in the row " +
                        IdentifierOf(row, ColumnsOf(table), KeysOf(table)) +
                        u" contains a NUL character, which the other engine cannot store. Remove it first.");
    }
}

// Errors at an endpoint begin with its name.
template <typename Action>
auto At(const DatabaseCopy::Endpoint& endpoint, TextView table, Action action) {
    try {
        return action();
    } catch (const Error& error) {
        Text name = u"'" + endpoint.shown + u"': ";
        if (error.Description().starts_with(name)) throw;
        if (!table.empty()) name.append(table).append(u": ");
        throw Error(error.Number(), name + error.Description());
    }
}

[[noreturn]] void ThrowOtherRows(int64_t expected, int64_t found) {
    throw Error(ErrorNumbers::Automation, u"There are " + ToText(found) + u" rows instead of " + ToText(expected) +
                                              u". Another program has changed the table meanwhile; try again.");
}

[[noreturn]] void ThrowDifference(const Schema::Table& table, const RowDifference& difference) {
    const Text row = difference.identifier.empty() ? Text(u"without values") : difference.identifier;
    const Text column(table.columns[difference.column].name);
    switch (difference.kind) {
    case RowDifference::Kind::Value:
        throw Error(ErrorNumbers::Automation,
                    u"The value of " + column + u" in the row " + row +
                        u" was not the same when it was read again: the column cannot hold it as it is, or another "
                        u"program has changed the table meanwhile.");
    case RowDifference::Kind::Missing:
        throw Error(ErrorNumbers::Automation, u"The row " + row + u" was missing or different when it was read again.");
    case RowDifference::Kind::Additional:
        break;
    }
    throw Error(ErrorNumbers::Automation,
                u"There was an additional row " + row +
                    u" when it was read again. Another program has changed the table meanwhile; try again.");
}

} // namespace

DatabaseCopy::DatabaseCopy(Endpoint copyFrom, Endpoint copyTo) : from(std::move(copyFrom)), to(std::move(copyTo)) {
    if (AreSame(from.connectionString, to.connectionString))
        throw Error(ErrorNumbers::Automation, u"'" + to.shown + u"' is the source itself. Give another target.");
    At(from, {}, [&] { ReadSource(); });
    At(to, {}, [&] { ReadTarget(); });
}

// What was not committed ends with the connection, and so do temporary tables.
DatabaseCopy::~DatabaseCopy() = default;

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
    if (!sourceRules->stableOrder.empty()) source.Execute(Text(sourceRules->stableOrder));
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
                            u"The table " + Text(table.name) + u" is missing, so the database is incomplete.");
        }
    }
    if (tables.empty())
        throw Error(ErrorNumbers::Automation, u"It has none of the tables of a content or a connector database.");
    for (const Text& name : names)
        if (!IsOfCopy(name, tables)) unknownInSource.push_back(name);
    for (CopiedTable& copied : tables) {
        ReadColumns(source, *copied.table, unknownInSource);
        copied.rows = NumberOf(source, u"SELECT Count(*) FROM " + Text(copied.table->name)).value_or(0);
        if (!CounterOf(*copied.table) || sourceRules->lastGenerated.empty()) continue;
        try {
            lastGenerated = NumberOf(source, Text(sourceRules->lastGenerated)).value_or(0);
        } catch (const Error&) { // the highest number of a row counts
        }
    }
}

void DatabaseCopy::ReadTarget() {
    target.Open(to.connectionString);
    targetRules = &RulesOf(target.Kind());
    if (!targetRules->stableOrder.empty()) target.Execute(Text(targetRules->stableOrder));
    Schema::RequireCaseInsensitiveNames(target);
    const std::vector<Text> names = target.Opened().TableNames();
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector}) {
        if (!(kind == Schema::Database::Content ? HasContent() : HasConnector())) continue;
        for (const Schema::Table& table : Schema::Tables(kind)) {
            if (!IsAmong(table.name, names)) continue;
            present.push_back(&table);
            const Text name(table.name);
            if (tableWithRows.empty() && NumberOf(target, u"SELECT Count(*) FROM " + name).value_or(0) > 0)
                tableWithRows = name;
        }
    }
    for (const Text& name : names) {
        if (!TablePublication::IsLeftoverTable(name) &&
            !std::ranges::any_of(present, [&](const auto* table) { return EqualNoCase(table->name, name); }))
            unknownInTarget.push_back(name);
    }
    for (CopiedTable& copied : tables) {
        copied.isNew = std::ranges::find(present, copied.table) == present.end();
        isPublished = isPublished || (copied.isNew && !targetRules->tablesAreTransacted);
    }
}

Text DatabaseCopy::NameInTarget(const CopiedTable& copied) const {
    return isPublished ? TablePublication::TemporaryName(*copied.table) : Text(copied.table->name);
}

void DatabaseCopy::Write(const std::function<void(size_t done)>& progress) {
    const auto began = std::chrono::steady_clock::now();
    const size_t inAll = RowsInAll() * 2;
    size_t done = 0, calls = 0;
    const auto next = [&] {
        if (done < inAll) ++done; // a comparison in parts reads rows again
        if (++calls % 16 == 0) progress(done);
    };
    At(to, {}, [&] { CreateTargetTables(); });
    for (CopiedTable& copied : tables) WriteRows(copied, next);
    timeOfWriting = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - began);
    for (const CopiedTable& copied : tables) Compare(copied, next);
    if (isPublished)
        At(to, {}, [&] { target.CommitTrans(); }); // of the temporary tables: other connections see nothing of it
    progress(done);
}

void DatabaseCopy::CreateTargetTables() {
    target.BeginTrans();
    if (isPublished) {
        for (const CopiedTable& copied : tables)
            target.Execute(TablePublication::CreateTemporary({copied.table, copied.isNew}));
        return;
    }
    for (const CopiedTable& copied : tables) {
        if (!copied.isNew) continue;
        for (const Text& statement : Schema::CreateStatements(*copied.table, target.Kind(), copied.table->name))
            target.Execute(statement);
    }
    // Also those that the source lacks: what they hold belongs to what is replaced.
    for (const Schema::Table* table : present) target.Execute(u"DELETE FROM " + Text(table->name));
}

void DatabaseCopy::WriteRows(CopiedTable& copied, const std::function<void()>& next) {
    const Schema::Table& table = *copied.table;
    const bool hasCounter = CounterOf(table) != nullptr;
    if (hasCounter && !targetRules->beforeRows.empty()) target.Execute(Text(targetRules->beforeRows));
    auto reader = At(from, table.name, [&] { return ReaderOfSource(copied); });
    const auto writer =
        At(to, table.name, [&] { return target.Opened().NewRows(NameInTarget(copied), ColumnsOf(table)); });
    int64_t rows = 0;
    while (At(from, table.name, [&] { return reader.Next(); })) {
        ++rows;
        if (hasCounter) highestNumber = std::max(highestNumber, reader.Row()[0].number);
        if (!targetRules->acceptsNul) At(from, table.name, [&] { RequireNoNul(reader.Row(), table); });
        At(to, table.name, [&] { writer->Put(reader.Row()); });
        next();
    }
    At(to, table.name, [&] {
        writer->Finish();
        if (hasCounter) AdvanceGenerator(copied);
    });
    if (rows != copied.rows) At(from, table.name, [&] { ThrowOtherRows(copied.rows, rows); });
}

void DatabaseCopy::AdvanceGenerator(const CopiedTable& copied) {
    lastGenerated = std::max(lastGenerated, highestNumber);
    if (!targetRules->generateAbove.empty() && lastGenerated > 0) {
        Text statement(targetRules->generateAbove);
        statement.replace(statement.find(u'?'), 1, ToText(lastGenerated));
        target.Execute(statement);
    } else if (lastGenerated > highestNumber && !isPublished) {
        for (const Text& statement : TablePublication::GenerateNumber(*copied.table, copied.table->name, lastGenerated))
            target.Execute(statement);
    }
    if (!targetRules->afterRows.empty()) target.Execute(Text(targetRules->afterRows));
}

// Where the target gives rows by their key, the source does, so that both come in one order.
TableReader DatabaseCopy::ReaderOfSource(const CopiedTable& copied) {
    return {source.Opened(), *copied.table, Text(copied.table->name),
            targetRules->isOrderedByKey ? TableReader::Order::ByKey : TableReader::Order::AsStored};
}

void DatabaseCopy::Compare(const CopiedTable& copied, const std::function<void()>& next) {
    const Schema::Table& table = *copied.table;
    const auto rowsOf = [&](const Endpoint& endpoint, TableReader opened, std::function<void()> onRow) -> NextRow {
        auto reader = std::make_shared<TableReader>(std::move(opened));
        return [&endpoint, &table, reader = std::move(reader), onRow = std::move(onRow)] {
            if (!At(endpoint, table.name, [&] { return reader->Next(); })) return std::span<const RowField>();
            if (onRow) onRow();
            return reader->Row();
        };
    };
    const auto difference = CompareRows(
        ColumnsOf(table), KeysOf(table),
        [&] { return rowsOf(from, At(from, table.name, [&] { return ReaderOfSource(copied); }), {}); },
        [&] {
            const Text name = NameInTarget(copied);
            return rowsOf(to, At(to, table.name, [&] { return TableReader(target.Opened(), table, name); }), next);
        });
    if (difference) At(to, table.name, [&] { ThrowDifference(table, *difference); });
}

std::vector<TablePublication::Part> DatabaseCopy::PartsToPublish() const {
    std::vector<TablePublication::Part> parts;
    for (const CopiedTable& copied : tables)
        parts.push_back({copied.table, copied.isNew, copied.rows, true,
                         CounterOf(*copied.table) && lastGenerated > highestNumber ? lastGenerated : 0});
    for (const Schema::Table* table : present)
        if (!IsOfCopy(table->name, tables)) parts.push_back({table, false, 0, false});
    return parts;
}

void DatabaseCopy::Finish() {
    const std::vector<TablePublication::Part> parts = PartsToPublish();
    At(to, {}, [&] {
        try {
            if (isPublished) {
                // It writes on the server what took long to be sent through the connection.
                target.Opened().ExtendLimit(timeOfWriting * 4);
                target.Execute(TablePublication::Statement(parts));
            } else {
                target.CommitTrans();
            }
        } catch (const Error&) {
            isInDoubt = !IsTargetConnected();
            if (isPublished && !isInDoubt) target.Execute(TablePublication::DropLeftoverTable(parts));
            throw;
        }
    });
}

bool DatabaseCopy::IsTargetConnected() noexcept {
    try {
        target.RollbackTrans();
        return NumberOf(target, u"SELECT 1").has_value();
    } catch (...) {
        return false;
    }
}

} // namespace dax
