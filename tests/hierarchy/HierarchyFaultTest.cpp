// Saves that fail for real, at every statement and at the commit: nothing is saved, nothing pending is lost.

#include "hierarchy/EditorFixture.h"
#include "support/SilentServer.h"

#include <chrono>

#ifndef _WIN32
#include <csignal>
#include <random>
#include <sys/wait.h>
#endif

namespace dax {
namespace {

class HierarchyFault : public test::EngineTest, protected test::HeardEditor {
protected:
    void TearDown() override { SetStatementObserver({}); }

    // The sample and as many lessons more; one is removed, two are added, all are renamed.
    void Edit(int more) {
        test::CreateTables(*database);
        std::vector<Text> rows = test::SampleRows();
        for (int i = 0; i < more; ++i) rows.push_back(test::RowStatement(u"k" + ToText(i), u"", u"", 1, 10 + i, 1));
        database->Run(rows);
        editor->SetConnectionString(database->ConnectionString());
        ASSERT_TRUE(editor->LoadDatabase());
        editor->RemoveLesson(u"h", true);
        editor->AddLesson(u"n1", u"", u"", ltGroup);
        editor->AddLesson(u"n2", u"", u"", ltLesson);
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, u"changed", u"", editor->GetLessonType(id));
        before = Rows();
        Take();
    }
    std::map<Text, Text> Rows() const { return test::ReadRows(database->ConnectionString()); }
    void ExpectToldOfNotSaved(bool isSaved, const Text& why) {
        EXPECT_FALSE(isSaved) << ToUtf8(why);
        EXPECT_EQ(Take(), u"ESaveDatabase ") << ToUtf8(why);
        EXPECT_NE(errorNumber, 0);
        EXPECT_FALSE(error.empty());
    }
    void ExpectNotSaved(const Text& why) {
        ExpectToldOfNotSaved(editor->SaveDatabase(), why);
        ASSERT_EQ(Rows(), before) << ToUtf8(why);
    }
    // A server may take a moment until it has given up what a dead session held.
    void ExpectSavedAtLast() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        bool isSaved = editor->SaveDatabase();
        while (!isSaved && std::chrono::steady_clock::now() < end) isSaved = editor->SaveDatabase();
        ASSERT_TRUE(isSaved) << ToUtf8(error);
        ExpectSaved();
        const auto after = Rows();
        ASSERT_TRUE(editor->SaveDatabase()) << "nothing is pending: no row is inserted twice";
        EXPECT_EQ(Rows(), after);
    }
    void ExpectSaved() const {
        const auto after = Rows();
        EXPECT_EQ(after.size(), before.size() + 1);
        EXPECT_FALSE(after.contains(u"h"));
        for (const auto& [id, row] : after) EXPECT_TRUE(row.starts_with(u"changed|")) << ToUtf8(id);
    }
    std::map<Text, Text> before;
};
INSTANTIATE_TEST_SUITE_P(Engines, HierarchyFault, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

// Each statement, and the commit. What the built-in engine refuses is among the random edits.
TEST_P(HierarchyFault, TheServerRefusesOneStatement) {
    if (GetParam() == Engine::SQLite) return;
    ASSERT_NO_FATAL_FAILURE(Edit(0));
    const Text check = u"ALTER TABLE velmoraLessons ADD CONSTRAINT fault CHECK (lessonID <> '";
    const Text foreignKey = u"ALTER TABLE needs ADD CONSTRAINT fault FOREIGN KEY (lessonID) REFERENCES velmoraLessons "
                            u"(lessonID)";
    std::vector<Text> refusals = {foreignKey, check + u"n1')", check + u"n2')"};
    if (GetParam() == Engine::PostgreSQL) refusals.push_back(foreignKey + u" DEFERRABLE INITIALLY DEFERRED");
    for (const Text id : {u"a", u"b", u"c", u"d", u"g", u"s", u"n1", u"n2"})
        refusals.push_back(check + id + u"' OR lessonTitle <> 'changed')");
    database->Run({u"CREATE TABLE needs AS SELECT lessonID FROM velmoraLessons WHERE lessonID = 'h'"});
    for (const Text& refusal : refusals) {
        database->Run({refusal});
        ASSERT_NO_FATAL_FAILURE(ExpectNotSaved(refusal));
        database->Run({refusal.substr(0, refusal.find(u" ADD ")) + u" DROP CONSTRAINT fault"});
    }
    ExpectSavedAtLast();
}

TEST_P(HierarchyFault, SomebodyElseWrites) {
    ASSERT_NO_FATAL_FAILURE(Edit(0));
    Connection other;
    other.Open(database->ConnectionString());
    other.BeginTrans();
    other.Execute(u"UPDATE velmoraLessons SET lessonTitle = 'theirs' WHERE lessonID = 'a'");
    ExpectToldOfNotSaved(editor->SaveDatabase(), u"a lock");
    EXPECT_EQ(errorNumber, ErrorNumbers::Timeout) << ToUtf8(error);
    other.RollbackTrans();
    EXPECT_EQ(Rows(), before);
    ExpectSavedAtLast();
}

TEST_P(HierarchyFault, TheSessionIsEnded) {
    if (GetParam() == Engine::SQLite) return; // there is none
    ASSERT_NO_FATAL_FAILURE(Edit(200));
    const auto endOthers = [&] {
        if (GetParam() == Engine::MariaDB) {
            database->Run({u"KILL " + database->Ask(u"SELECT Max(id) FROM information_schema.processlist WHERE db = "
                                                    u"database() AND id <> connection_id()")});
        } else {
            database->Ask(u"SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE datname = current_database() "
                          u"AND pid <> pg_backend_pid()");
        }
    };
    // Before the first statement, and when a batch is done already.
    for (const int fatal : {1, 150}) {
        int sent = 0;
        SetStatementObserver([&](TextView) {
            if (++sent == fatal) endOthers(); // whose own statement is not that one
        });
        const bool isSaved = editor->SaveDatabase();
        SetStatementObserver({});
        ExpectToldOfNotSaved(isSaved, u"the session ended");
        ASSERT_EQ(Rows(), before) << fatal;
    }
    ExpectSavedAtLast();
}

#ifndef _WIN32
// A child process saves and dies by a signal that it cannot answer: just before a statement is sent, or whenever the
// time has come, also in the midst of a statement or of the commit.
TEST_P(HierarchyFault, AKilledSaveIsDoneOrNot) {
    using Clock = std::chrono::steady_clock;
    std::mt19937 random(3);
    for (const Text journal : {u"delete", u"wal"}) {
        const auto begin = [&] {
            SetUp();
            if (GetParam() == Engine::SQLite) database->Ask(u"PRAGMA journal_mode = " + journal);
            Edit(120);
        };
        ASSERT_NO_FATAL_FAILURE(begin());
        size_t total = 0;
        SetStatementObserver([&](TextView) { ++total; });
        const auto began = Clock::now();
        ASSERT_TRUE(editor->SaveDatabase());
        const auto took = static_cast<long>((Clock::now() - began) / std::chrono::microseconds(1));
        SetStatementObserver({});
        ASSERT_NO_FATAL_FAILURE(begin());
        for (int kills = test::KillCount(GetParam() == Engine::MariaDB ? 12 : 40); kills > 0; --kills) {
            const bool isBeforeStatement = kills % 2 == 0;
            size_t fatal = 1 + random() % total;
            const long moment = 1 + static_cast<long>(random()) % std::clamp(took, 1000L, 900'000L);
            SCOPED_TRACE("before statement " + std::to_string(fatal) + ", or after " + std::to_string(moment) + " us");
            const int status = test::StatusOfChild([&] {
                SetStatementObserver([&](TextView) {
                    if (isBeforeStatement && --fatal == 0) raise(SIGKILL);
                });
                if (!isBeforeStatement) test::EndAfter(moment);
                editor->SaveDatabase();
                return 7; // not killed, or not yet
            });
            test::AwaitNoSessions(*database);
            ASSERT_TRUE(WIFSIGNALED(status) || !isBeforeStatement);
            if (Rows() == before) continue;
            ASSERT_FALSE(isBeforeStatement);
            ExpectSaved(); // when the time came
            ASSERT_FALSE(HasFailure());
            ASSERT_NO_FATAL_FAILURE(begin());
        }
        ExpectSavedAtLast();
        if (GetParam() != Engine::SQLite) return; // the servers have logs of their own
        EXPECT_EQ(database->Ask(u"PRAGMA journal_mode"), journal);
    }
}

// The network falls silent: within a batch, and at the commit, which the server hears of or not.
TEST_P(HierarchyFault, TheServerFallsSilent) {
    if (GetParam() == Engine::SQLite) return; // there is none
    ASSERT_NO_FATAL_FAILURE(Edit(200));
    test::SilentServer proxy(database->ConnectionString());
    editor->SetConnectionString(proxy.ThroughIt(database->ConnectionString(), u"Connect Timeout=2;Command Timeout=1"));
    const struct {
        const char *bytes, *consequence;
        bool isHandedOn;
    } cases[] = {{"lessonID = 'k150'", "not committed is lost", false},
                 {"lessonID = 'k150'", "not committed is lost", true},
                 {"COMMIT", "load again to see", false},
                 {"COMMIT", "load again to see", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        const Text shape = Shape();
        proxy.FallSilentAt(c.bytes, c.isHandedOn);
        const auto begin = std::chrono::steady_clock::now();
        const bool isSaved = editor->SaveDatabase();
        EXPECT_LE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8));
        ExpectToldOfNotSaved(isSaved, u"a silent server");
        EXPECT_EQ(errorNumber, ErrorNumbers::Timeout);
        const std::string told = ToUtf8(error);
        EXPECT_NE(told.find("'127.0.0.1:" + proxy.Port() + "' did not answer within 1 second. "), std::string::npos)
            << told;
        EXPECT_NE(told.find(c.consequence), std::string::npos) << told;
        EXPECT_EQ(Shape(), shape);
        proxy.Recover();
        if (c.isHandedOn && told.find("not committed") == std::string::npos)
            ExpectSaved();
        else
            ASSERT_EQ(Rows(), before);
    }
    ASSERT_TRUE(editor->LoadDatabase()) << "shows what was stored";
    EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
}
#endif

} // namespace
} // namespace dax
