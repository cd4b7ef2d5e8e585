// Big hierarchies, and saves that are killed in the middle.

#include "hierarchy/EditorFixture.h"

#include <cstdlib>

#ifndef _WIN32
#include <chrono>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <unistd.h>
#endif

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

#ifndef _WIN32
class KilledSave : public test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, KilledSave, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

void RenameAll(GroupEditor& editor, const Text& title) {
    for (const Text& id : editor.GetChildLessonIDCollection(u"")) editor.UpdateLesson(id, title, u"", ltLesson);
}

// A child process saves and dies by a signal that it cannot answer, just before a statement is sent.
// DAX_KILLS sets how often.
TEST_P(KilledSave, LeavesTheRowsFromBefore) {
    test::CreateTables(*database);
    std::vector<Text> statements;
    for (int i = 0; i < 150; ++i) statements.push_back(test::RowStatement(u"k" + ToText(i), u"", u"", 1, i, 1));
    database->Run(statements);
    size_t sent = 0, fatal = 0;
    const auto save = [&](const Text& title) {
        const auto editor = GroupEditor::Create();
        editor->SetConnectionString(database->ConnectionString());
        if (!editor->LoadDatabase()) return false;
        RenameAll(*editor, title);
        editor->RemoveLesson(u"k7", true);
        editor->AddLesson(u"new", title, u"", ltGroup);
        sent = 0;
        SetStatementObserver([&](TextView) {
            if (++sent == fatal) raise(SIGKILL);
        });
        const bool isSaved = editor->SaveDatabase();
        SetStatementObserver({});
        return isSaved;
    };
    // The server may not have noticed yet that the one before is dead, and keep its locks for a while.
    const auto saveAtLast = [&](const Text& title) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        bool isSaved = save(title);
        while (!isSaved && std::chrono::steady_clock::now() < end) isSaved = save(title);
        return isSaved;
    };
    const auto before = test::ReadRows(database->ConnectionString());
    const char* const wanted = std::getenv("DAX_KILLS");
    const int kills = wanted ? std::atoi(wanted) : 4;
    std::mt19937 random(3);
    size_t total = 2; // of the statements of a save: not known before one has been done
    for (int kill = 0; kill <= kills; ++kill) {
        fatal = kill == 0 ? SIZE_MAX : 1 + random() % total;
        int pipes[2];
        ASSERT_EQ(pipe(pipes), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            if (kill == 0) { // counts only
                save(u"counted");
                const ssize_t written = write(pipes[1], &sent, sizeof sent);
                _exit(written == sizeof sent ? 0 : 1);
            }
            saveAtLast(u"killed");
            _exit(7); // the statement did not come
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        if (kill == 0) {
            ASSERT_EQ(read(pipes[0], &total, sizeof total), static_cast<ssize_t>(sizeof total));
            ASSERT_GE(total, 2u);
            // Back to the rows from before, by hand.
            database->Run({u"DELETE FROM velmoraLessons"});
            database->Run(statements);
        } else {
            EXPECT_TRUE(WIFSIGNALED(status)) << "statement " << fatal << " of " << total;
        }
        close(pipes[0]);
        close(pipes[1]);
        auto rows = test::ReadRows(database->ConnectionString());
        ASSERT_EQ(rows, before) << "killed before statement " << fatal << " of " << total;
    }
    fatal = SIZE_MAX;
    ASSERT_TRUE(saveAtLast(u"done"));
    const auto after = test::ReadRows(database->ConnectionString());
    EXPECT_EQ(after.size(), 150u);
    for (const auto& [id, row] : after) EXPECT_TRUE(row.starts_with(u"done|")) << ToUtf8(id);
}
#endif

} // namespace
} // namespace dax
