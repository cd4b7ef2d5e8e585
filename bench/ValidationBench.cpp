// Validation must not depend on the number of lessons: the same database with ten and with 100,000 of them.
#include "Measure.h"

#include "data/Schema.h"
#include "validation/DatabaseValidator.h"

#include <map>
#include <memory>

namespace dax {
namespace {

test::TestDatabase& DatabaseWith(Engine engine, int64_t lessons) {
    auto& database = bench::validated[{engine, lessons}];
    if (database) return *database;
    database = std::make_unique<test::TestDatabase>(engine);
    database->Run(Schema::CreateStatements(Schema::Database::Content, engine));
    std::vector<Text> inserts;
    for (int64_t lesson = 0; lesson < lessons; ++lesson) {
        const Text number = ToText(lesson);
        inserts.push_back(u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel,"
                          u" sortPosition, lessonType, lessonProperties, guideData, lessonData) VALUES ('lesson" +
                          number + u"', 'Lesson " + number + u"', 'L" + number + u"', '', 1, " + number +
                          u", 1, '', '', '')");
    }
    Connection connection;
    connection.Open(database->ConnectionString());
    connection.BeginTrans();
    connection.ExecuteAll(inserts);
    connection.CommitTrans();
    return *database;
}

void Validate(benchmark::State& state, Engine engine, int64_t lessons) {
    if (bench::IsMissing(engine, state)) return;
    const test::TestDatabase& database = DatabaseWith(engine, lessons);
    DatabaseValidator validator;
    for (auto step : state) {
        if (validator.ValidateDataConnection(database.ConnectionString(), database.Name(), engine == Engine::SQLite))
            continue;
        state.SkipWithError(ToUtf8(validator.ErrorDescription()).c_str());
        return;
    }
}

const bool isRegistered = [] {
    for (const auto& [engine, name] : {std::pair{Engine::SQLite, "SQLite"}, std::pair{Engine::PostgreSQL, "PostgreSQL"},
                                       std::pair{Engine::MariaDB, "MariaDB"}}) {
        for (const int64_t lessons : {10, 100'000}) {
            const std::string row = std::string("Validate, ") + name + "/" + std::to_string(lessons) + " lessons";
            benchmark::RegisterBenchmark(row.c_str(), Validate, engine, lessons)
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

} // namespace
} // namespace dax
