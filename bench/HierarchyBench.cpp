// Loading and saving a hierarchy, beside the engine's own interface on the same rows and statements in the same run.
#include "Courses.h"
#include "Peak.h"

#include <unordered_map>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace dax {

namespace {

using bench::Hierarchy, bench::Loaded, bench::UpdatesOf;

struct PlainLesson {
    std::string id, title, identifier, properties, parent;
    int indent, position, type;
};

// Into plain structs, with a hash on the key; the file is opened and closed too, as the editor does it.
void LoadWithSQLiteItself(benchmark::State& state, int64_t size) {
    bench::SQLiteFile file(Hierarchy(size));
    std::unordered_map<std::string, PlainLesson> lessons;
    file.Read(bench::treeQuery, [&lessons](sqlite3_stmt* row) {
        using bench::TextOf;
        PlainLesson lesson{TextOf(row, 0),
                           TextOf(row, 1),
                           TextOf(row, 2),
                           TextOf(row, 3),
                           TextOf(row, 4),
                           sqlite3_column_int(row, 5),
                           sqlite3_column_int(row, 6),
                           sqlite3_column_int(row, 7)};
        lessons.try_emplace(lesson.id, std::move(lesson));
    });
    if (lessons.size() != static_cast<size_t>(size)) state.SkipWithError("lessons are missing");
}

// Both begin with no file open and end with all memory given back.
void Load(benchmark::State& state, int64_t size) {
    const test::TestDatabase& database = Hierarchy(size);
    bench::InTurn(
        state, [&] { LoadWithSQLiteItself(state, size); },
        [&] { benchmark::DoNotOptimize(Loaded(database, size, state)); }, 1.15, &bench::Times::processor);
}

// The engine itself is handed the finished statements; the editor makes them out of its nodes. Both open the file,
// run one transaction and wait for its commit with the engine's own settings.
void Save(benchmark::State& state, int64_t size) {
    const auto editor = Loaded(Hierarchy(size), size, state);
    std::vector<std::string> statements;
    for (const Text& statement : UpdatesOf(*editor)) statements.push_back(ToUtf8(statement));
    const auto plain = [&] {
        bench::SQLiteFile file(Hierarchy(size));
        bool isDone = file.Execute("BEGIN");
        for (const std::string& statement : statements) isDone = isDone && file.Execute(statement.c_str());
        if (!isDone || !file.Execute("COMMIT")) state.SkipWithError("not saved");
    };
    bench::InTurn(
        state, plain, [&] { editor->SaveDatabase(); }, 1.05, &bench::Times::processor);
}

void SaveOnServer(benchmark::State& state, Engine engine, int64_t size) {
    if (bench::IsMissing(engine, state)) return;
    const auto editor = Loaded(Hierarchy(size, engine), size, state);
    const std::vector<Text> statements = UpdatesOf(*editor);
    const auto plain = [&] {
        Connection connection;
        connection.Open(Hierarchy(size, engine).ConnectionString());
        connection.BeginTrans();
        for (const Text& statement : statements) connection.Execute(statement);
        connection.CommitTrans();
    };
    bench::InTurn(
        state, plain, [&] { editor->SaveDatabase(); }, 0.5, &bench::Times::clock);
}

// A save that looks for other authors' changes beside one that does not.
void SaveWithCheck(benchmark::State& state, Engine engine, int64_t size) {
    if (bench::IsMissing(engine, state)) return;
    const auto editor = Loaded(Hierarchy(size, engine), size, state);
    const auto save = [&](bool checks) {
        editor->SetConflictCheck(checks);
        if (!editor->SaveDatabase()) state.SkipWithError("not saved");
    };
    bench::InTurn(
        state, [&] { save(false); }, [&] { save(true); }, 1.3, &bench::Times::clock);
}

#ifdef __GLIBC__
// Bytes that a lesson takes in the editor, its packed properties included.
void MemoryPerLesson(benchmark::State& state) {
    constexpr int64_t size = 100'000;
    const test::TestDatabase& database = Hierarchy(size);
    for (auto _ : state) {
        const auto used = [] {
            const auto info = mallinfo2();
            return info.uordblks + info.hblkhd;
        };
        const size_t before = used();
        const auto editor = Loaded(database, size, state);
        state.counters["bytes per lesson"] = static_cast<double>(used() - before) / static_cast<double>(size);
        state.counters["bytes at most"] = 400;
    }
}
BENCHMARK(MemoryPerLesson)->Name("Memory/100000 lessons in the editor")->Iterations(1);

// Of the whole program, and of one that does nothing.
void PeakOfEdit(benchmark::State& state, bool isEditing) {
    const std::string file = ToUtf8(Hierarchy(100'000).Name());
    for (auto _ : state) {
        const auto peak =
            bench::PeakOf("dax", isEditing ? std::vector<std::string>{"edit", file, "update", "L-5", "title", "New"}
                                           : std::vector<std::string>{"--version"});
        if (!peak) state.SkipWithError("the program failed");
        state.counters["MiB"] = peak.value_or(0);
        if (isEditing) state.counters["MiB at most"] = 75;
    }
}
BENCHMARK_CAPTURE(PeakOfEdit, bare, false)->Name("Peak memory/dax --version")->Iterations(1);
BENCHMARK_CAPTURE(PeakOfEdit, edit, true)->Name("Peak memory/dax edit of 100000 lessons")->Iterations(1);
#endif

// The order in which they are registered is the order of the table.
const bool isRegistered = [] {
    for (const auto& [size, turns] : bench::sizes) {
        const std::string what = std::to_string(size) + " lessons, SQLite/own interface/GroupEditor";
        bench::Register(
            "Load " + what, [size = size](benchmark::State& state) { Load(state, size); }, turns);
        bench::Register(
            "Save " + what, [size = size](benchmark::State& state) { Save(state, size); }, turns);
    }
    for (const auto& [engine, name] : {std::pair{Engine::PostgreSQL, "PostgreSQL"}, {Engine::MariaDB, "MariaDB"}}) {
        const std::string row =
            std::string("Save 100000 lessons, ") + name + "/one statement per round trip/GroupEditor/real_time";
        bench::Register(
            row, [engine = engine](benchmark::State& state) { SaveOnServer(state, engine, 100'000); }, 1);
    }
    for (const auto& [engine, name] :
         {std::pair{Engine::SQLite, "SQLite"}, {Engine::PostgreSQL, "PostgreSQL"}, {Engine::MariaDB, "MariaDB"}}) {
        const std::string row = std::string("Looking for conflicts, ") + name +
                                "/save of 10000 lessons/the same with ConflictCheck/real_time";
        bench::Register(
            row, [engine = engine](benchmark::State& state) { SaveWithCheck(state, engine, 10'000); }, 5);
    }
    return true;
}();

} // namespace

} // namespace dax
