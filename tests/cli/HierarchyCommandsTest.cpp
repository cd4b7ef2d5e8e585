// dax tree, lesson, info and edit: the real program on a small course, on every engine.
#include "CourseRows.h"
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

// All below the top, by lessonID.
std::string TreeOf(const TestDatabase& database) {
    const Outcome outcome = RunOn(database.ConnectionString(), "tree --indent --ids");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    std::string ids;
    for (size_t at = 0; (at = outcome.output.find('{', at)) != std::string::npos; ++at) {
        const size_t lineStart = outcome.output.rfind('\n', at) + 1;
        const size_t indent = outcome.output.find_first_not_of(' ', lineStart) - lineStart;
        if (!ids.empty()) ids += ' ';
        ids += std::string(indent / 4 - 1, '>') + outcome.output.substr(at + 1, outcome.output.find('}', at) - at - 1);
    }
    return ids;
}

class HierarchyCommandsTest : public EngineTest {};

TEST_P(HierarchyCommandsTest, EditsInOneTransaction) {
    MakeCourse(*database);
    const TempFolder folder;
    ExpectSaid(database->ConnectionString(), {{"edit remove g1 --dry-run", 0, "Not saved: 4 removed\n"}});
    const Outcome done = RunDax({u"edit", database->ConnectionString(), u"--file",
                                 folder.Write(u"語.txt", "\xEF\xBB\xBF# all kinds\r\n"
                                                         "add group \"New \\\"語\\\" 😀\" identifier N id n1\r\n"
                                                         "add lesson O'Neil in N id n2 identifier \"a b\"\n"
                                                         "add lesson gone in N id n3\n"
                                                         "remove n3\n"
                                                         "move \"a b\" before L-1\n"
                                                         "move l2 in N  # from one group to the other\n"
                                                         "update L-2 identifier L-9 type group\n"
                                                         "move L-9 outdent\n"
                                                         "remove G-1 keep-children\n"
                                                         "move l3 down\n"
                                                         "move N before x1")});
    EXPECT_EQ(done.output, "Saved: 3 added, 1 updated, 2 removed, 5 moved\nAdded: n1\nAdded: n2\n") << done.errors;
    EXPECT_EQ(TreeOf(*database), "g2 l1 n2 n1 x1 l3 l2");
    EXPECT_EQ(database->Ask(u"SELECT lessonTitle FROM velmoraLessons WHERE lessonID = 'n1'"), u"New \"語\" 😀");
    EXPECT_EQ(database->Ask(u"SELECT lessonIdentifier FROM velmoraLessons WHERE lessonID = 'l2' AND lessonType = 0"),
              u"L-9");
    // What the commands did not name is as it was.
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonID = 'l1' AND lessonProperties LIKE "
                            u"'%StoryboardCount=3%' AND lessonTitle LIKE 'O''Neil%'"),
              u"1");
}

INSTANTIATE_TEST_SUITE_P(Engines, HierarchyCommandsTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST(EntryCommandsTest, DescribeTheTreeAndItsEntries) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    const auto run = [&](const std::string& line) { return RunOn(database.ConnectionString(), line).output; };
    EXPECT_THAT(run("tree"), EndsWith("  2 groups, 3 lessons, 1 other\n"
                                      "├─ Grundlagen 語  [G-1]  1 group, 2 lessons\n"
                                      "│  ├─ O'Neil's \"first\"  [L-1]\n"
                                      "│  ├─ Привет 😀  [L-2]\n"
                                      "│  └─ (untitled)  [G-2]  empty\n"
                                      "├─ Two lines  [DUP]\n"
                                      "└─ Odd  [DUP]  other: empty\n"));
    EXPECT_EQ(run("tree G-1 --depth 0"), "Grundlagen 語  [G-1]  1 group, 2 lessons\n");
    EXPECT_EQ(run("find ПРИВ"), "Grundlagen 語 / Привет 😀  [L-2]  {l2}\n");
    EXPECT_EQ(run("find dup --exact"), "Two lines  [DUP]  {l3}\nOdd  [DUP]  {x1}\n");
    database.Run({LockRow(u"l1", u"юлия", u"m1", 1)});
    ExpectSaid(
        database.ConnectionString(),
        {{"tree g1 --depth=1 --json", 0,
          ",\n{\"lessonID\":\"l1\",\"title\":\"O'Neil's \\\"first\\\"\",\"identifier\":\"L-1\",\"type\":\"lesson\","
          "\"parentID\":\"g1\",\"level\":2,\"position\":1,\"groups\":0,\"lessons\":0,\"others\":0},\n"},
         {"find none", 1, ""},
         {"tree L-11", 1, "'L-11'. Did you mean 'L-1'?"},
         {"tree \"wholly other\"", 1, "'dax find' looks for a text"},
         {"tree DUP", 1, "2 entries have the identifier 'DUP'"},
         {"tree DUP", 1, "\n  l3  Two lines\n  x1  Odd\n"},
         {"lesson L-1", 0, "lesson: O'Neil's \"first\"\n\nproperties\n  Classification   internal\n"},
         {"lesson l1 --json", 0, "\"StoryboardCount\":3,\"Odd name\":\"a\\tb\","},
         {"lesson / --json", 0, "\"StoryboardCount\":9,"},
         {"info L-1", 0, "O'Neil's \"first\"\nlesson\nidentifier: L-1\n3 active storyboards\n"},
         {"info L-1", 0, "\ninternal\n\nюлия: editing lesson\nsince "},
         {"info G-1 --level=3", 0, "Grundlagen 語\ngroup\ninternal\n\n(1 user): editing lesson\nsince "},
         {"info l2 --no-identifier --json", 0, "\"lockInfo\":[\"no locks\"],\"lockCount\":0"}});
    EXPECT_THAT(run("info l2 --no-identifier"), Not(HasSubstr("L-2")));
    database.Run({u"DROP TABLE velmoraUserLocks"});
    ExpectSaid(database.ConnectionString(),
               {{"info l2", 3, "lock data not available\n"}, {"info l2", 3, "The locks could not be read: "}});
}

TEST(EditCommandTest, SavesNothingWhenOneCommandIsWrong) {
    const TempFolder folder;
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    const struct {
        std::string commands;
        int exitCode;
        std::string message;
    } refused[] = {
        {"remove L-1\nmove x1 in l3", 1, "Line 2: 'Two lines' is not a group"},
        {"remove L-1\nmove L-2 sideways\n", 2, "Line 2: 'move' does not know what to do with 'sideways'"},
        {"# comment\n\nremove L-1\nmove L-1 up", 1, "Line 4: There is no entry 'L-1'"},
        {"remove L-1\nadd lesson \"no end\n", 2, "Line 2: A quotation mark is missing"},
        {"move g1 in G-2", 1, "Line 1: 'Grundlagen 語' cannot move into itself"},
        {"move l1 after /", 1, "Nothing can stand beside the top"},
        {"move g1 up", 1, "cannot move up"},
        {"remove /", 1, "The top is the database itself"},
        {"remove l1\nadd lesson T id l1", 1, "Line 2: The entry 'l1' was removed by an earlier command"},
        {"add lesson T id l1", 1, "There is an entry with the lessonID 'l1' already"},
        {"add lesson T id a'b", 1, "'a'b' cannot be a lessonID"},
        {"update l1", 2, "'update' needs title, identifier or type after 'l1'"},
        {"add chapter T", 2, "'chapter' is not a type"},
        {"ad", 2, "no edit command 'ad'"},
    };
    for (const auto& [commands, exitCode, message] : refused) {
        const Outcome outcome =
            RunDax({u"edit", database.ConnectionString(), u"--file", folder.Write(u"c.txt", commands)});
        EXPECT_EQ(outcome.exitCode, exitCode) << commands;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }
    EXPECT_EQ(TreeOf(database), "g1 >l1 >l2 >g2 l3 x1");

    // What the database refuses, and what no statement of its own may carry out.
    database.Run({u"CREATE TRIGGER no BEFORE UPDATE ON velmoraLessons WHEN old.lessonID = 'x1' BEGIN SELECT "
                  u"RAISE(ABORT, 'closed for today'); END"});
    ExpectSaid(database.ConnectionString(), {{"edit remove g1", 3, "closed for today"}});
    database.Run({u"DROP TRIGGER no", u"UPDATE velmoraLessons SET lessonID = 'x'' OR 1=1 --' WHERE lessonID = 'x1'"});
    ExpectSaid(database.ConnectionString(), {{"edit remove \"x' OR 1=1 --\"", 1, ""}});
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"6");
}

TEST(EditCommandTest, LeavesAloneWhatSomebodyEdits) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    // Reading is no editing; nobody can edit a group, so that lock is a left-over.
    database.Run({LockRow(u"l1", u"юлия", u"m1", 1), LockRow(u"l1", u"anna", u"m1", 3),
                  LockRow(u"l2", u"boris", u"m1", 2), LockRow(u"g2", u"carl", u"m1", 1)});
    for (const std::string line : {"update L-1 title T", "remove l1", "move l1 down", "update G-1 title T",
                                   "remove G-1 keep-children", "remove G-1 --dry-run", "remove G-1"}) {
        const Outcome outcome = RunOn(database.ConnectionString(), "edit " + line);
        EXPECT_EQ(outcome.exitCode, 1) << line;
        EXPECT_THAT(outcome.errors, AllOf(HasSubstr("юлия on m1: editing lesson 'O'Neil's \"first\"' for "),
                                          HasSubstr("anna on m1: editing guide"), Not(HasSubstr("boris"))));
    }
    ExpectSaid(database.ConnectionString(), {{"edit move l2 down", 0, ""},
                                             {"edit remove G-2", 0, ""},
                                             {"edit add lesson T id n in G-1", 0, "Added: n"},
                                             {"edit remove G-1 --force", 0, ""}});
    EXPECT_EQ(TreeOf(database), "l3 x1");
}

} // namespace
} // namespace dax::test
