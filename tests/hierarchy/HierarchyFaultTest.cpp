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
class KilledSave : public HierarchyFault {
protected:
    void KillAtManyPoints();
};
INSTANTIATE_TEST_SUITE_P(Engines, KilledSave, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(KilledSave, IsDoneOrNot) {
    KillAtManyPoints();
    if (GetParam() != Engine::SQLite) return; // the servers have logs of their own
    SetUp();
    ASSERT_EQ(database->Ask(u"PRAGMA journal_mode = wal"), u"wal");
    KillAtManyPoints();
    EXPECT_EQ(database->Ask(u"PRAGMA journal_mode"), u"wal");
}

void KilledSave::KillAtManyPoints() {
    test::CreateTables(*database);
    std::vector<Text> statements{test::RowStatement(u"new0", u"0", u"", 1, 0, 1)};
    for (int i = 0; i < 120; ++i) statements.push_back(test::RowStatement(u"k" + ToText(i), u"0", u"", 1, i, 1));
    database->Run(statements);
    editor->SetConnectionString(database->ConnectionString());
    // On the way from one of two states to the other all titles change, one row goes and one comes.
    const auto edit = [&](int current) {
        ASSERT_TRUE(editor->LoadDatabase());
        editor->RemoveLesson(u"new" + ToText(current), true);
        editor->SetCurrentLessonID(u""); // the new one comes first
        editor->AddLesson(u"new" + ToText(1 - current), u"", u"", ltLesson);
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, ToText(1 - current), u"", ltLesson);
    };
    std::map<Text, Text> states[2];
    size_t sent = 0;
    long took = 0; // microseconds
    for (const int current : {0, 1, 0}) {
        ASSERT_NO_FATAL_FAILURE(edit(current));
        sent = 0;
        SetStatementObserver([&](TextView) { ++sent; });
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_TRUE(editor->SaveDatabase());
        SetStatementObserver({});
        took = static_cast<long>((std::chrono::steady_clock::now() - begin) / std::chrono::microseconds(1));
        states[1 - current] = Rows();
    }
    ASSERT_NE(states[0], states[1]);
    const size_t total = sent;
    const int kills = test::KillCount(GetParam() == Engine::MariaDB ? 12 : 40);
    std::mt19937 random(3);
    int current = 1;
    ASSERT_NO_FATAL_FAILURE(edit(current));
    for (int kill = 0; kill < kills; ++kill) {
        const bool isBeforeStatement = kill % 2 == 0;
        const size_t fatal = 1 + random() % total;
        const long moment = 1 + static_cast<long>(random()) % std::clamp(took, 1000L, 900'000L);
        const int status = test::StatusOfChild([&] {
            SetStatementObserver([&](TextView) {
                if (isBeforeStatement && --sent == total - fatal) raise(SIGKILL);
            });
            if (!isBeforeStatement) test::EndAfter(moment);
            editor->SaveDatabase();
            return 7; // not killed, or not yet
        });
        test::AwaitNoSessions(*database);
        const std::map<Text, Text> rows = Rows();
        if (isBeforeStatement) {
            ASSERT_TRUE(WIFSIGNALED(status)) << "statement " << fatal << " of " << total;
            ASSERT_EQ(rows, states[current]) << "statement " << fatal << " of " << total;
        } else {
            ASSERT_TRUE(rows == states[0] || rows == states[1]) << "neither before nor after: kill " << kill;
            if (rows == states[current]) continue;
            current = 1 - current; // the save had been done before the time came
            ASSERT_NO_FATAL_FAILURE(edit(current));
        }
    }
    ASSERT_TRUE(editor->SaveDatabase());
    EXPECT_EQ(Rows(), states[1 - current]);
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
        const bool isCommitted = c.isHandedOn && told.find("not committed") == std::string::npos;
        if (!isCommitted) {
            ASSERT_EQ(Rows(), before);
            continue;
        }
        ExpectSaved();
    }
    ASSERT_TRUE(editor->LoadDatabase()) << "shows what was stored";
    EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
}
#endif

} // namespace
} // namespace dax
