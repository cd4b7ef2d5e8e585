// Another SQLite program on the same file, the sqlite3 shell: nobody waits longer than told, and nothing is lost.
#ifndef _WIN32
#include "hierarchy/EditorFixture.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace dax {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto told = 2s, busyMachine = 5s;

class TwoPrograms : public ::testing::TestWithParam<const char16_t*>, protected test::HeardEditor {
protected:
    void SetUp() override {
        EXPECT_EQ(database.Ask(Text(u"PRAGMA journal_mode = ") + GetParam()), GetParam());
        test::CreateTables(database);
        database.Run(test::SampleRows());
        editor->SetConnectionString(database.Name());
        ASSERT_TRUE(editor->LoadDatabase());
    }
    // The shell does these one after the other; what is said goes to a file. True when all were done.
    bool Shell(const std::vector<std::string>& commands) const {
        std::string line =
            "sqlite3 -batch -bail '" + ToUtf8(database.Name()) + "' </dev/null >'" + said.string() + "' 2>&1";
        for (const std::string& command : commands) line += " \"" + command + "\"";
        return std::system(line.c_str()) == 0;
    }
    std::string Said() const { return test::ReadFile(said); }
    // Does `work` while the shell is behind these commands and has not yet committed.
    template <typename Work>
    void WhileTheShellHolds(const std::string& begin, const std::string& statement, Work work) {
        std::ofstream(held.string() + "-wait").close();
        std::thread shell([&] {
            EXPECT_TRUE(Shell(
                {begin, statement,
                 ".shell touch " + held.string() + "; while [ -e " + held.string() + "-wait ]; do sleep 0.01; done",
                 "COMMIT"}))
                << Said();
        });
        const auto end = Clock::now() + 60s;
        while (!std::filesystem::exists(held) && Clock::now() < end) std::this_thread::sleep_for(1ms);
        work();
        std::filesystem::remove(held.string() + "-wait");
        shell.join();
        std::filesystem::remove(held);
    }
    // Fails, because of the other program, when the time that was told is over.
    template <typename Work>
    void ExpectTimeout(Work work) {
        const auto begin = Clock::now();
        EXPECT_FALSE(work());
        const auto taken = Clock::now() - begin;
        EXPECT_GE(taken, told / 2);
        EXPECT_LT(taken, told + busyMachine);
        EXPECT_EQ(errorNumber, ErrorNumbers::Timeout) << ToUtf8(error);
    }
    bool Save(const Text& title) {
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, title, u"", editor->GetLessonType(id));
        return editor->SaveDatabase();
    }
    void ExpectTitles(const Text& title) {
        for (const auto& [id, row] : test::ReadRows(database.Name()))
            EXPECT_TRUE(row.starts_with(title + u"|")) << ToUtf8(id);
    }

    test::TestDatabase database{Engine::SQLite};
    test::TempFolder folder;
    std::filesystem::path said = folder.Path() / "said", held = folder.Path() / "held";
};
INSTANTIATE_TEST_SUITE_P(Journals, TwoPrograms, ::testing::Values(u"delete", u"wal"),
                         [](const auto& each) { return ToUtf8(each.param); });

const std::string addLock = "INSERT INTO velmoraUserLocks (lessonID, username, lockType) VALUES ('a', 'shell', 1)";

TEST_P(TwoPrograms, TheOtherWrites) {
    WhileTheShellHolds("BEGIN IMMEDIATE", addLock, [&] {
        EXPECT_TRUE(editor->LoadDatabase()) << ToUtf8(error);
        EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"0");
        ExpectTimeout([&] { return Save(u"ours"); });
    });
    EXPECT_TRUE(Save(u"ours")) << ToUtf8(error);
    ExpectTitles(u"ours");
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"1");
    if (Text(GetParam()) == u"wal") return; // nobody keeps readers out
    WhileTheShellHolds("BEGIN EXCLUSIVE", addLock, [&] { ExpectTimeout([&] { return editor->LoadDatabase(); }); });
    EXPECT_TRUE(editor->LoadDatabase());
}

TEST_P(TwoPrograms, TheOtherReads) {
    WhileTheShellHolds("BEGIN", "SELECT Count(*) FROM velmoraLessons", [&] {
        if (Text(GetParam()) == u"wal")
            EXPECT_TRUE(Save(u"ours")) << ToUtf8(error);
        else
            ExpectTimeout([&] { return Save(u"ours"); }); // all can be written but not committed
    });
    EXPECT_TRUE(Save(u"ours")) << ToUtf8(error);
    ExpectTitles(u"ours");
}

TEST_P(TwoPrograms, WeWrite) {
    Connection connection;
    connection.Open(database.Name());
    connection.BeginTrans();
    connection.Execute(u"UPDATE velmoraLessons SET lessonTitle = 'ours'");
    EXPECT_FALSE(Shell({".timeout 200", addLock}));
    EXPECT_NE(Said().find("locked"), std::string::npos) << Said();
    connection.CommitTrans();
    EXPECT_TRUE(Shell({addLock})) << Said();
    ExpectTitles(u"ours");
}

TEST_P(TwoPrograms, BothAtOnce) {
    constexpr int count = 30;
    std::thread shell([&] {
        for (int i = 0; i < count; ++i) EXPECT_TRUE(Shell({".timeout 60000", addLock})) << Said();
    });
    for (int i = 1; i <= count; ++i) {
        const auto begin = Clock::now();
        while (!Save(ToText(i)) && errorNumber == ErrorNumbers::Timeout && Clock::now() - begin < 60s) {
        }
        Take();
    }
    shell.join();
    ExpectTitles(ToText(count));
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), ToText(count));
    EXPECT_EQ(database.Ask(u"PRAGMA integrity_check"), u"ok");
}

} // namespace
} // namespace dax
#endif
