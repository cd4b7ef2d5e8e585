// Loading and saving on every engine: the rows, odd rows. Random edits and failures in the middle have tests of their
// own.

#include "hierarchy/EditorFixture.h"

#include "tree/modTVW.h"

namespace dax {
namespace {

class HierarchyOnEngine : public test::EngineTest, protected test::HeardEditor {
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

TEST_P(HierarchyOnEngine, SavesWhatTheTreeSays) {
    editor->SetConnectionString(u"DSN=none such");
    EXPECT_FALSE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"ELoadDatabase ");
    EXPECT_EQ(editor->NodeCount(), 1);
    editor->SetConnectionString(database->ConnectionString());
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Shape(), u"");
    EXPECT_EQ(editor->NodeCount(), 1);
    database->Run(test::SampleRows());
    ASSERT_TRUE(editor->LoadDatabase());
    editor->SetCurrentLessonID(u"a");
    editor->AddLesson(u"n", u"It's \\ new \U0001D11E", u"n'n", ltGroup);
    editor->RemoveLesson(u"s", true);
    editor->AddLesson(u"gone", u"", u"", ltLesson);
    editor->RemoveLesson(u"gone", true);
    Text sent;
    SetStatementObserver([&](TextView statement) { sent += Text(statement) + u"\n"; });
    ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    SetStatementObserver({});
    const std::map<Text, Text> expected = {{u"g", u"G:1|id g||1|1|0|data|"},
                                           {u"h", u"H|id h||1|2|0|data|"},
                                           {u"a", u"A|id a|g|2|1|1|data|"},
                                           {u"n", u"It's \\ new \U0001D11E|n'n|g|2|2|0||"},
                                           {u"b", u"O'Neil|id b|g|2|3|1|data|"}};
    EXPECT_EQ(Rows(), expected);
    for (const char16_t* each :
         {u"DELETE FROM velmoraLessons WHERE lessonID = 'gone'",
          u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, "
          u"lessonType, lessonProperties, guideData, lessonData)  VALUES ('n', '', '', '', -1, -1, -1, '', '', '')",
          u"UPDATE velmoraLessons SET lessonTitle = 'O''Neil', lessonIdentifier = 'id b', parentID = 'g', "
          u"indentLevel = 2, sortPosition = 3, lessonType = 1 WHERE lessonID = 'b'"}) {
        EXPECT_NE(sent.find(each), Text::npos) << ToUtf8(each) << "\n" << ToUtf8(sent);
    }
    const Text shape = Shape();
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Shape(), shape);
}

TEST_P(HierarchyOnEngine, OddRows) {
    using test::RowStatement;
    database->Run({RowStatement(u"orphan", u"", u"none", 5, 1, 1), RowStatement(u"self", u"", u"self", 1, 1, 0),
                   RowStatement(u"x", u"", u"y", 2, 1, 0), RowStatement(u"y", u"", u"x", 2, 2, 0),
                   RowStatement(u"late", u"", u"parent", 1, 2, 1), RowStatement(u"parent", u"", u"", 3, 1, 0),
                   RowStatement(u"type", u"", u"", 4, 1, -2147483647),
                   u"INSERT INTO velmoraLessons (lessonID) VALUES ('null')",
                   RowStatement(u"long", Text(1'000'000, u'ä'), u"null", 9, 1, 1)});
    ASSERT_TRUE(editor->LoadDatabase()) << ToUtf8(error);
    EXPECT_EQ(editor->NodeCount(), 10);
    for (const char16_t* top : {u"orphan", u"self", u"x", u"late", u"parent"}) {
        EXPECT_EQ(modTVW::GetIndentLevel(editor->Tree().Find(top)), 1) << ToUtf8(top);
    }
    EXPECT_EQ(editor->Tree().Find(u"y")->Parent()->Key(), u"x");
    EXPECT_EQ(editor->GetLessonType(u"null"), ltUnknown); // no type
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"null"), u"LessonType", -5), ltGroup);
    EXPECT_EQ(editor->GetLessonType(u"type"), ltUnknown);
    EXPECT_EQ(editor->GetLessonTitle(u"long").size(), 1'000'000u);
    ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    EXPECT_TRUE(Rows()[u"orphan"].starts_with(u"|id orphan||1|"));
}

TEST_P(HierarchyOnEngine, NumbersMayStandInColumnsOfText) {
    const std::pair<Text, LessonTypes> types[] = {
        {u" 1", ltLesson}, {u"0.5", ltGroup}, {u"1.5", ltUnknown}, {u"one", ltUnknown}, {u"1e20", ltUnknown}};
    database->Run({u"DROP TABLE velmoraLessons",
                   u"CREATE TABLE velmoraLessons (lessonID VARCHAR(9), lessonTitle VARCHAR(9), lessonIdentifier "
                   u"VARCHAR(9), lessonProperties VARCHAR(9), parentID VARCHAR(9), indentLevel INTEGER, sortPosition "
                   u"INTEGER, lessonType VARCHAR(9))"});
    for (const auto& [text, type] : types)
        database->Run({u"INSERT INTO velmoraLessons (lessonID, lessonType) VALUES ('" + text + u"', '" + text + u"')"});
    ASSERT_TRUE(editor->LoadDatabase()) << ToUtf8(error);
    for (const auto& [text, type] : types) EXPECT_EQ(editor->GetLessonType(text), type) << ToUtf8(text);
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"one"), u"LessonType", -5), ltGroup);
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"1.5"), u"LessonType", -5), 2);
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
    editor->SetCurrentLessonID(u"a");    // and the editor works on
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

// How long all takes is for the bench to say; no call may go as deep as the tree. Progress is told for every thousand
// rows.
TEST(HierarchyDatabase, AChainOfManyLessons) {
    const test::TestDatabase database(Engine::SQLite);
    test::CreateTables(database);
    database.Run({u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < 30300) INSERT INTO "
                  u"velmoraLessons (lessonID, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType, "
                  u"lessonProperties) SELECT 'k' || i, 'L', CASE i WHEN 0 THEN '' ELSE 'k' || (i - 1) END, i + 1, i, "
                  u"i % 2, 'StoryboardCount=1' FROM n"});
    test::HeardEditor heard;
    GroupEditor& editor = *heard.editor;
    std::vector<std::pair<int64_t, int64_t>> told;
    editor.SetProgress([&](int64_t done, int64_t total) { told.emplace_back(done, total); });
    editor.SetConnectionString(database.ConnectionString());
    ASSERT_TRUE(editor.LoadDatabase()) << ToUtf8(heard.error);
    ASSERT_EQ(told.size(), 31u);
    EXPECT_EQ(told[1], std::pair(int64_t{2000}, int64_t{0}));
    EXPECT_EQ(told[30], std::pair(int64_t{30'300}, int64_t{30'300}));
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
    told.clear();
    ASSERT_TRUE(editor.SaveDatabase()) << ToUtf8(heard.error);
    const int64_t sent = editor.NodeCount() - 1 + 101 + 1; // updated, deleted, inserted
    ASSERT_EQ(told.size(), 31u);
    EXPECT_EQ(told[1], std::pair(int64_t{2000}, sent));
    EXPECT_EQ(told[30], std::pair(sent, sent));
    EXPECT_FALSE(editor.Clear());
}

} // namespace
} // namespace dax
