// What the measurements share. A row is named "group/row"; the first row of a group is what the others are compared
// with. Work inside our own process is compared by processor time, which a busy machine leaves alone; what waits for a
// server by the clock (its row ends in real_time). Where a ratio is promised, one measurement does both in turn, is
// named "group/first row/second row", and the median of the turns' ratios counts.
#pragma once

#include "support/TestDatabases.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <map>
#include <memory>
#include <string>

namespace dax::bench {

// Databases by engine and size, kept for the whole run, since filling takes longer than what is measured. They go
// before the program's end does away with the drivers.
using Databases = std::map<std::pair<Engine, int64_t>, std::unique_ptr<test::TestDatabase>>;
inline Databases hierarchies, validated, locks;

// What must hold is printed beside what was measured: the ratio to the first row of the group, or seconds.
inline void RatioAtMost(benchmark::State& state, double ratio) { state.counters["ratio at most"] = ratio; }
inline void SecondsAtMost(benchmark::State& state, double seconds) { state.counters["seconds at most"] = seconds; }

// True, and the measurement skipped, when there is no such server.
inline bool IsMissing(Engine engine, benchmark::State& state) {
    const std::string why = test::SkipReason(engine);
    if (!why.empty()) state.SkipWithError(why.c_str());
    return !why.empty();
}

// What a piece of work takes, in seconds.
struct Times {
    double clock, processor;
};
template <typename Work>
Times Measured(Work work) {
    const auto begin = std::chrono::steady_clock::now();
    const std::clock_t beginOfProcessor = std::clock();
    work();
    const std::chrono::duration<double> clock = std::chrono::steady_clock::now() - begin;
    return {clock.count(), static_cast<double>(std::clock() - beginOfProcessor) / CLOCKS_PER_SEC};
}

// Runs both alternately, so that other load of the machine affects both the same. The fastest turn of each and
// the median of the ratios go to the table. Nothing is promised of the ratio when `ratioAtMost` is 0.
template <typename Plain, typename Ours>
void InTurn(benchmark::State& state, Plain plain, Ours ours, double ratioAtMost, double Times::*compared) {
    std::vector<double> ratios;
    Times best[2] = {{1e9, 1e9}, {1e9, 1e9}};
    for (auto _ : state) {
        const Times taken[2] = {Measured(plain), Measured(ours)};
        ratios.push_back(taken[1].*compared / taken[0].*compared);
        for (const int who : {0, 1}) {
            best[who].clock = std::min(best[who].clock, taken[who].clock);
            best[who].processor = std::min(best[who].processor, taken[who].processor);
        }
    }
    if (ratios.empty()) return; // skipped
    std::ranges::sort(ratios);
    state.counters["ratio"] = ratios[ratios.size() / 2];
    state.counters["first clock"] = best[0].clock;
    state.counters["first processor"] = best[0].processor;
    state.counters["second clock"] = best[1].clock;
    state.counters["second processor"] = best[1].processor;
    if (ratioAtMost > 0) RatioAtMost(state, ratioAtMost);
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
    // `row` is called with the statement for each row; returns the number of rows.
    template <typename Row>
    int64_t Read(const char* query, Row row) {
        sqlite3_stmt* statement = nullptr;
        int64_t rows = 0;
        if (sqlite3_prepare_v2(file, query, -1, &statement, nullptr) != SQLITE_OK) return -1;
        for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) row(statement);
        sqlite3_finalize(statement);
        return rows;
    }
    // `rows` is called with the statement and what puts a row with the values bound then.
    template <typename Rows>
    void Fill(const char* insert, Rows rows) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(file, insert, -1, &statement, nullptr) != SQLITE_OK) return;
        rows(statement, [&] {
            sqlite3_step(statement);
            sqlite3_reset(statement);
        });
        sqlite3_finalize(statement);
    }

private:
    sqlite3* file = nullptr;
};

inline std::string TextOf(sqlite3_stmt* statement, int column) {
    const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return bytes ? bytes : std::string();
}

} // namespace dax::bench
