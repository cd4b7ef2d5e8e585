// Opening a database, and reading 100,000 rows, beside the engine's own interface in the same run.
#include "Measure.h"

#include "data/Recordset.h"

namespace dax {

namespace {

constexpr int rowCount = 100000;
constexpr const char* query = "SELECT lessonID, lessonTitle, parentID, sortPosition FROM lessons ORDER BY sortPosition";

const test::TestDatabase& Lessons() {
    static const test::TestDatabase database(Engine::SQLite);
    static const bool filled = [] {
        Connection connection;
        connection.Open(database.ConnectionString());
        connection.Execute(u"CREATE TABLE lessons (lessonID varchar(50) PRIMARY KEY, lessonTitle text, parentID "
                           u"varchar(50), sortPosition integer)");
        std::vector<Text> inserts;
        for (int i = 0; i < rowCount; ++i)
            inserts.push_back(u"INSERT INTO lessons VALUES ('id" + ToText(i) + u"', 'Title of lesson " + ToText(i) +
                              u"', 'id" + ToText(i / 10) + u"', " + ToText(i) + u")");
        connection.BeginTrans();
        connection.ExecuteAll(inserts);
        connection.CommitTrans();
        return true;
    }();
    (void)filled;
    return database;
}

void OpenSQLiteItself(benchmark::State& state) {
    Lessons();
    for (auto _ : state) {
        bench::SQLiteFile file(Lessons());
        benchmark::DoNotOptimize(file.Execute("SELECT Count(*) FROM sqlite_master"));
    }
}
BENCHMARK(OpenSQLiteItself)->Name("Open and close/SQLite's own interface")->Unit(benchmark::kMicrosecond);

void Open(benchmark::State& state, Engine engine) {
    if (bench::IsMissing(engine, state)) return;
    std::unique_ptr<test::TestDatabase> own;
    if (engine != Engine::SQLite) own = std::make_unique<test::TestDatabase>(engine);
    const Text connectionString = own ? own->ConnectionString() : Lessons().ConnectionString();
    for (auto _ : state) {
        Connection connection;
        connection.Open(connectionString);
        benchmark::DoNotOptimize(connection.IsOpen());
    }
}
BENCHMARK_CAPTURE(Open, SQLite, Engine::SQLite)->Name("Open and close/SQLite")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Open, PostgreSQL, Engine::PostgreSQL)
    ->Name("Open and close/PostgreSQL")
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Open, MariaDB, Engine::MariaDB)
    ->Name("Open and close/MariaDB")
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

void ReadWithSQLiteItself(benchmark::State& state) {
    Lessons();
    for (auto _ : state) {
        bench::SQLiteFile file(Lessons());
        size_t units = 0;
        const int64_t rows = file.Read(query, [&units](sqlite3_stmt* statement) {
            for (int column = 0; column < 3; ++column) {
                benchmark::DoNotOptimize(sqlite3_column_text16(statement, column));
                units += static_cast<size_t>(sqlite3_column_bytes16(statement, column)) / 2;
            }
            units += static_cast<size_t>(sqlite3_column_int(statement, 3));
        });
        if (rows != rowCount) state.SkipWithError("rows are missing");
        benchmark::DoNotOptimize(units);
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK(ReadWithSQLiteItself)->Name("Read 100000 rows/SQLite's own interface")->Unit(benchmark::kMillisecond);

void Read(benchmark::State& state, bool byName) {
    Lessons();
    for (auto _ : state) {
        Recordset recordset;
        recordset.Open(FromUtf8(query), Lessons().ConnectionString());
        size_t units = 0, rows = 0;
        for (; !recordset.Eof(); recordset.MoveNext(), ++rows) {
            if (byName) {
                for (const char16_t* name : {u"lessonID", u"lessonTitle", u"parentID"})
                    units += std::get<Text>(recordset.Field(name)).size();
                units += static_cast<size_t>(std::get<int64_t>(recordset.Field(u"sortPosition")));
            } else {
                for (size_t column = 0; column < 3; ++column) units += recordset.FieldText(column).size();
                units += static_cast<size_t>(std::get<int64_t>(recordset.Field(3)));
            }
        }
        if (rows != rowCount) state.SkipWithError("rows are missing");
        benchmark::DoNotOptimize(units);
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK_CAPTURE(Read, texts, false)
    ->Name("Read 100000 rows/Recordset, texts by position")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Read, values, true)
    ->Name("Read 100000 rows/Recordset, values by name")
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace dax
