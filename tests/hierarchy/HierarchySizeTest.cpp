// Big hierarchies.

#include "hierarchy/EditorFixture.h"

namespace dax {
namespace {

// Every allocation is checked then, inside the engine too, and a save of so many takes a minute.
#ifdef __SANITIZE_ADDRESS__
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
constexpr int manyLessons = isSanitized ? 30'000 : 100'000;

// Rows made by the database itself, from SQL for the parent and the level of lesson i.
Text Rows(const char16_t* parent, const char16_t* level) {
    return u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " + ToText(manyLessons) +
           u") INSERT INTO velmoraLessons SELECT 'k' || i, 'Lesson ' || i, 'L' || i, " + parent + u", " + level +
           u", i, i % 2, 'StoryboardCount=1', '', '' FROM n";
}

TEST(HierarchySize, ThreeShapes) {
    struct Shape {
        const char16_t *parent, *level;
        int childrenOfFirst, longestPath;
    };
    const Shape shapes[] = {
        {u"CASE i WHEN 0 THEN '' ELSE 'k' || ((i - 1) / 10) END", u"CASE i WHEN 0 THEN 1 ELSE i END", 10, 6},
        {u"CASE i WHEN 0 THEN '' ELSE 'k0' END", u"CASE i WHEN 0 THEN 1 ELSE 2 END", manyLessons - 1, 2},
        {u"CASE i WHEN 0 THEN '' ELSE 'k' || (i - 1) END", u"i + 1", 1, manyLessons}};
    for (const Shape& shape : shapes) {
        test::TestDatabase database(Engine::SQLite);
        test::CreateTables(database);
        database.Run({Rows(shape.parent, shape.level)});
        test::HeardEditor heard;
        GroupEditor& editor = *heard.editor;
        editor.SetConnectionString(database.ConnectionString());
        ASSERT_TRUE(editor.LoadDatabase()) << ToUtf8(heard.error);
        EXPECT_EQ(editor.NodeCount(), manyLessons + 1);
        EXPECT_EQ(editor.GetChildLessonCount(u"k0"), manyLessons - 1);
        EXPECT_EQ(editor.GetChildLessonIDCollection(u"").Count(), static_cast<size_t>(manyLessons));
        EXPECT_EQ(GetNumber(*editor.GetAggregateProperties(u""), u"StoryboardCount", 0), manyLessons / 2);
        const Text last = u"k" + ToText(manyLessons - 1);
        const Text path = GetText(*editor.GetLessonTokens(last), u"LessonIdentifierPath", {});
        EXPECT_EQ(std::count(path.begin(), path.end(), u'\\') + 1, shape.longestPath);
        editor.SetCurrentLessonID(last);
        editor.ExpandAll();
        editor.CollapseAll();
        editor.SetCurrentLessonID(last);
        editor.MoveCurrent(gmtUp);
        editor.MoveCurrent(gmtOutdent);
        editor.RemoveLesson(u"k0", false); // each child moves
        EXPECT_EQ(editor.NodeCount(), manyLessons);
        if (!isSanitized) {
            ASSERT_TRUE(editor.SaveDatabase()) << ToUtf8(heard.error);
            EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraLessons WHERE parentID = ''"),
                      ToText(shape.childrenOfFirst));
        }
        const Text first = shape.childrenOfFirst > 1 ? Text(u"k1") : Text(u"k20000");
        editor.RemoveLesson(first, true);
        EXPECT_LT(editor.NodeCount(), manyLessons);
        EXPECT_FALSE(editor.Clear());
    }
}

} // namespace
} // namespace dax
