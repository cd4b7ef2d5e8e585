// A process that is ended in the middle of the write test or of a save leaves all of it in the file or nothing, by the
// means of Windows: the program starts itself again as the process to be killed, controlled by environment variables.
#include "controls/win32/Windows.h"
#include "hierarchy/EditorFixture.h"
#include "validation/ContentValidation.h"

#include <cstdlib>
#include <process.h>
#include <random>

namespace dax::test {

namespace {

constexpr wchar_t databaseVariable[] = L"DAX_CHILD_DATABASE", statementVariable[] = L"DAX_CHILD_STATEMENT",
                  titleVariable[] = L"DAX_CHILD_TITLE", eventVariable[] = L"DAX_CHILD_EVENT";
constexpr DWORD killed = 77;

Text Variable(const wchar_t* name) {
    wchar_t value[2000] = L"";
    GetEnvironmentVariableW(name, value, 2000);
    return FromWide(value);
}

// Ends just before the statement of that number; 0: `whileItRuns` ends it. Without a title it is the write test that
// runs, else a save of all entries with that title.
DWORD RunChild(const TestDatabase& database, int statement, const Text& title,
               const std::function<void(HANDLE)>& whileItRuns = {}) {
    for (const wchar_t* shard : {L"GTEST_TOTAL_SHARDS", L"GTEST_SHARD_INDEX"}) // the child process is in none
        SetEnvironmentVariableW(shard, nullptr);
    SetEnvironmentVariableW(databaseVariable, Wide(database.ConnectionString()));
    SetEnvironmentVariableW(statementVariable, Wide(ToText(statement)));
    SetEnvironmentVariableW(titleVariable, Wide(title));
    const HANDLE process = reinterpret_cast<HANDLE>(
        _wspawnl(_P_NOWAIT, _wpgmptr, L"child", L"--gtest_also_run_disabled_tests", L"--gtest_brief=1",
                 L"--gtest_filter=Killed.DISABLED_ChildProcess", L"--gtest_output=", nullptr));
    if (whileItRuns) whileItRuns(process);
    EXPECT_EQ(WaitForSingleObject(process, 60'000), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    GetExitCodeProcess(process, &exitCode);
    CloseHandle(process);
    return exitCode;
}

} // namespace

TEST(Killed, DISABLED_ChildProcess) {
    const Text title = Variable(titleVariable), fatal = Variable(statementVariable);
    const HANDLE begins = OpenEventW(EVENT_MODIFY_STATE, FALSE, Wide(Variable(eventVariable)));
    RecordingEditor recorded;
    GroupEditor& editor = *recorded.editor;
    editor.SetConnectionString(Variable(databaseVariable));
    ASSERT_TRUE(editor.LoadDatabase());
    // All titles become one, the row of the other title is deleted and that of this one inserted.
    for (const Text& id : editor.GetChildLessonIDCollection(u"")) {
        editor.UpdateLesson(id, title, u"", ltLesson);
        if (id.starts_with(u"new")) editor.RemoveLesson(id, false);
    }
    editor.AddLesson(u"new" + title, title, u"", ltLesson);
    int sent = 0;
    SetStatementObserver([&](TextView) {
        if (ToText(++sent) == fatal) TerminateProcess(GetCurrentProcess(), killed);
    });
    SetEvent(begins);
    CloseHandle(begins);
    int32_t number = 0;
    Text description;
    ASSERT_TRUE(title.empty() ? TestContentWrite(Variable(databaseVariable), number, description, true)
                              : editor.SaveDatabase())
        << ToUtf8(recorded.error + description);
}

class Killed : public testing::TestWithParam<const char16_t*> {};
INSTANTIATE_TEST_SUITE_P(Journals, Killed, testing::Values(u"delete", u"wal"),
                         [](const auto& each) { return ToUtf8(each.param); });

TEST_P(Killed, AllOfItIsDoneOrNothing) {
    const TestDatabase database(Engine::SQLite);
    ASSERT_EQ(database.Query(Text(u"PRAGMA journal_mode = ") + GetParam()), GetParam());
    CreateTables(database);
    std::vector<Text> rows{RowStatement(u"new0", u"0", u"", 1, 0, 1)};
    for (int i = 0; i < 60; ++i) rows.push_back(RowStatement(u"k" + ToText(i), u"0", u"", 1, i, 1));
    database.Run(rows);
    const Text name = u"dax_child_" + ToText(static_cast<long long>(GetCurrentProcessId()));
    const HANDLE begins = CreateEventW(nullptr, FALSE, FALSE, Wide(name));
    SetEnvironmentVariableW(eventVariable, Wide(name));
    for (const int statement : {1, 2, 5}) {
        EXPECT_EQ(RunChild(database, statement, u""), killed);
        for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
            EXPECT_EQ(database.Query(u"SELECT Count(*) FROM " + Text(table.name)),
                      table.name == TextView(u"velmoraLessons") ? u"61" : u"0")
                << ToUtf8(table.name) << ", statement " << statement << " of the write test";
    }
    const char* const requested = std::getenv("DAX_KILLS"); // many more by hand
    const int kills = requested ? std::atoi(requested) : 12;
    std::mt19937 random(3);
    Text title = u"0", other = u"1";
    for (int kill = 0; kill < kills; ++kill) {
        const bool isBeforeStatement = kill % 2 == 0;
        const auto statement = static_cast<int>(1 + random() % 62);
        ResetEvent(begins); // the previous child process has set it
        const DWORD code = RunChild(database, isBeforeStatement ? statement : 0, other, [&](HANDLE process) {
            if (isBeforeStatement) return;
            EXPECT_EQ(WaitForSingleObject(begins, 60'000), WAIT_OBJECT_0);
            for (auto left = random() % 120; left > 0; --left) Sleep(1);
            TerminateProcess(process, killed);
        });
        ASSERT_TRUE(!isBeforeStatement || code == killed) << code;
        const std::map<Text, Text> found = ReadRows(database.Name());
        const bool isDone = found.contains(u"new" + other);
        ASSERT_TRUE(!isBeforeStatement || !isDone) << statement;
        if (isDone) std::swap(title, other);
        ASSERT_EQ(found.size(), 61U);
        ASSERT_TRUE(found.contains(u"new" + title));
        for (const auto& [id, row] : found) ASSERT_TRUE(row.starts_with(title + u"|")) << "kill " << kill;
    }
    CloseHandle(begins);
    EXPECT_EQ(database.Query(u"PRAGMA integrity_check"), u"ok");
}

} // namespace dax::test
