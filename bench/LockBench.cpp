// Locks beside the rows barely read, 100,000 of them at work, and the panels of a group with 100,000 lessons.
#include "Courses.h"

#include "data/Schema.h"
#include "locks/LockManager.h"
#include "panels/LessonInfo.h"
#include "panels/LockInfo.h"

namespace dax {

namespace {

constexpr int most = 100'000, deleted = 10'000;

// One group with so many lessons, a lock on each.
const test::TestDatabase& Locks(int count = most) {
    auto& database = bench::locks[{Engine::SQLite, count}];
    if (database) return *database;
    database = std::make_unique<test::TestDatabase>(Engine::SQLite);
    database->Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
    const Text numbers =
        u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + ToText(count) + u") ";
    database->Run({u"INSERT INTO velmoraLessons VALUES ('group', 'Group', 'G', '', 1, 1, 0, '', '', '')",
                   numbers + u"INSERT INTO velmoraLessons SELECT 'l' || i, 'The title of lesson ' || i, 'L-' || i, "
                             u"'group', 2, i, 1, 'StoryboardCount=12' || char(10) || 'Classification=\"internal\"', "
                             u"'', '' FROM n",
                   numbers + u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, "
                             u"lockDate, lockType) SELECT 'l' || i, 'user' || i % 100, 'pc' || i % 100, "
                             u"'10.0.0.' || i % 100, 's' || i % 100, '2026-01-02 03:04:05', i % 4 FROM n"});
    return *database;
}

struct Shown {
    explicit Shown(benchmark::State& state, int count = most) {
        manager.connectionString = Locks(count).ConnectionString();
        manager.isAdministrator = true;
        manager.SetupColumns();
        manager.Error.AddPermanent([&state](int32_t, const Text& description, const Text&, const Text&, int32_t&) {
            state.SkipWithError(ToUtf8(description).c_str());
        });
        manager.Refresh();
        if (manager.LockCount() != count) state.SkipWithError("locks are missing");
    }
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager{list};
};

// What any list of these rows costs: the texts are read and put into the cells.
void FillTextsOnly(benchmark::State& state) {
    const Shown shown(state);
    for (auto _ : state) {
        ListModel list;
        list.SetColumns(shown.list->Columns());
        for (size_t row = 0; row < shown.list->Items().size(); ++row) {
            const size_t item = list.AddItem(shown.list->Cell(row, 0));
            for (size_t column = 1; column < shown.list->Columns().size(); ++column)
                list.SetCell(item, static_cast<int>(column), shown.list->Cell(row, column));
        }
        benchmark::DoNotOptimize(list);
    }
}
BENCHMARK(FillTextsOnly)->Name("100000 locks/the same texts put into a list")->Unit(benchmark::kMillisecond);

// The rows alone, read with the engine's own interface, and Refresh: read, judge and fill.
void RefreshLocks(benchmark::State& state, int count) {
    Shown shown(state, count);
    const std::string query = ToUtf8(shown.manager.BuildLockQuery());
    const auto plain = [&] {
        bench::SQLiteFile file(Locks(count));
        std::vector<std::array<std::string, 10>> rows;
        file.Read(query.c_str(), [&rows](sqlite3_stmt* row) {
            auto& texts = rows.emplace_back();
            for (int column = 0; column < 10; ++column) texts[static_cast<size_t>(column)] = bench::TextOf(row, column);
        });
        if (rows.size() != static_cast<size_t>(count)) state.SkipWithError("locks are missing");
    };
    bench::InTurn(
        state, plain, [&] { shown.manager.Refresh(); }, count == most ? 2 : 0, &bench::Times::processor);
}
const bool isRegistered = [] {
    for (const auto& [count, turns] : {std::pair{1'000, 50}, {10'000, 15}, {most, 5}}) {
        bench::Register(
            "Refresh " + std::to_string(count) + " locks, SQLite/own interface, rows only/LockManager",
            [count = count](benchmark::State& state) { RefreshLocks(state, count); }, turns);
    }
    return true;
}();

void CountLocks(benchmark::State& state) {
    Shown shown(state);
    bool isSelected = false;
    for (auto _ : state) {
        shown.list->SetSelected(0, isSelected = !isSelected); // a click: all counts are taken again
        const LockManager& manager = shown.manager;
        benchmark::DoNotOptimize(manager.LockCount() + manager.DeletableLockCount() + manager.SelectedLockCount() +
                                 manager.SelectedDeletableLockCount() + manager.InvalidLockCount() +
                                 manager.ValidLockCount() + manager.SelectedInvalidLockCount() +
                                 manager.SelectedValidLockCount() + manager.SelectedLockDeleteType());
    }
}
BENCHMARK(CountLocks)->Name("100000 locks/a click and all counts")->Unit(benchmark::kMillisecond);

void DeleteLocks(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Locks().Run({u"CREATE TABLE kept AS SELECT * FROM velmoraUserLocks"});
        auto shown = std::make_unique<Shown>(state);
        for (size_t item = 0; item < deleted; ++item) shown->list->SetSelected(item, true);
        state.ResumeTiming();
        shown->manager.DeleteSelected();
        state.PauseTiming();
        if (shown->manager.LockCount() != most - deleted) state.SkipWithError("not deleted");
        shown.reset();
        Locks().Run(
            {u"DELETE FROM velmoraUserLocks", u"INSERT INTO velmoraUserLocks SELECT * FROM kept", u"DROP TABLE kept"});
        state.ResumeTiming();
    }
}
BENCHMARK(DeleteLocks)
    ->Name("100000 locks/10000 of them deleted, and Refresh")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

std::shared_ptr<GroupEditor> OnGroup(benchmark::State& state) {
    const auto editor = GroupEditor::Create();
    editor->SetConnectionString(Locks().ConnectionString());
    if (!editor->LoadDatabase()) state.SkipWithError("not loaded");
    editor->SetCurrentLessonID(u"group");
    return editor;
}

void ShowLessonInfo(benchmark::State& state) {
    const auto editor = OnGroup(state);
    LessonInfo panel;
    for (auto _ : state) panel.UpdateFrom(editor.get());
    if (panel.Texts().lessonsLine.find(u"100000") == Text::npos) state.SkipWithError("wrong count");
    bench::SecondsAtMost(state, 0.1);
}
BENCHMARK(ShowLessonInfo)->Name("A group of 100000 lessons/LessonInfo")->Unit(benchmark::kMillisecond);

void ShowLockInfo(benchmark::State& state) {
    const auto editor = OnGroup(state);
    LockInfo panel;
    for (auto _ : state) panel.UpdateFrom(editor.get());
    if (panel.LockCount() != most) state.SkipWithError("wrong count");
}
BENCHMARK(ShowLockInfo)->Name("A group of 100000 lessons/LockInfo, 100000 locks")->Unit(benchmark::kMillisecond);

void ShowLockInfoOfFewLocks(benchmark::State& state) {
    const auto editor = OnGroup(state);
    test::TestDatabase few(Engine::SQLite);
    few.Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
    editor->SetConnectionString(few.ConnectionString());
    LockInfo panel;
    for (auto _ : state) panel.UpdateFrom(editor.get());
    bench::SecondsAtMost(state, 0.1);
}
BENCHMARK(ShowLockInfoOfFewLocks)->Name("A group of 100000 lessons/LockInfo, no locks")->Unit(benchmark::kMillisecond);

} // namespace

} // namespace dax
