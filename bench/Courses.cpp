#include "Courses.h"

#include "data/Schema.h"

namespace dax::bench {

const test::TestDatabase& Hierarchy(int64_t size, Engine engine) {
    auto& database = hierarchies[{engine, size}];
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
    editor->Error.AddPermanent(
        [&state](int32_t, const Text& description, const Text&) { state.SkipWithError(ToUtf8(description).c_str()); });
    if (editor->LoadDatabase() && editor->NodeCount() != size + 1) state.SkipWithError("lessons are missing");
    return editor;
}

std::vector<Text> UpdatesOf(GroupEditor& editor) {
    std::vector<Text> statements;
    SetStatementObserver([&](TextView statement) {
        if (statement.starts_with(u"UPDATE")) statements.emplace_back(statement);
    });
    editor.SaveDatabase();
    SetStatementObserver({});
    return statements;
}

} // namespace dax::bench
