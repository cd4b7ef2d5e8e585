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
using ::testing::StartsWith;

// All below the top, by lessonID.
std::string TreeOf(const TestDatabase& database) {
    const Outcome outcome = RunDax({u"tree", database.ConnectionString(), u"--indent", u"--ids"});
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
    const auto edit = [this](std::vector<Text> words) {
        words.insert(words.begin(), {u"edit", database->ConnectionString()});
        return RunDax(words);
    };
    const Outcome wrong = edit({u"--file", folder.Write(u"c.txt", "remove L-1\nmove x1 in l3")});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_THAT(wrong.errors, HasSubstr("Line 2: 'Two lines' is not a group"));
    EXPECT_EQ(TreeOf(*database), "g1 >l1 >l2 >g2 l3 x1");

    const Outcome dry = edit({u"remove", u"g1", u"--dry-run"});
    EXPECT_EQ(dry.output, "Not saved: 4 removed\n") << dry.errors;
    const Outcome done =
        edit({u"--file", folder.Write(u"語.txt", "\xEF\xBB\xBF# all kinds\r\n"
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
    EXPECT_EQ(edit({u"add", u"lesson", u"Last", u"id", u"z", u"after", u"n1"}).exitCode, 0);
    EXPECT_EQ(TreeOf(*database), "g2 l1 n2 n1 z x1 l3 l2");
}

INSTANTIATE_TEST_SUITE_P(Engines, HierarchyCommandsTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST(EntryCommandsTest, DescribeTheTreeAndItsEntries) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    const auto run = [&](Text command, std::vector<Text> words) {
        words.insert(words.begin(), {std::move(command), database.ConnectionString()});
        return RunDax(words);
    };
    EXPECT_THAT(run(u"tree", {}).output, EndsWith("  2 groups, 3 lessons, 1 other\n"
                                                  "├─ Grundlagen 語  [G-1]  1 group, 2 lessons\n"
                                                  "│  ├─ O'Neil's \"first\"  [L-1]\n"
                                                  "│  ├─ Привет 😀  [L-2]\n"
                                                  "│  └─ (untitled)  [G-2]  empty\n"
                                                  "├─ Two lines  [DUP]\n"
                                                  "└─ Odd  [DUP]  other: empty\n"));
    EXPECT_EQ(run(u"tree", {u"G-1", u"--depth", u"0"}).output, "Grundlagen 語  [G-1]  1 group, 2 lessons\n");
    EXPECT_THAT(
        run(u"tree", {u"g1", u"--depth=1", u"--json"}).output,
        HasSubstr(",\n{\"lessonID\":\"l1\",\"title\":\"O'Neil's \\\"first\\\"\",\"identifier\":\"L-1\",\"type\":"
                  "\"lesson\",\"parentID\":\"g1\",\"level\":2,\"position\":1,\"groups\":0,\"lessons\":0,"
                  "\"others\":0},\n"));
    EXPECT_EQ(run(u"find", {u"ПРИВ"}).output, "Grundlagen 語 / Привет 😀  [L-2]  {l2}\n");
    EXPECT_EQ(run(u"find", {u"dup", u"--exact"}).output, "Two lines  [DUP]  {l3}\nOdd  [DUP]  {x1}\n");
    EXPECT_EQ(run(u"find", {u"G2", u"--json"}).output,
              "{\"entries\":[\n{\"lessonID\":\"g2\",\"title\":\"\",\"identifier\":\"G-2\",\"type\":\"group\",\"path\":["
              "\"Grundlagen 語\"]}]}\n");
    EXPECT_EQ(run(u"find", {u"none"}).exitCode, 1);
    for (const Text name : {u"l-1", u"L-11", u"L1-"})
        EXPECT_THAT(run(u"tree", {name}).errors, HasSubstr("'" + ToUtf8(name) + "'. Did you mean 'L-1'?"));
    EXPECT_THAT(run(u"tree", {u"wholly other"}).errors, HasSubstr("'dax find' looks for a text"));
    const Outcome twice = run(u"tree", {u"DUP"});
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_THAT(twice.errors, AllOf(HasSubstr("2 entries have the identifier 'DUP'"), HasSubstr("\n  l3  Two lines\n"),
                                    HasSubstr("\n  x1  Odd\n")));

    EXPECT_THAT(run(u"lesson", {u"L-1"}).output,
                StartsWith("lesson: O'Neil's \"first\"\n\nproperties\n  Classification   internal\n"));
    const Outcome json = run(u"lesson", {u"l1", u"--json"});
    EXPECT_THAT(json.output, AllOf(HasSubstr("\"StoryboardCount\":3,\"Odd name\":\"a\\tb\","),
                                   HasSubstr("\"ParentIdentifierPath\":\"G-1\""), HasSubstr("\"LessonCount\":1,")));
    EXPECT_THAT(run(u"lesson", {u"/", u"--json"}).output,
                AllOf(HasSubstr("\"properties\":null,\"tokens\":{},"), HasSubstr("\"StoryboardCount\":9,")));

    database.Run({LockRow(u"l1", u"юлия", u"m1", 1)});
    EXPECT_THAT(run(u"info", {u"L-1"}).output,
                AllOf(StartsWith("O'Neil's \"first\"\nlesson\nidentifier: L-1\n3 active storyboards\n"),
                      HasSubstr("\ninternal\n\nюлия: editing lesson\nsince ")));
    EXPECT_THAT(run(u"info", {u"G-1", u"--level=3"}).output,
                StartsWith("Grundlagen 語\ngroup\ninternal\n\n(1 user): editing lesson\nsince "));
    const Outcome lesson = run(u"info", {u"L-2", u"--no-identifier", u"--json"});
    EXPECT_THAT(lesson.output, AllOf(HasSubstr("\"lockInfo\":[\"no locks\"],\"lockCount\":0"), Not(HasSubstr("L-2"))));
    database.Run({u"DROP TABLE velmoraUserLocks"});
    const Outcome broken = run(u"info", {u"L-2"});
    EXPECT_THAT(broken.output, EndsWith("lock data not available\n"));
    EXPECT_THAT(broken.errors, HasSubstr("The locks could not be read: "));
}

TEST(TreeCommandTest, ChainStaysReadable) {
    TestDatabase database(Engine::SQLite);
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, Engine::SQLite);
    statements.push_back(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) INSERT INTO "
                         u"velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, "
                         u"sortPosition, lessonType) SELECT 'i' || i, 't', '', CASE i WHEN 1 THEN '' ELSE 'i' || (i - "
                         u"1) END, i, 1, 0 FROM n");
    database.Run(statements);
    const Outcome deep = RunDax({u"tree", database.ConnectionString()});
    EXPECT_THAT(deep.output, EndsWith("(5000) t  empty\n"));
    EXPECT_LT(deep.output.size(), 5000u * 200);
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
        {"remove L-1\nmove L-2 sideways\n", 2, "Line 2: 'move' does not know what to do with 'sideways'"},
        {"# comment\n\nremove L-1\nmove L-1 up", 1, "Line 4: There is no entry 'L-1'"},
        {"remove L-1\nadd lesson \"no end\n", 2, "Line 2: A quotation mark is missing"},
        {"remove g1\nremove DUP", 1, "Line 2: 2 entries have the identifier 'DUP'"},
        {"move g1 in G-2", 1, "Line 1: 'Grundlagen 語' cannot move into itself"},
        {"move l1 after /", 1, "Nothing can stand beside the top"},
        {"move g1 up", 1, "cannot move up"},
        {"remove /", 1, "The top is the database itself"},
        {"remove l1\nadd lesson T id l1", 1, "Line 2: The entry 'l1' was removed by an earlier command"},
        {"add lesson T id l1", 1, "There is an entry with the lessonID 'l1' already"},
        {"add lesson T id a'b", 1, "'a'b' cannot be a lessonID"},
        {"add lesson T in nowhere", 1, "Line 1: There is no entry 'nowhere'"},
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
}

TEST(EditCommandTest, LeavesAloneWhatSomebodyEdits) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    // Reading is no editing; nobody can edit a group, so that lock is a left-over.
    database.Run({LockRow(u"l1", u"юлия", u"m1", 1), LockRow(u"l1", u"anna", u"m1", 3),
                  LockRow(u"l2", u"boris", u"m1", 2), LockRow(u"g2", u"carl", u"m1", 1)});
    const struct {
        std::vector<Text> words;
        int exitCode;
    } cases[] = {
        {{u"update", u"L-1", u"title", u"T"}, 1},
        {{u"remove", u"l1"}, 1},
        {{u"move", u"l1", u"down"}, 1},
        {{u"update", u"G-1", u"title", u"T"}, 1},
        {{u"remove", u"G-1", u"keep-children"}, 1},
        {{u"remove", u"G-1", u"--dry-run"}, 1},
        {{u"remove", u"G-1"}, 1},
        {{u"move", u"l2", u"down"}, 0},
        {{u"remove", u"G-2"}, 0},
        {{u"add", u"lesson", u"T", u"id", u"n", u"in", u"G-1"}, 0},
        {{u"remove", u"G-1", u"--force"}, 0},
    };
    for (const auto& [words, exitCode] : cases) {
        std::vector<Text> all = words;
        all.insert(all.begin(), {u"edit", database.ConnectionString()});
        const Outcome outcome = RunDax(all);
        EXPECT_EQ(outcome.exitCode, exitCode) << ToUtf8(words[0] + u" " + words[1]) << outcome.errors;
        if (exitCode == 0) continue;
        EXPECT_THAT(outcome.errors, AllOf(HasSubstr("юлия on m1: editing lesson 'O'Neil's \"first\"' for "),
                                          HasSubstr("anna on m1: editing guide"), Not(HasSubstr("boris"))));
    }
    EXPECT_EQ(TreeOf(database), "l3 x1");
}

TEST(EditCommandTest, ReportsWhatTheDatabaseRefuses) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    database.Run({u"CREATE TRIGGER no BEFORE UPDATE ON velmoraLessons WHEN old.lessonID = 'x1' BEGIN SELECT "
                  u"RAISE(ABORT, 'closed for today'); END"});
    const Outcome failed = RunDax({u"edit", database.ConnectionString(), u"remove", u"g1"});
    EXPECT_EQ(failed.exitCode, 3);
    EXPECT_THAT(failed.errors, AllOf(HasSubstr("closed for today"), EndsWith("\nNothing was saved.\n")));
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"6");
    database.Run({u"DROP TRIGGER no", u"UPDATE velmoraLessons SET lessonID = 'x'' OR 1=1 --' WHERE lessonID = 'x1'"});
    const Outcome apostrophe = RunDax({u"edit", database.ConnectionString(), u"remove", u"x' OR 1=1 --"});
    EXPECT_EQ(apostrophe.exitCode, 1);
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"6");
}

} // namespace
} // namespace dax::test
