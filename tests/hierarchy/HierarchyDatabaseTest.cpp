// Loading and saving on every engine: the rows, odd rows, and saves that fail for real, at every statement and at the
// commit: nothing is saved, nothing pending is lost. Random edits have tests of their own.

#include "hierarchy/EditorFixture.h"
#include "support/SentStatements.h"

#include "tree/modTVW.h"

#include <chrono>
#include <span>

#ifndef _WIN32
#include <csignal>
#include <random>
#include <sys/wait.h>
#endif

namespace dax {
namespace {

class HierarchyOnEngine : public test::EngineTest, protected test::RecordingEditor {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) return;
        test::CreateTables(*database);
        editor->SetConnectionString(database->ConnectionString());
    }
    void TearDown() override { SetStatementObserver({}); }
    std::map<Text, Text> Rows() const { return test::ReadRows(database->ConnectionString()); }
};
INSTANTIATE_TEST_SUITE_P(Engines, HierarchyOnEngine, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

// What these leave in the rows is among the random edits.
TEST_P(HierarchyOnEngine, SavesWithTheDocumentedStatements) {
    editor->SetConnectionString(u"DSN=none such");
    EXPECT_FALSE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"ELoadDatabase ");
    EXPECT_EQ(editor->NodeCount(), 1);
    editor->SetConnectionString(database->ConnectionString());
    database->Run(test::SampleRows());
    const test::SentStatements all;
    ASSERT_TRUE(editor->LoadDatabase());
    editor->SetCurrentLessonID(u"a");
    editor->AddLesson(u"n", u"It's \\ new \U0001D11E", u"n'n", ltGroup);
    editor->AddLesson(u"gone", u"", u"", ltLesson);
    editor->RemoveLesson(u"gone", true);
    ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    for (const char* each :
         {"SELECT lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, indentLevel, sortPosition, "
          "lessonType FROM velmoraLessons ORDER BY indentLevel, sortPosition",
          "DELETE FROM velmoraLessons WHERE lessonID = 'gone'",
          "INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, "
          "lessonType, lessonProperties, guideData, lessonData)  VALUES ('n', '', '', '', -1, -1, -1, '', '', '')",
          "UPDATE velmoraLessons SET lessonTitle = 'O''Neil', lessonIdentifier = 'id b', parentID = 'g', "
          "indentLevel = 2, sortPosition = 3, lessonType = 1 WHERE lessonID = 'b'"}) {
        EXPECT_THAT(all.Texts(), ::testing::Contains(each));
    }
    EXPECT_EQ(Rows()[u"n"], u"It's \\ new \U0001D11E|n'n|g|2|2|0||");
    EXPECT_EQ(Rows()[u"b"], u"O'Neil|id b|g|2|3|1|data|");
    // What was deleted once is not deleted again: another author may have added it meanwhile.
    database->Run({test::RowStatement(u"gone", u"Theirs", u"", 1, 9, 1)});
    ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    EXPECT_EQ(Rows()[u"gone"], u"Theirs|id gone||1|9|1|data|");
    // What is removed and added again is only added: its row is still there, and nothing is saved, deliberately.
    editor->RemoveLesson(u"b", false);
    editor->AddLesson(u"b", u"again", u"", ltLesson);
    EXPECT_FALSE(editor->SaveDatabase());
    EXPECT_EQ(Rows()[u"b"], u"O'Neil|id b|g|2|3|1|data|");
}

TEST_P(HierarchyOnEngine, OddRows) {
    using test::RowStatement;
    database->Run({u"ALTER TABLE velmoraLessons DROP COLUMN lessonType",
                   u"ALTER TABLE velmoraLessons ADD COLUMN lessonType VARCHAR(20)", // a number may be a text
                   RowStatement(u"orphan", u"", u"none", 5, 1, 1), RowStatement(u"self", u"", u"self", 1, 1, 0),
                   RowStatement(u"x", u"", u"y", 2, 1, 0), RowStatement(u"y", u"", u"x", 2, 2, 0),
                   RowStatement(u"late", u"", u"parent", 1, 2, 1), RowStatement(u"parent", u"", u"", 3, 1, 0),
                   RowStatement(u"-2147483647", u"", u"", 4, 1, -2147483647),
                   u"INSERT INTO velmoraLessons (lessonID) VALUES ('null')",
                   RowStatement(u"long", Text(1'000'000, u'ä'), u"null", 9, 1, 1)});
    const std::pair<Text, LessonTypes> types[] = {{u" 1", ltLesson},   {u"0.5", ltGroup},          {u"1.5", ltUnknown},
                                                  {u"one", ltUnknown}, {u"1e20", ltUnknown},       {u"null", ltUnknown},
                                                  {u"long", ltLesson}, {u"-2147483647", ltUnknown}};
    for (const auto& [text, type] : std::span(types).first(5))
        database->Run({u"INSERT INTO velmoraLessons (lessonID, lessonType) VALUES ('" + text + u"', '" + text + u"')"});
    ASSERT_TRUE(editor->LoadDatabase()) << ToUtf8(error);
    EXPECT_EQ(editor->NodeCount(), 15);
    for (const auto& [id, type] : types) EXPECT_EQ(editor->GetLessonType(id), type) << ToUtf8(id);
    for (const char16_t* id : {u"null", u"one"})
        EXPECT_EQ(GetNumber(*editor->GetLessonProperties(id), u"LessonType", -5), ltGroup);
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"1.5"), u"LessonType", -5), 2);
    for (const char16_t* top : {u"orphan", u"self", u"x", u"late", u"parent"}) {
        EXPECT_EQ(modTVW::GetIndentLevel(editor->Tree().Find(top)), 1) << ToUtf8(top);
    }
    EXPECT_EQ(editor->Tree().Find(u"y")->Parent()->Key(), u"x");
    EXPECT_EQ(editor->GetLessonTitle(u"long").size(), 1'000'000u);
    editor->SetConflictCheck(true); // no other author has changed them
    ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    EXPECT_TRUE(Rows()[u"orphan"].starts_with(u"|id orphan||1|"));
}

TEST_P(HierarchyOnEngine, RowsWithoutAnIdentifierOfTheirOwnAreNamed) {
    database->Run(test::SampleRows());
    database->Run({test::RowStatement(u"", u"Nobody", u"", 2, 4, 1)});
    Take();
    EXPECT_FALSE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"ELoadDatabase ");
    EXPECT_NE(error.find(u"Nobody"), Text::npos) << ToUtf8(error);
    EXPECT_NE(error.find(u"Row 6"), Text::npos) << ToUtf8(error);
    EXPECT_EQ(Shape(), u"(g(a b s) h)"); // what came before it stays
    editor->SetCurrentLessonID(u"a");    // and the editor still works
    EXPECT_EQ(Take(), u"Sa ");
    if (database->Kind() != Engine::SQLite) return;
    // Two rows with the same identifier, in a table without a key.
    database->Run({u"DROP TABLE velmoraLessons",
                   u"CREATE TABLE velmoraLessons (lessonID TEXT, lessonTitle TEXT, "
                   u"lessonIdentifier TEXT, lessonProperties TEXT, parentID TEXT, "
                   u"indentLevel, sortPosition, lessonType, guideData, lessonData)",
                   test::RowStatement(u"t", u"One", u"", 1, 1, 1), test::RowStatement(u"t", u"Two", u"", 1, 2, 1)});
    EXPECT_FALSE(editor->LoadDatabase());
    EXPECT_NE(error.find(u"Two"), Text::npos) << ToUtf8(error);
    EXPECT_NE(error.find(u"'t'"), Text::npos) << ToUtf8(error);
}

// The bench measures the time; no recursion may be as deep as the tree. Progress is reported for every thousand
// rows.
TEST(HierarchyDatabase, AChainOfManyLessons) {
    const test::TestDatabase database(Engine::SQLite);
    test::CreateTables(database);
    database.Run({u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < 30300) INSERT INTO "
                  u"velmoraLessons (lessonID, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType, "
                  u"lessonProperties) SELECT 'k' || i, 'L', CASE i WHEN 0 THEN '' ELSE 'k' || (i - 1) END, i + 1, i, "
                  u"i % 2, 'StoryboardCount=1' FROM n"});
    test::RecordingEditor recorded;
    GroupEditor& editor = *recorded.editor;
    std::vector<std::pair<int64_t, int64_t>> progress;
    editor.SetProgress([&](int64_t done, int64_t total) { progress.emplace_back(done, total); });
    editor.SetConnectionString(database.ConnectionString());
    ASSERT_TRUE(editor.LoadDatabase()) << ToUtf8(recorded.error);
    ASSERT_EQ(progress.size(), 31u);
    EXPECT_EQ(progress[1], std::pair(int64_t{2000}, int64_t{0}));
    EXPECT_EQ(progress[30], std::pair(int64_t{30'300}, int64_t{30'300}));
    EXPECT_EQ(editor.GetChildLessonCount(u"k0"), 30'299);
    EXPECT_EQ(editor.GetChildLessonIDCollection(u"").Count(), 30'300u);
    EXPECT_EQ(GetNumber(*editor.GetAggregateProperties(u""), u"StoryboardCount", 0), 15'150);
    EXPECT_EQ(GetText(*editor.GetLessonTokens(u"k29999"), u"LessonIdentifierPath", {}).size(), 59'999u);
    editor.SetCurrentLessonID(u"k29999");
    editor.ExpandAll();
    editor.CollapseAll();
    editor.SetCurrentLessonID(u"k29999");
    editor.MoveCurrent(gmtOutdent);
    editor.RemoveLesson(u"k0", false);
    editor.RemoveLesson(u"k30200", true);
    editor.AddLesson(u"new", u"", u"", ltLesson);
    progress.clear();
    ASSERT_TRUE(editor.SaveDatabase()) << ToUtf8(recorded.error);
    const int64_t sent = editor.NodeCount() - 1 + 101 + 1; // updated, deleted, inserted
    ASSERT_EQ(progress.size(), 31u);
    EXPECT_EQ(progress[1], std::pair(int64_t{2000}, sent));
    EXPECT_EQ(progress[30], std::pair(sent, sent));
    EXPECT_FALSE(editor.Clear());
}

class HierarchyFault : public HierarchyOnEngine {
protected:
    // The sample and as many lessons more; one is removed, two are added, all are renamed.
    void Edit(int more) {
        std::vector<Text> rows = test::SampleRows();
        for (int i = 0; i < more; ++i) rows.push_back(test::RowStatement(u"k" + ToText(i), u"", u"", 1, 10 + i, 1));
        database->Run(rows);
        ASSERT_TRUE(editor->LoadDatabase());
        editor->RemoveLesson(u"h", true);
        editor->AddLesson(u"n1", u"", u"", ltGroup);
        editor->AddLesson(u"n2", u"", u"", ltLesson);
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, u"changed", u"", editor->GetLessonType(id));
        before = Rows();
        Take();
    }
    void ExpectNotSaved(const Text& why) {
        EXPECT_FALSE(editor->SaveDatabase()) << ToUtf8(why);
        EXPECT_EQ(Take(), u"ESaveDatabase ") << ToUtf8(why);
        EXPECT_TRUE(errorNumber != 0 && !error.empty());
        ASSERT_EQ(Rows(), before) << ToUtf8(why);
    }
    void ExpectSavedAtLast() {
        ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
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

class ServerHierarchyFault : public HierarchyFault {};
INSTANTIATE_TEST_SUITE_P(Engines, ServerHierarchyFault, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         test::EngineName);

// Each statement, and the commit. What the built-in engine refuses is among the random edits.
TEST_P(ServerHierarchyFault, TheServerRefusesOneStatement) {
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
    ExpectNotSaved(u"a lock");
    EXPECT_EQ(errorNumber, ErrorNumbers::Timeout) << ToUtf8(error);
    other.RollbackTrans();
    ExpectSavedAtLast();
}

#ifndef _WIN32
// A child process saves and is killed by a signal that it cannot handle: just before a statement is sent, or when the
// time has come, also during a statement or the commit.
TEST_P(HierarchyFault, AKilledSaveIsAllOrNothing) {
    using Clock = std::chrono::steady_clock;
    std::mt19937 random(3);
    for (const Text journal : {u"delete", u"wal"}) {
        const auto begin = [&] {
            SetUp();
            if (GetParam() == Engine::SQLite) database->Query(u"PRAGMA journal_mode = " + journal);
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
        for (int kills = test::Setting("DAX_KILLS", GetParam() == Engine::MariaDB ? 12 : 40); kills > 0; --kills) {
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
        EXPECT_EQ(database->Query(u"PRAGMA journal_mode"), journal);
    }
}
#endif

} // namespace
} // namespace dax
