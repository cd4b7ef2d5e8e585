// What the measurements share. A row is named "group/row"; the first row of a group is what the others are compared
// with. Work inside our own process is compared by processor time, which a busy machine leaves alone; what waits for a
// server by the clock (its row ends in real_time).
#pragma once

#include "support/TestDatabases.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <map>
#include <memory>
#include <string>

namespace dax::bench {

// Databases by engine and size, kept for the whole run, since filling takes longer than what is measured. They go
// before the program's end does away with the drivers.
using Databases = std::map<std::pair<Engine, int64_t>, std::unique_ptr<test::TestDatabase>>;
inline Databases hierarchies, validated;

// What must hold is printed beside what was measured: the ratio to the first row of the group, or seconds.
inline void RatioAtMost(benchmark::State& state, double ratio) { state.counters["ratio at most"] = ratio; }
inline void SecondsAtMost(benchmark::State& state, double seconds) { state.counters["seconds at most"] = seconds; }

// True, and the measurement skipped, when there is no such server.
inline bool IsMissing(Engine engine, benchmark::State& state) {
    const std::string why = test::WhyNot(engine);
    if (!why.empty()) state.SkipWithError(why.c_str());
    return !why.empty();
}

// SQLite through its own interface.
class SQLiteFile {
public:
    explicit SQLiteFile(const test::TestDatabase& database) {
        if (sqlite3_open(ToUtf8(database.Name()).c_str(), &file) != SQLITE_OK) throw std::runtime_error("cannot open");
    }
    ~SQLiteFile() { sqlite3_close(file); }
    SQLiteFile(const SQLiteFile&) = delete;
    SQLiteFile& operator=(const SQLiteFile&) = delete;

    bool Execute(const char* statement) {
        return sqlite3_exec(file, statement, nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    // `row` is called with the statement for each row; answers the number of rows.
    template <typename Row>
    int64_t Read(const char* query, Row row) {
        sqlite3_stmt* statement = nullptr;
        int64_t rows = 0;
        if (sqlite3_prepare_v2(file, query, -1, &statement, nullptr) != SQLITE_OK) return -1;
        for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) row(statement);
        sqlite3_finalize(statement);
        return rows;
    }

private:
    sqlite3* file = nullptr;
};

inline std::string TextOf(sqlite3_stmt* statement, int column) {
    const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return bytes ? bytes : std::string();
}

} // namespace dax::bench
