// What the commands show of a small course, change in it, and refuse.
#include "Program.h"
#include "support/CourseRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace dax::test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

const Text storyboards = u"lesson\t1\n"
                         u"storyboard\ts1\ttitle\tINTRO\tWelcome\n"
                         u"storyboard\ts2\ttext\tQ-1\tWarum 語?\n"
                         u"storyboard\ts3\tquestion\tQ-2\twelcome back\n"
                         u"storyboard\ts4\t\t\t\n"
                         u"storyboard\ts5\ttext\tO\tIn no map\n"
                         u"map\tMain\tdefault\n";
const Text pages = u"page\t1\ts1\npage\t2\ts2\npage\t1\ts3\nmap\tExtra\npage\t1\ts4\ncurrent\ts2\n";

class CourseTest : public ::testing::Test {
protected:
    CourseTest() { MakeCourse(database, storyboards + pages); }
    Outcome Run(const std::string& line, const std::string& input = {}) const {
        return RunOn(database.ConnectionString(), line, input);
    }
    void Expect(std::initializer_list<ExpectedOutput> cases) const { ExpectOutput(database.ConnectionString(), cases); }
    // Each entry after its group, group by group.
    Text Shape() const {
        return database.Query(
            u"SELECT group_concat(parentID || '/' || lessonID, ' ') FROM (SELECT * FROM velmoraLessons "
            u"ORDER BY indentLevel, parentID, sortPosition)");
    }
    Text Map() const { return database.Query(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'"); }
    Text Locks() const { return database.Query(u"SELECT group_concat(machineName, '') FROM velmoraUserLocks"); }

    const TestDatabase database{Engine::SQLite};
};

TEST_F(CourseTest, IsShown) {
    database.Run({LockRow(u"l1", u"юлия", u"m1", 1)});
    Expect({{"tree", 0,
             "  2 groups, 3 lessons, 1 other\n"
             "├─ Grundlagen 語  [G-1]  1 group, 2 lessons\n"
             "│  ├─ O'Neil's \"first\"  [L-1]\n"
             "│  ├─ Привет 😀  [L-2]\n"
             "│  └─ (untitled)  [G-2]  empty\n"
             "├─ Two lines  [DUP]\n"
             "└─ Odd  [DUP]  other: empty\n"},
            {"tree G-1 --indent --ids", 0, "1 group, 2 lessons\n    O'Neil's \"first\"  [L-1]  {l1}\n"},
            {"tree g1 --depth=1 --json", 0,
             ",\n{\"lessonID\":\"l1\",\"title\":\"O'Neil's \\\"first\\\"\",\"identifier\":\"L-1\",\"type\":\"lesson\","
             "\"parentID\":\"g1\",\"level\":2,\"position\":1,\"groups\":0,\"lessons\":0,\"others\":0},\n"},
            {"find ПРИВ", 0, "Grundlagen 語 / Привет 😀  [L-2]  {l2}\n"},
            {"find dup --exact", 0, "Two lines  [DUP]  {l3}\nOdd  [DUP]  {x1}\n"},
            {"lesson L-1", 0, "lesson: O'Neil's \"first\"\n\nproperties\n  Classification   internal\n"},
            {"lesson l1 --json", 0, "\"StoryboardCount\":3,\"Odd name\":\"a\\tb\","},
            {"info L-1", 0, "\ninternal\n\nюлия: editing lesson\nsince "},
            {"info G-1 --level=3", 0, "Grundlagen 語\ngroup\ninternal\n\n(1 user): editing lesson\nsince "},
            {"map l1 --find WELCOME", 0, "Welcome  [INTRO]  title  {s1}\nwelcome back  [Q-2]  question  {s3}\n"}});
    EXPECT_EQ(Run("tree G-1 --depth 0").output, "Grundlagen 語  [G-1]  1 group, 2 lessons\n");
    EXPECT_THAT(Run("info l2 --no-identifier").output, Not(HasSubstr("L-2")));
    EXPECT_EQ(Run("map L-1").output, "Main (3)  default map\n"
                                     "├─ Welcome  [INTRO]  title  {s1}\n"
                                     "│  └─ Warum 語?  [Q-1]  text  {s2}  current\n"
                                     "└─ welcome back  [Q-2]  question  {s3}\n"
                                     "Extra (1)\n"
                                     "└─ (untitled)  {s4}\n"
                                     "in no map\n"
                                     "   In no map  [O]  text  {s5}\n");
}

TEST_F(CourseTest, NothingIsDoneWhenSomethingIsWrong) {
    const Text shape = Shape();
    Expect({{"find none", 1, ""},
            {"tree L-11", 1, "'L-11'. Did you mean 'L-1'?"},
            {"tree \"wholly other\"", 1, "'dax find' looks for a text"},
            {"tree DUP", 1, "2 entries have the identifier 'DUP'"},
            {"tree DUP", 1, "\n  l3  Two lines\n  x1  Odd\n"},
            {"map l1 --find nothing", 1, "No storyboard fits"},
            {"map l1 --move s1 --to up", 1, "cannot move there"},
            {"map l1 --move Main --to down", 1, "No storyboard in a map"},
            {"map l1 --remove INTR", 1, "Did you mean 'INTRO'?"},
            {"map l1 --rename s1 --title \"a\tb\"", 1, "title of a storyboard cannot hold tabs"},
            {"map l1 --add T --sbid Main", 1, "There is a storyboard or a map 'Main' already"},
            {"map G-1", 1, "is not a lesson but a group"},
            {"map L-2", 1, "Nothing is stored in the lesson 'L-2'"},
            {"lesson L-1 --import -", 1, "holds no lesson: Line 1", "nothing"},
            {"edit remove g1 --dry-run", 0, "Not saved: 4 removed\n"},
            {"edit --file -", 1, "Line 2: 'Two lines' is not a group", "remove L-1\nmove x1 in l3"},
            {"edit --file -", 2, "Line 2: 'move' has no argument 'sideways'", "remove L-1\nmove L-2 sideways"},
            {"edit --file -", 1, "Line 4: There is no entry 'L-1'", "# comment\n\nremove L-1\nmove L-1 up"},
            {"edit --file -", 2, "Line 2: A quotation mark is missing", "remove L-1\nadd lesson \"no end\n"},
            {"edit --file -", 1, "Line 2: The entry 'l1' was removed by an earlier", "remove l1\nadd lesson T id l1"},
            {"edit move g1 in G-2", 1, "'Grundlagen 語' cannot move into itself"},
            {"edit move l1 after /", 1, "Nothing can stand beside the top"},
            {"edit remove /", 1, "The top is the database itself"},
            {"edit add lesson T id l1", 1, "There is an entry with the lessonID 'l1' already"},
            {"edit add lesson T id a'b", 1, "'a'b' cannot be a lessonID"},
            {"edit update l1", 2, "'update' needs title, identifier or type after 'l1'"},
            {"edit ad", 2, "no edit command 'ad'"}});

    database.Run({u"CREATE TRIGGER no BEFORE UPDATE ON velmoraLessons WHEN old.lessonID = 'x1' BEGIN SELECT "
                  u"RAISE(ABORT, 'closed for today'); END"});
    Expect({{"edit remove g1", 3, "closed for today"}});
    EXPECT_EQ(Shape(), shape);
    EXPECT_EQ(Map(), storyboards + pages);
    database.Run({u"DROP TABLE velmoraUserLocks"});
    Expect({{"info l2", 3, "lock data not available\n"}, {"info l2", 3, "The locks could not be read: "}});
}

TEST_F(CourseTest, IsEditedInOneTransaction) {
    const TempFolder folder;
    const Outcome done = RunDax({u"edit", database.ConnectionString(), u"--file",
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
    EXPECT_EQ(Shape(), u"/g2 /l1 /n2 /n1 /x1 /l3 /l2");
    Expect({{"tree n1 --indent --depth 0", 0, "New \"語\" 😀  [N]"},
            {"tree L-9 --depth 0", 0, "Привет 😀  [L-9]  empty"}, // a group
            // What the commands did not name is as it was.
            {"lesson l1", 0, "lesson: O'Neil's \"first\"\n\nproperties\n  Classification   internal\n"}});
}

TEST_F(CourseTest, WhatSomebodyEditsIsLeftAlone) {
    // Reading is no editing; groups cannot be edited, so that lock is a left-over.
    database.Run({LockRow(u"l1", u"юлия", u"m1", 1), LockRow(u"l1", u"anna", u"m1", 3),
                  LockRow(u"l2", u"boris", u"m1", 2), LockRow(u"g2", u"carl", u"m1", 1)});
    for (const std::string line : {"update L-1 title T", "remove l1", "move l1 down", "update G-1 title T",
                                   "remove G-1 keep-children", "remove G-1 --dry-run", "remove G-1"}) {
        const Outcome outcome = Run("edit " + line);
        EXPECT_EQ(outcome.exitCode, 1) << line;
        EXPECT_THAT(outcome.errors, AllOf(HasSubstr("юлия on m1: editing lesson 'O'Neil's \"first\"' for "),
                                          HasSubstr("anna on m1: editing guide"), Not(HasSubstr("boris"))));
    }
    Expect({{"map L-1 --move s4 --to previous-map", 1, "юлия is editing"}});
    EXPECT_EQ(Map(), storyboards + pages);
    Expect({{"map L-1 --move s4 --to previous-map --force", 0, ""},
            {"edit move l2 down", 0, ""},
            {"edit remove G-2", 0, ""},
            {"edit add lesson T id n in G-1", 0, "Added: n"}});
    EXPECT_NE(Map(), storyboards + pages);
    Expect({{"edit remove G-1 --force", 0, ""}});
    EXPECT_EQ(Shape(), u"/l3 /x1");
}

TEST_F(CourseTest, MapsAreChanged) {
    for (const std::string move : {"INTRO --to down", "s1 --to next-map", "s2 --to outdent", "s4 --to previous-map"})
        EXPECT_EQ(Run("map L-1 --move " + move).exitCode, 0) << move;
    EXPECT_EQ(Map(), storyboards + u"page\t1\ts3\npage\t1\ts4\nmap\tExtra\npage\t1\ts1\npage\t1\ts2\ncurrent\ts2\n");
    Expect({{"map L-1 --add New --sbid n1 --in INTRO --type text", 0, "Added: n1"},
            {"map L-1 --add \"\" --sbid n2", 0, "Added: n2"},
            {"map L-1 --remove INTRO --keep-children", 0, "Main ("},
            {"map L-1 --rename new --title \"Newer 語\" --identifier N", 0, "Main ("},
            {"map L-1 --remove n2", 0, "Main ("},
            {"map L-1 --add First --sbid n3 --before s3", 0, "Added: n3"}});
    // New storyboards are after those that were there at first.
    Text changed = storyboards;
    const Text first = u"storyboard\ts1\ttitle\tINTRO\tWelcome\n";
    changed.erase(changed.find(first), first.size());
    changed.insert(changed.find(u"map\t"), u"storyboard\tn1\ttext\tN\tNewer 語\nstoryboard\tn3\t\t\tFirst\n");
    EXPECT_EQ(Map(), changed + u"page\t1\tn3\npage\t1\ts3\npage\t1\ts4\n"
                               u"map\tExtra\npage\t1\tn1\npage\t1\ts2\ncurrent\ts2\n");
}

TEST_F(CourseTest, ALessonGoesToAFileAndBack) {
    const TempFolder folder;
    const std::string file = " \"" + ToUtf8(folder.File(u"語")) + "\"";
    for (const std::string option : {" --utf-16", " --force"}) {
        Expect({{"lesson L-1 --export" + file + option, 0, "Written: "},
                {"map L-1 --move INTRO --to down", 0, "├─ welcome back"},
                {"lesson L-1 --import" + file, 0, "Saved: l1\n"}});
        EXPECT_EQ(Map(), storyboards + pages);
    }
}

// Three valid locks, one on a deleted lesson, a connection test.
class LocksTest : public CourseTest {
protected:
    LocksTest() {
        database.Run({LockRow(u"l1", u"anna", u"m3", 1), LockRow(u"l2", u"юлия", u"m1", 2),
                      LockRow(u"l3", u"o'neil", u"m5", 3), LockRow(u"gone", u"anna", u"m2", 1),
                      LockRow(u"l1", u"юлия", u"m4", -2)});
    }
};

TEST_F(LocksTest, AreListedWhereAllFiltersFit) {
    const std::pair<std::string, std::string> cases[] = {
        {"--sort machine", "m1m2m3m4m5"},
        {"--sort age --descending", "m5m4m3m2m1"},
        {"--user anna --sort date", "m2m3"},
        {"--user o'neil", "m5"},
        {"--lesson L-1 --sort machine", "m3m4"},
        {"--lesson gone", "m2"},
        {"--group G-1 --sort machine", "m1m3m4"},
        {"--group / --invalid", "m4"},
        {"--invalid --user юлия --lesson l1", "m4"},
        {"--lesson G-2", ""},
    };
    const std::regex machine("m[1-5]"); // in no other column
    for (const auto& [words, machines] : cases) {
        const std::string shown = Run("locks " + words).output;
        std::string listed;
        for (std::sregex_iterator each(shown.begin(), shown.end(), machine), end; each != end; ++each)
            listed += each->str();
        EXPECT_EQ(listed, machines) << words;
    }
    Expect({{"locks --sort user", 0, "\n(deleted) "},
            {"locks --sort user", 0, "\n\n5 locks, 2 invalid\n"},
            {"locks --user nobody", 0, "no locks\n"}});
}

TEST_F(LocksTest, AreDeletedWithinTheRights) {
    Expect(
        {{"locks --delete --as anna --group G-1", 1, "Delete 1 lock of 3, the rest being held by other users?", "no\n"},
         {"locks --delete --admin", 1, ""}}); // without an answer
    EXPECT_EQ(Locks(), u"m3m1m5m2m4");
    const Outcome own = Run("locks --delete --as anna --group G-1", "y\r\n");
    EXPECT_EQ(own.exitCode, 1) << own.errors;
    EXPECT_THAT(own.output,
                AllOf(HasSubstr("\nПривет 😀, reading lesson by юлия: not deleted: it belongs to another user\n"),
                      EndsWith("\n1 of 3 locks deleted\n")));
    EXPECT_THAT(Run("locks --delete --as Anna --yes --json").output, Not(HasSubstr("\"deleted\":true")));
    EXPECT_EQ(Locks(), u"m1m5m2m4");
    database.Run({LockRow(u"l2", u"", u"m9", 1)});
    const Outcome all = Run("locks --delete --admin --yes");
    EXPECT_EQ(all.exitCode, 1);
    EXPECT_THAT(all.errors, HasSubstr("lack values"));
    EXPECT_THAT(all.output, AllOf(HasSubstr("the database did not find it"), EndsWith("\n4 of 5 locks deleted\n")));
    EXPECT_EQ(Locks(), u"m9");

    database.Run(
        {LockRow(u"l1", u"anna", u"m1", 1), LockRow(u"l2", u"anna", u"m2", 1),
         u"CREATE TRIGGER again AFTER DELETE ON velmoraUserLocks WHEN old.machineName = 'm1' BEGIN INSERT INTO "
         u"velmoraUserLocks VALUES (old.lessonID, old.username, old.machineName, old.machineIP, 'new', "
         u"'2030-01-01 00:00:00', old.lockType); END"});
    Expect({{"locks --delete --as anna --user anna --yes", 1,
             "by anna: not deleted: it was taken again in the meantime\n1 of 2 locks deleted\n"}});
}

} // namespace
} // namespace dax::test
