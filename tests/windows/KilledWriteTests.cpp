// A process that is ended in the middle of the write test leaves no row behind, and in the middle of a save all of it
// or nothing: the program starts itself again as the victim, told by the environment what to do.
#include "controls/win32/Windows.h"
#include "hierarchy/EditorFixture.h"
#include "validation/ContentValidation.h"

#include <cstdlib>
#include <random>
#include <vector>

namespace dax::test {

namespace {

constexpr wchar_t databaseVariable[] = L"DAX_VICTIM_DATABASE", rowsVariable[] = L"DAX_VICTIM_ROWS",
                  titleVariable[] = L"DAX_VICTIM_TITLE", eventVariable[] = L"DAX_VICTIM_EVENT";
constexpr DWORD killed = 77;

Text Variable(const wchar_t* name) {
    std::vector<wchar_t> value(2000);
    GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    return FromWide(value.data());
}

// `whileItRuns`, when given, gets the process.
DWORD RunVictim(const Text& suite, const Text& connectionString, int rows,
                const std::function<void(HANDLE)>& whileItRuns = {}) {
    SetEnvironmentVariableW(L"GTEST_TOTAL_SHARDS", nullptr); // the victim is in no shard
    SetEnvironmentVariableW(databaseVariable, Wide(connectionString));
    SetEnvironmentVariableW(rowsVariable, Wide(ToText(rows)));
    for (const wchar_t* shard : {L"GTEST_TOTAL_SHARDS", L"GTEST_SHARD_INDEX"}) // the victim is in none
        SetEnvironmentVariableW(shard, nullptr);
    std::vector<wchar_t> program(2000);
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    Text command = u"\"" + FromWide(program.data()) + u"\" --gtest_also_run_disabled_tests --gtest_filter=" + suite +
                   u".DISABLED_Victim --gtest_output=";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES; // none: the victim is silent
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr, FALSE, 0, nullptr,
                        nullptr, &startup, &process))
        return 0;
    if (whileItRuns) whileItRuns(process.hProcess);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

class KilledWriteOnEveryEngine : public EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, KilledWriteOnEveryEngine, testing::ValuesIn(AllEngines()), EngineName);

} // namespace

TEST(KilledWrite, DISABLED_Victim) {
    int inserts = 0;
    const Text rows = Variable(rowsVariable);
    SetStatementObserver([&](TextView statement) {
        if (statement.starts_with(u"INSERT") && ToText(inserts++) == rows)
            TerminateProcess(GetCurrentProcess(), killed);
    });
    int32_t number = 0;
    Text description;
    EXPECT_FALSE(TestContentWrite(Variable(databaseVariable), number, description, false)) << "was not killed";
}

TEST_P(KilledWriteOnEveryEngine, LeavesNoRow) {
    database->Run(Schema::CreateStatements(Schema::Database::Content, database->Kind()));
    for (const int rows : {0, 1, 4}) {
        EXPECT_EQ(RunVictim(u"KilledWrite", database->ConnectionString(), rows), killed);
        for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
            EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM " + Text(table.name)), u"0")
                << ToUtf8(table.name) << " after " << rows << " rows";
    }
    int32_t number = 0;
    Text description;
    EXPECT_TRUE(TestContentWrite(database->ConnectionString(), number, description, false)) << ToUtf8(description);
}

// All titles become one, the row of the other title goes and that of this one comes.
TEST(KilledSaver, DISABLED_Victim) {
    const Text title = Variable(titleVariable);
    const Text fatal = Variable(rowsVariable); // the statement that is the last; 0: somebody else ends it
    int sent = 0;
    HeardEditor heard;
    heard.editor->SetConnectionString(Variable(databaseVariable));
    ASSERT_TRUE(heard.editor->LoadDatabase());
    for (const Text& id : heard.editor->GetChildLessonIDCollection(u"")) {
        heard.editor->UpdateLesson(id, title, u"", ltLesson);
        if (id.starts_with(u"new")) heard.editor->RemoveLesson(id, false);
    }
    heard.editor->AddLesson(u"new" + title, title, u"", ltLesson);
    SetStatementObserver([&](TextView) {
        if (ToText(++sent) == fatal) TerminateProcess(GetCurrentProcess(), killed);
    });
    const HANDLE begins = OpenEventW(EVENT_MODIFY_STATE, FALSE, Wide(Variable(eventVariable)));
    SetEvent(begins);
    CloseHandle(begins);
    ASSERT_TRUE(heard.editor->SaveDatabase()) << ToUtf8(heard.error);
}

class KilledSave : public testing::TestWithParam<const char16_t*> {};
INSTANTIATE_TEST_SUITE_P(Journals, KilledSave, testing::Values(u"delete", u"wal"),
                         [](const auto& each) { return ToUtf8(each.param); });

TEST_P(KilledSave, IsDoneOrNot) {
    const TestDatabase database(Engine::SQLite);
    ASSERT_EQ(database.Ask(Text(u"PRAGMA journal_mode = ") + GetParam()), GetParam());
    CreateTables(database);
    std::vector<Text> rows{RowStatement(u"new0", u"0", u"", 1, 0, 1)};
    for (int i = 0; i < 60; ++i) rows.push_back(RowStatement(u"k" + ToText(i), u"0", u"", 1, i, 1));
    database.Run(rows);
    const Text name = u"dax_victim_" + ToText(static_cast<long long>(GetCurrentProcessId()));
    const HANDLE begins = CreateEventW(nullptr, FALSE, FALSE, Wide(name));
    SetEnvironmentVariableW(eventVariable, Wide(name));
    const char* const wanted = std::getenv("DAX_KILLS"); // many more by hand
    const int kills = wanted ? std::atoi(wanted) : 12;
    std::mt19937 random(3);
    int done = 0;
    Text title = u"0", other = u"1";
    for (int kill = 0; kill < kills; ++kill) {
        SetEnvironmentVariableW(titleVariable, Wide(other));
        const bool isBeforeStatement = kill % 2 == 0;
        const auto statement = static_cast<int>(1 + random() % 62);
        const DWORD code =
            RunVictim(u"KilledSaver", database.Name(), isBeforeStatement ? statement : 0, [&](HANDLE process) {
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
        done += isDone;
        ASSERT_EQ(found.size(), 61U);
        ASSERT_TRUE(found.contains(u"new" + title));
        for (const auto& [id, row] : found) ASSERT_TRUE(row.starts_with(title + u"|")) << "kill " << kill;
    }
    CloseHandle(begins);
    EXPECT_EQ(database.Ask(u"PRAGMA integrity_check"), u"ok");
    std::cout << done << " of " << kills << " saves were done before the end" << std::endl;
}

} // namespace dax::test
