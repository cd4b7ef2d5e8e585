// Saves that fail for real, at every statement and at the commit: nothing is saved, nothing pending is lost.

#include "hierarchy/EditorFixture.h"

#include <chrono>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
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
        before = test::ReadRows(database->ConnectionString());
        Take();
    }
    void ExpectNotSaved(const Text& why) {
        EXPECT_FALSE(editor->SaveDatabase()) << ToUtf8(why);
        EXPECT_EQ(Take(), u"ESaveDatabase ") << ToUtf8(why);
        EXPECT_NE(errorNumber, 0);
        EXPECT_FALSE(error.empty());
        ASSERT_EQ(test::ReadRows(database->ConnectionString()), before) << ToUtf8(why);
    }
    // A server may take a moment until it has given up what a dead session held.
    void ExpectSavedAtLast() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        bool isSaved = editor->SaveDatabase();
        while (!isSaved && std::chrono::steady_clock::now() < end) isSaved = editor->SaveDatabase();
        ASSERT_TRUE(isSaved) << ToUtf8(error);
        const auto after = test::ReadRows(database->ConnectionString());
        EXPECT_EQ(after.size(), before.size() + 1);
        EXPECT_FALSE(after.contains(u"h"));
        for (const auto& [id, row] : after) EXPECT_TRUE(row.starts_with(u"changed|")) << ToUtf8(id);
        ASSERT_TRUE(editor->SaveDatabase()) << "nothing is pending: no row is inserted twice";
        EXPECT_EQ(test::ReadRows(database->ConnectionString()), after);
    }
    std::map<Text, Text> before;
};
INSTANTIATE_TEST_SUITE_P(Engines, HierarchyFault, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(HierarchyFault, TheEngineRefusesOneStatement) {
    ASSERT_NO_FATAL_FAILURE(Edit(0));
    const bool isFile = GetParam() == Engine::SQLite;
    const auto refuse = [&](const Text& what, const Text& condition) {
        return isFile ? u"CREATE TRIGGER fault BEFORE " + what + u" ON velmoraLessons WHEN " + condition +
                            u" BEGIN SELECT RAISE(ABORT, 'no more'); END"
                      : u"ALTER TABLE velmoraLessons ADD CONSTRAINT fault CHECK (NOT (" + condition + u"))";
    };
    const Text prefix = isFile ? u"NEW." : u"";
    const Text allow = isFile ? u"DROP TRIGGER fault" : u"ALTER TABLE velmoraLessons DROP CONSTRAINT fault";
    for (const Text id : {u"a", u"b", u"c", u"d", u"g", u"s", u"n1", u"n2"}) {
        database->Run(
            {refuse(u"UPDATE", prefix + u"lessonID = '" + id + u"' AND " + prefix + u"lessonTitle = 'changed'")});
        ASSERT_NO_FATAL_FAILURE(ExpectNotSaved(u"the update of " + id));
        database->Run({allow});
    }
    for (const Text id : {u"n1", u"n2"}) {
        database->Run({refuse(u"INSERT", prefix + u"lessonID = '" + id + u"'")});
        ASSERT_NO_FATAL_FAILURE(ExpectNotSaved(u"the insert of " + id));
        database->Run({allow});
    }
    ExpectSavedAtLast();
}

TEST_P(HierarchyFault, TheSessionIsEnded) {
    if (GetParam() == Engine::SQLite) return; // there is none
    ASSERT_NO_FATAL_FAILURE(Edit(200));
    const bool isMariaDB = GetParam() == Engine::MariaDB;
    const auto endOthers = [&] {
        if (!isMariaDB) {
            database->Ask(u"SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE datname = current_database() "
                          u"AND pid <> pg_backend_pid()");
            return;
        }
        const Text id = database->Ask(u"SELECT Max(id) FROM information_schema.processlist WHERE db = database() AND "
                                      u"id <> connection_id()");
        database->Run({u"KILL " + id});
    };
    // Before the first statement, and when a batch is done already.
    for (const int fatal : {1, 150}) {
        int sent = 0;
        bool isEnding = false;
        SetStatementObserver([&](TextView) {
            if (isEnding || ++sent != fatal) return;
            isEnding = true;
            endOthers();
            isEnding = false;
        });
        const bool isSaved = editor->SaveDatabase();
        SetStatementObserver({});
        EXPECT_FALSE(isSaved);
        EXPECT_EQ(Take(), u"ESaveDatabase ");
        ASSERT_EQ(test::ReadRows(database->ConnectionString()), before) << fatal;
    }
    ExpectSavedAtLast();
}

TEST_P(HierarchyFault, TheCommitFails) {
    ASSERT_NO_FATAL_FAILURE(Edit(0));
    if (GetParam() == Engine::SQLite) {
        // Somebody reads in a transaction: all can be written but not committed.
        Connection reader;
        reader.Open(database->ConnectionString());
        reader.BeginTrans();
        Recordset rows;
        rows.Open(u"SELECT lessonID FROM velmoraLessons", reader);
        rows.Close();
        ASSERT_NO_FATAL_FAILURE(ExpectNotSaved(u"a reader"));
        reader.RollbackTrans();
    } else if (GetParam() == Engine::PostgreSQL) {
        // A rule that is looked at when all is done.
        database->Run({u"CREATE TABLE needs (lessonID varchar(50) REFERENCES velmoraLessons (lessonID) DEFERRABLE "
                       u"INITIALLY DEFERRED)",
                       u"INSERT INTO needs VALUES ('h')"});
        ASSERT_NO_FATAL_FAILURE(ExpectNotSaved(u"a deferred rule"));
        database->Run({u"DROP TABLE needs"});
    }
    ExpectSavedAtLast();
}

#ifndef _WIN32
TEST_P(HierarchyFault, TheDiskIsFull) {
    if (GetParam() != Engine::SQLite) return; // the server's disk is not ours to fill
    ASSERT_NO_FATAL_FAILURE(Edit(300));
    for (const Text& id : editor->GetChildLessonIDCollection(u""))
        editor->UpdateLesson(id, Text(2000, u'x'), u"", editor->GetLessonType(id));
    Take();
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    rlimit small = usual;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    // No file grows beyond the size: the journal first, the database itself next.
    std::vector<bool> wasSaved;
    for (const rlim_t size : {8192, 200'000}) {
        small.rlim_cur = size;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        wasSaved.push_back(editor->SaveDatabase());
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
        EXPECT_EQ(Take(), u"ESaveDatabase ") << size;
        EXPECT_EQ(test::ReadRows(database->ConnectionString()), before) << size;
    }
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(wasSaved, (std::vector<bool>{false, false}));
    for (const Text& id : editor->GetChildLessonIDCollection(u""))
        editor->UpdateLesson(id, u"changed", u"", editor->GetLessonType(id));
    ExpectSavedAtLast();
}
#endif

} // namespace
} // namespace dax
