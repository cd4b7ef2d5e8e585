// Another SQLite program on the same file, the sqlite3 shell: no call waits beyond the time-out, and nothing is lost.
#ifndef _WIN32
#include "hierarchy/EditorFixture.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace dax {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto timeout = 2s, busyMachine = 5s;

class TwoPrograms : public ::testing::TestWithParam<const char16_t*>, protected test::RecordingEditor {
protected:
    void SetUp() override {
        EXPECT_EQ(database.Query(Text(u"PRAGMA journal_mode = ") + GetParam()), GetParam());
        database.Run(test::SampleRows());
        editor->SetConnectionString(database.Name());
        ASSERT_TRUE(editor->LoadDatabase());
    }
    // The shell does this; `meanwhile` is done before its commit.
    bool Shell(const std::string& statements, const std::function<void()>& meanwhile = {}) const {
        const std::filesystem::path ready = folder.Path() / "ready";
        const std::string line =
            "sqlite3 -batch -bail '" + ToUtf8(database.Name()) + "' >'" + shellOutput.string() + "' 2>&1";
        FILE* const shell = popen(line.c_str(), "w");
        std::fputs(statements.c_str(), shell);
        if (meanwhile) {
            std::fputs(("\n.shell touch '" + ready.string() + "'\n").c_str(), shell);
            std::fflush(shell);
            const auto end = Clock::now() + 60s;
            while (!std::filesystem::exists(ready) && Clock::now() < end) std::this_thread::sleep_for(1ms);
            meanwhile();
            std::filesystem::remove(ready);
            std::fputs("COMMIT;", shell);
        }
        return pclose(shell) == 0;
    }
    std::string ShellOutput() const { return test::ReadFile(shellOutput); }
    // Fails, because of the other program, at the time-out.
    void ExpectTimeout(const std::function<bool()>& work) {
        const auto begin = Clock::now();
        EXPECT_FALSE(work());
        const auto taken = Clock::now() - begin;
        EXPECT_GE(taken, timeout / 2);
        EXPECT_LT(taken, timeout + busyMachine);
        EXPECT_EQ(errorNumber, ErrorNumbers::Timeout) << ToUtf8(error);
    }
    bool Save(const Text& title) {
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, title, u"", editor->GetLessonType(id));
        return editor->SaveDatabase();
    }
    void ExpectRows(const Text& title, const Text& locks) {
        for (const auto& [id, row] : test::ReadRows(database.Name()))
            EXPECT_TRUE(row.starts_with(title + u"|")) << ToUtf8(id);
        EXPECT_EQ(database.Query(u"SELECT Count(*) FROM velmoraUserLocks"), locks);
    }

    const test::EmptyCourse database;
    const test::TempFolder folder;
    const std::filesystem::path shellOutput = folder.Path() / "output";
    const bool isWal = Text(GetParam()) == u"wal"; // where readers are never locked out
};
INSTANTIATE_TEST_SUITE_P(Journals, TwoPrograms, ::testing::Values(u"delete", u"wal"),
                         [](const auto& each) { return ToUtf8(each.param); });

const std::string addLock = "INSERT INTO velmoraUserLocks (lessonID, username, lockType) VALUES ('a', 'shell', 1);";

TEST_P(TwoPrograms, FileLockedByAnotherProgram) {
    EXPECT_TRUE(Shell("BEGIN IMMEDIATE; " + addLock, [&] {
        EXPECT_TRUE(editor->LoadDatabase()) << ToUtf8(error);
        EXPECT_EQ(database.Query(u"SELECT Count(*) FROM velmoraUserLocks"), u"0");
        ExpectTimeout([&] { return Save(u"ours"); });
    })) << ShellOutput();
    EXPECT_TRUE(Save(u"ours")) << ToUtf8(error);
    ExpectRows(u"ours", u"1");
    EXPECT_TRUE(Shell("BEGIN EXCLUSIVE;", [&] {
        if (!isWal) ExpectTimeout([&] { return editor->LoadDatabase(); });
    })) << ShellOutput();
    EXPECT_TRUE(editor->LoadDatabase());
    EXPECT_TRUE(Shell("BEGIN; SELECT Count(*) FROM velmoraLessons;", [&] {
        if (isWal)
            EXPECT_TRUE(Save(u"later")) << ToUtf8(error);
        else
            ExpectTimeout([&] { return Save(u"later"); }); // all can be written but not committed
    })) << ShellOutput();
    EXPECT_TRUE(Save(u"later")) << ToUtf8(error);
    ExpectRows(u"later", u"1");
}

TEST_P(TwoPrograms, BothWriteAtOnce) {
    constexpr int count = 30;
    std::thread shell([&] {
        for (int i = 0; i < count; ++i) EXPECT_TRUE(Shell(".timeout 60000\n" + addLock)) << ShellOutput();
    });
    for (int i = 1; i <= count; ++i) {
        const auto begin = Clock::now();
        while (!Save(ToText(i)) && errorNumber == ErrorNumbers::Timeout && Clock::now() - begin < 60s) {
        }
    }
    shell.join();
    ExpectRows(ToText(count), ToText(count));
    EXPECT_EQ(database.Query(u"PRAGMA integrity_check"), u"ok");
}

} // namespace
} // namespace dax
#endif
