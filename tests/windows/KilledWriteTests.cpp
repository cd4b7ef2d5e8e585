// A process that is ended in the middle of the write test leaves no row behind: the program starts itself again as the
// victim, told by the environment what to do.
#include "controls/win32/Windows.h"
#include "support/TestDatabases.h"
#include "validation/ContentValidation.h"

#include "data/Schema.h"

#include <vector>

namespace dax::test {

namespace {

constexpr wchar_t databaseVariable[] = L"DAX_VICTIM_DATABASE", rowsVariable[] = L"DAX_VICTIM_ROWS";

Text Variable(const wchar_t* name) {
    std::vector<wchar_t> value(2000);
    GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    return FromWide(value.data());
}

DWORD RunVictim(const Text& connectionString, int rows) {
    SetEnvironmentVariableW(databaseVariable, Wide(connectionString));
    SetEnvironmentVariableW(rowsVariable, Wide(ToText(rows)));
    std::vector<wchar_t> program(2000);
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    Text command = u"\"" + FromWide(program.data()) +
                   u"\" --gtest_also_run_disabled_tests --gtest_filter=KilledWrite.DISABLED_Victim --gtest_output=";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES; // none: the victim is silent
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr, FALSE, 0, nullptr,
                        nullptr, &startup, &process))
        return 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

constexpr DWORD killed = 77;

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
        EXPECT_EQ(RunVictim(database->ConnectionString(), rows), killed);
        for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
            EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM " + Text(table.name)), u"0")
                << ToUtf8(table.name) << " after " << rows << " rows";
    }
    int32_t number = 0;
    Text description;
    EXPECT_TRUE(TestContentWrite(database->ConnectionString(), number, description, false)) << ToUtf8(description);
}

} // namespace dax::test
