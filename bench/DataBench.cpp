// Opening a database, and reading 100,000 rows, beside the engine's own interface in the same run.
#include "data/Recordset.h"
#include "support/TestDatabases.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

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

void OpenAndClose(benchmark::State& state) {
    for (auto _ : state) {
        Connection connection;
        connection.Open(Lessons().ConnectionString());
        benchmark::DoNotOptimize(connection.IsOpen());
    }
}
BENCHMARK(OpenAndClose)->Unit(benchmark::kMicrosecond);

void ReadRows(benchmark::State& state) {
    Lessons();
    for (auto _ : state) {
        Recordset recordset;
        recordset.Open(FromUtf8(query), Lessons().ConnectionString());
        size_t units = 0;
        for (; !recordset.Eof(); recordset.MoveNext()) {
            for (size_t column = 0; column < 3; ++column) units += recordset.FieldText(column).size();
            units += static_cast<size_t>(recordset.FieldNumber(3, 0));
        }
        benchmark::DoNotOptimize(units);
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK(ReadRows)->Unit(benchmark::kMillisecond);

void ReadRowsWithSQLiteItself(benchmark::State& state) {
    const std::string path = ToUtf8(Lessons().Name());
    for (auto _ : state) {
        sqlite3* file = nullptr;
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_open(path.c_str(), &file) != SQLITE_OK ||
            sqlite3_prepare_v2(file, query, -1, &statement, nullptr) != SQLITE_OK)
            state.SkipWithError("cannot open");
        size_t units = 0;
        while (statement && sqlite3_step(statement) == SQLITE_ROW) {
            for (int column = 0; column < 3; ++column) {
                benchmark::DoNotOptimize(sqlite3_column_text16(statement, column));
                units += static_cast<size_t>(sqlite3_column_bytes16(statement, column)) / 2;
            }
            units += static_cast<size_t>(sqlite3_column_int(statement, 3));
        }
        benchmark::DoNotOptimize(units);
        sqlite3_finalize(statement);
        sqlite3_close(file);
    }
    state.SetItemsProcessed(state.iterations() * rowCount);
}
BENCHMARK(ReadRowsWithSQLiteItself)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace dax
