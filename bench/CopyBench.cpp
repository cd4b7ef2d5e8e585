// A course copied to each engine (read, written, both read again and compared) beside the fastest loader that the
// engine has, which only writes rows that lie ready.
#include "Measure.h"

#include "data/ConnectionString.h"
#include "data/DatabaseCopy.h"
#include "data/Recordset.h"

#include <cstdlib>
#include <fstream>

namespace dax {

namespace {

constexpr int rowCount = 100'000;
constexpr const char* insert = "INSERT INTO velmoraLessons VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char* query = "SELECT * FROM velmoraLessons";
constexpr int columnCount = 10;

std::vector<Text> NoTables() {
    std::vector<Text> statements;
    for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
        statements.push_back(u"DROP TABLE IF EXISTS " + Text(table.name));
    return statements;
}

std::vector<Text> EmptyTables(Engine engine) {
    std::vector<Text> statements = NoTables();
    for (const Text& statement : Schema::CreateStatements(Schema::Database::Content, engine))
        statements.push_back(statement);
    return statements;
}

const test::TestDatabase& Source() {
    static const test::TestDatabase database(Engine::SQLite);
    static const bool isFilled = [] {
        database.Run(EmptyTables(Engine::SQLite));
        database.Run({u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + ToText(rowCount) +
                      u") INSERT INTO velmoraLessons SELECT 'LESSON-' || i, 'The title of lesson ' || i, 'L-' || i, "
                      u"'LESSON-' || (i / 10), 2, i, 1, 'StoryboardCount=12 Classification=\"internal\"', NULL, "
                      u"replace(hex(zeroblob(20)), '00', '<page title=\"Página ' || i || '\"/>') FROM n"});
        return true;
    }();
    (void)isFilled;
    return database;
}

// The rows as both servers' loaders read them.
const Text& RowsFile() {
    static const test::TempFolder folder;
    static const Text path = [] {
        std::ofstream file(std::filesystem::path(folder.File(u"rows.tsv")), std::ios::binary);
        bench::SQLiteFile(Source()).Read(query, [&](sqlite3_stmt* row) {
            for (int column = 0; column < columnCount; ++column)
                file << (column == 0 ? "" : "\t")
                     << (sqlite3_column_type(row, column) == SQLITE_NULL ? "\\N" : bench::TextOf(row, column));
            file << "\n";
        });
        return folder.File(u"rows.tsv");
    }();
    return path;
}

void LoadIntoSQLite(const test::TestDatabase& target, benchmark::State& state) {
    bench::SQLiteFile file(target);
    if (!file.Execute("BEGIN")) return state.SkipWithError("cannot begin");
    file.Fill(insert, [&](sqlite3_stmt* statement, const auto& put) {
        bench::SQLiteFile(Source()).Read(query, [&](sqlite3_stmt* row) {
            for (int column = 0; column < columnCount; ++column)
                sqlite3_bind_value(statement, column + 1, sqlite3_column_value(row, column));
            put();
        });
    });
    if (!file.Execute("COMMIT")) state.SkipWithError("cannot commit");
}

void LoadIntoServer(const test::TestDatabase& target, benchmark::State& state) {
    const ConnectionKeywords keywords(target.ConnectionString());
    const auto value = [&](TextView keyword) { return ToUtf8(*keywords.Find(keyword)); };
    const std::string file = ToUtf8(RowsFile());
    const std::string command =
        target.Kind() == Engine::PostgreSQL
            ? "PGPASSWORD=" + value(u"PWD") + " psql -q -h " + value(u"Server") + " -p " + value(u"Port") + " -U " +
                  value(u"UID") + " -d " + value(u"Database") + " -c \"\\copy velmoraLessons from '" + file + "'\""
            : "MYSQL_PWD=" + value(u"PWD") + " mariadb --no-defaults --local-infile=1 -h " + value(u"Server") + " -P " +
                  value(u"Port") + " -u " + value(u"UID") + " " + value(u"Database") +
                  " -e \"LOAD DATA LOCAL INFILE '" + file + "' INTO TABLE velmoraLessons CHARACTER SET utf8mb4\"";
    if (std::system(command.c_str()) != 0) state.SkipWithError("the loader failed");
}

void Copy(benchmark::State& state, Engine engine) {
    if (bench::IsMissing(engine, state)) return;
    const test::TestDatabase loaded(engine), copied(engine);
    RowsFile();
    bench::InTurn(
        state,
        [&] {
            loaded.Run(EmptyTables(engine));
            engine == Engine::SQLite ? LoadIntoSQLite(loaded, state) : LoadIntoServer(loaded, state);
        },
        [&] {
            copied.Run(NoTables()); // which takes longer to fill than empty ones
            DatabaseCopy copy({Source().ConnectionString(), u"the source"}, {copied.ConnectionString(), u"the target"});
            copy.Write([](size_t) {});
            copy.Finish();
        },
        engine == Engine::SQLite ? 1.5 : 3, &bench::Times::clock);
    for (const auto* database : {&loaded, &copied})
        if (database->Query(u"SELECT Count(*) FROM velmoraLessons") != ToText(rowCount))
            state.SkipWithError("rows are missing");
    state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK_CAPTURE(Copy, SQLite, Engine::SQLite)
    ->Name("Copy 100000 lessons to SQLite/a prepared insert/dax copy")
    ->Iterations(7)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Copy, PostgreSQL, Engine::PostgreSQL)
    ->Name("Copy 100000 lessons to PostgreSQL/COPY/dax copy")
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Copy, MariaDB, Engine::MariaDB)
    ->Name("Copy 100000 lessons to MariaDB/LOAD DATA/dax copy")
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace dax
