// Loading and saving a hierarchy, beside the engine's own interface on the same rows and statements in the same run.
#include "data/Schema.h"
#include "hierarchy/GroupEditor.h"
#include "support/TestDatabases.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <map>
#include <unordered_map>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace dax {

namespace {

// An ordinary tree: ten children to a node.
const test::TestDatabase& Hierarchy(int64_t size) {
    static std::map<int64_t, std::unique_ptr<test::TestDatabase>> databases;
    auto& database = databases[size];
    if (database) return *database;
    database = std::make_unique<test::TestDatabase>(Engine::SQLite);
    database->Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
    database->Run({u"WITH RECURSIVE n(i, level) AS (SELECT 1, 1 UNION ALL SELECT i + 1, length(i) FROM n WHERE i < " +
                   ToText(size) +
                   u") INSERT INTO velmoraLessons SELECT printf('%032x', i), 'The title of lesson ' || i, 'L-' || i, "
                   u"CASE WHEN i <= 10 THEN '' ELSE printf('%032x', i / 10) END, level, i, i % 2, "
                   u"'StoryboardCount=12' || char(10) || 'Classification=\"internal\"', '', '' FROM n"});
    return *database;
}

std::shared_ptr<GroupEditor> Loaded(int64_t size, benchmark::State& state) {
    const auto editor = GroupEditor::Create();
    editor->SetConnectionString(Hierarchy(size).ConnectionString());
    if (!editor->LoadDatabase() || editor->NodeCount() != size + 1) state.SkipWithError("not loaded");
    return editor;
}

class File {
public:
    explicit File(const test::TestDatabase& database) {
        if (sqlite3_open(ToUtf8(database.Name()).c_str(), &file) != SQLITE_OK) std::abort();
    }
    ~File() { sqlite3_close(file); }
    sqlite3* file = nullptr;
};

void LoadHierarchy(benchmark::State& state) {
    Hierarchy(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(Loaded(state.range(0), state));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LoadHierarchy)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

struct PlainLesson {
    std::string id, title, identifier, properties, parent;
    int indent, position, type;
};

void LoadHierarchyWithSQLiteItself(benchmark::State& state) {
    const test::TestDatabase& database = Hierarchy(state.range(0));
    for (auto _ : state) {
        File file(database);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(file.file,
                           "SELECT lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, indentLevel, "
                           "sortPosition, lessonType FROM velmoraLessons ORDER BY indentLevel, sortPosition",
                           -1, &statement, nullptr);
        std::unordered_map<std::string, PlainLesson> lessons;
        const auto text = [statement](int column) {
            return std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
        };
        while (sqlite3_step(statement) == SQLITE_ROW) {
            lessons.try_emplace(text(0), PlainLesson{text(0), text(1), text(2), text(3), text(4),
                                                     sqlite3_column_int(statement, 5), sqlite3_column_int(statement, 6),
                                                     sqlite3_column_int(statement, 7)});
        }
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(lessons);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LoadHierarchyWithSQLiteItself)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void SaveHierarchy(benchmark::State& state) {
    const auto editor = Loaded(state.range(0), state);
    for (auto _ : state) {
        if (!editor->SaveDatabase()) state.SkipWithError("not saved");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(SaveHierarchy)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void SaveHierarchyWithSQLiteItself(benchmark::State& state) {
    const auto editor = Loaded(state.range(0), state);
    std::vector<std::string> statements;
    SetStatementObserver([&](TextView statement) { statements.push_back(ToUtf8(statement)); });
    editor->SaveDatabase();
    SetStatementObserver({});
    std::erase_if(statements, [](const std::string& statement) { return !statement.starts_with("UPDATE"); });
    for (auto _ : state) {
        File file(Hierarchy(state.range(0)));
        bool isDone = sqlite3_exec(file.file, "BEGIN", nullptr, nullptr, nullptr) == SQLITE_OK;
        for (const std::string& statement : statements) {
            isDone = isDone && sqlite3_exec(file.file, statement.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
        }
        isDone = isDone && sqlite3_exec(file.file, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
        if (!isDone) state.SkipWithError("not saved");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(statements.size()));
}
BENCHMARK(SaveHierarchyWithSQLiteItself)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

#ifdef __GLIBC__
// Bytes that a lesson takes in the editor, its packed properties included.
void MemoryPerNode(benchmark::State& state) {
    Hierarchy(state.range(0));
    for (auto _ : state) {
        const auto used = [] {
            const auto info = mallinfo2();
            return info.uordblks + info.hblkhd;
        };
        const size_t before = used();
        const auto editor = Loaded(state.range(0), state);
        state.counters["bytes"] = static_cast<double>(used() - before) / static_cast<double>(state.range(0));
    }
}
BENCHMARK(MemoryPerNode)->Arg(100'000)->Iterations(1);
#endif

} // namespace

} // namespace dax
