// Loading and saving a hierarchy, beside the engine's own interface on the same rows and statements in the same run.
#include "Measure.h"

#include "data/Schema.h"
#include "hierarchy/GroupEditor.h"

#include <map>
#include <unordered_map>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace dax {

namespace {

// An ordinary tree: ten children to a node.
const test::TestDatabase& Hierarchy(int64_t size, Engine engine = Engine::SQLite) {
    auto& database = bench::hierarchies[{engine, size}];
    if (database) return *database;
    database = std::make_unique<test::TestDatabase>(engine);
    database->Run(Schema::CreateStatements(Schema::Database::Content, engine));
    const auto id = [engine](const char16_t* number) {
        const Text text = number;
        if (engine == Engine::SQLite) return u"printf('%032x', " + text + u")";
        if (engine == Engine::PostgreSQL) return u"lpad(to_hex(" + text + u"), 32, '0')";
        return u"lpad(lower(hex(" + text + u")), 32, '0')";
    };
    const Text parent = engine == Engine::MariaDB ? u"n.i DIV 10" : u"n.i / 10";
    const Text title = engine == Engine::MariaDB ? u"concat('The title of lesson ', n.i), concat('L-', n.i)"
                                                 : u"'The title of lesson ' || n.i, 'L-' || n.i";
    const Text properties = u"'StoryboardCount=12\nClassification=\"internal\"'";
    if (engine == Engine::MariaDB) database->Run({u"SET GLOBAL max_recursive_iterations = 2000000000"});
    database->Run({Text(engine == Engine::MariaDB ? u"INSERT INTO velmoraLessons " : u"") +
                   u"WITH RECURSIVE n(i, level) AS (SELECT 1, 1 UNION ALL SELECT i + 1, " +
                   (engine == Engine::PostgreSQL ? u"length(i::text)" : u"length(i)") + u" FROM n WHERE i < " +
                   ToText(size) + u") " + (engine == Engine::MariaDB ? u"" : u"INSERT INTO velmoraLessons ") +
                   u"SELECT " + id(u"n.i") + u", " + title + u", CASE WHEN n.i <= 10 THEN '' ELSE " +
                   id(parent.c_str()) + u" END, n.level, n.i, n.i % 2, " + properties + u", '', '' FROM n"});
    return *database;
}

std::shared_ptr<GroupEditor> Loaded(const test::TestDatabase& database, int64_t size, benchmark::State& state) {
    const auto editor = GroupEditor::Create();
    editor->SetConnectionString(database.ConnectionString());
    editor->Error.Add(
        [&state](int32_t, const Text& description, const Text&) { state.SkipWithError(ToUtf8(description).c_str()); });
    if (editor->LoadDatabase() && editor->NodeCount() != size + 1) state.SkipWithError("lessons are missing");
    return editor;
}

// The updates that a save sends.
std::vector<Text> UpdatesOf(GroupEditor& editor) {
    std::vector<Text> statements;
    SetStatementObserver([&](TextView statement) {
        if (statement.starts_with(u"UPDATE")) statements.emplace_back(statement);
    });
    editor.SaveDatabase();
    SetStatementObserver({});
    return statements;
}

struct PlainLesson {
    std::string id, title, identifier, properties, parent;
    int indent, position, type;
};

// Into plain structs, with a hash on the key; the file is opened and closed too, as the editor does it.
void LoadWithSQLiteItself(benchmark::State& state, int64_t size) {
    bench::SQLiteFile file(Hierarchy(size));
    std::unordered_map<std::string, PlainLesson> lessons;
    file.Read("SELECT lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, indentLevel, sortPosition, "
              "lessonType FROM velmoraLessons ORDER BY indentLevel, sortPosition",
              [&lessons](sqlite3_stmt* row) {
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
        [&] { benchmark::DoNotOptimize(Loaded(database, size, state)); }, 2, &bench::Times::processor);
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
        state, plain, [&] { editor->SaveDatabase(); }, 1.3, &bench::Times::processor);
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
    }
}
BENCHMARK(MemoryPerLesson)->Name("Memory/100000 lessons in the editor")->Iterations(1);
#endif

// The order in which they are registered is the order of the table.
const bool isRegistered = [] {
    const auto add = [](const std::string& name, auto measurement, int64_t turns) {
        benchmark::RegisterBenchmark(name.c_str(), measurement)->Iterations(turns)->Repetitions(1);
    };
    for (const auto& [size, turns] : {std::pair<int64_t, int64_t>{10'000, 25}, {100'000, 7}, {1'000'000, 3}}) {
        const std::string what = std::to_string(size) + " lessons, SQLite/own interface/GroupEditor";
        add(
            "Load " + what, [size = size](benchmark::State& state) { Load(state, size); }, turns);
        add(
            "Save " + what, [size = size](benchmark::State& state) { Save(state, size); }, turns);
    }
    for (const auto& [engine, name] : {std::pair{Engine::PostgreSQL, "PostgreSQL"}, {Engine::MariaDB, "MariaDB"}}) {
        const std::string row =
            std::string("Save 100000 lessons, ") + name + "/one statement per round trip/GroupEditor/real_time";
        add(
            row, [engine = engine](benchmark::State& state) { SaveOnServer(state, engine, 100'000); }, 1);
    }
    return true;
}();

} // namespace

} // namespace dax
