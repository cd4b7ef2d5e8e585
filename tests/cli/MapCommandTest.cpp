// dax map: the real program on a stored lesson, and on the lessons of a sample course.
#include "CourseRows.h"
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const Text Storyboards = u"lesson\t1\n"
                         u"storyboard\ts1\ttitle\tINTRO\tWelcome\n"
                         u"storyboard\ts2\ttext\tQ-1\tWarum 語?\n"
                         u"storyboard\ts3\tquestion\tQ-2\twelcome back\n"
                         u"storyboard\ts4\t\t\t\n"
                         u"storyboard\ts5\ttext\tO\tIn no map\n"
                         u"map\tMain\tdefault\n";
const Text Pages = u"page\t1\ts1\npage\t2\ts2\npage\t1\ts3\nmap\tExtra\npage\t1\ts4\n";

class MapCommandTest : public ::testing::Test {
protected:
    Outcome Run(std::vector<Text> words) const {
        words.insert(words.begin(), {u"map", database.ConnectionString()});
        return RunDax(words);
    }
    Text Stored() const { return database.Ask(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'"); }

    const TestDatabase database{Engine::SQLite};
};

TEST_F(MapCommandTest, ShowsAndMoves) {
    MakeCourse(database, Storyboards + Pages + u"current\ts2\n");
    EXPECT_EQ(Run({u"L-1"}).output, "Main (3)  default map\n"
                                    "├─ Welcome  [INTRO]  title  {s1}\n"
                                    "│  └─ Warum 語?  [Q-1]  text  {s2}  current\n"
                                    "└─ welcome back  [Q-2]  question  {s3}\n"
                                    "Extra (1)\n"
                                    "└─ (untitled)  {s4}\n"
                                    "in no map\n"
                                    "   In no map  [O]  text  {s5}\n");

    const struct {
        Text storyboard, direction, pages;
    } moves[] = {
        {u"INTRO", u"down", u"page\t1\ts3\npage\t1\ts1\npage\t2\ts2\nmap\tExtra\npage\t1\ts4\n"},
        {u"s1", u"next-map", u"page\t1\ts3\nmap\tExtra\npage\t1\ts1\npage\t2\ts2\npage\t1\ts4\n"},
        {u"s2", u"outdent", u"page\t1\ts3\nmap\tExtra\npage\t1\ts1\npage\t1\ts2\npage\t1\ts4\n"},
        {u"s4", u"previous-map", u"page\t1\ts3\npage\t1\ts4\nmap\tExtra\npage\t1\ts1\npage\t1\ts2\n"},
    };
    Text stored;
    for (const auto& [storyboard, direction, pages] : moves) {
        const Outcome moved = Run({u"L-1", u"--move", storyboard, u"--to", direction});
        EXPECT_EQ(moved.exitCode, 0) << moved.errors;
        stored = Storyboards + pages + u"current\ts2\n";
        EXPECT_EQ(Stored(), stored);
    }

    // Pages that come, get other words, and go: the storyboards behind those that were there at first, and the pages.
    const Text n1 = u"storyboard\tn1\ttext\t\tNew\n", n2 = u"storyboard\tn2\t\t\t\n",
               n1Later = u"storyboard\tn1\ttext\tN\tNewer 語\n", n3 = u"storyboard\tn3\t\t\tFirst\n";
    const Text s3s4 = u"page\t1\ts3\npage\t1\ts4\n", s1n1s2 = u"map\tExtra\npage\t1\ts1\npage\t2\tn1\npage\t1\ts2\n",
               n1s2 = u"map\tExtra\npage\t1\tn1\npage\t1\ts2\n", last = u"page\t1\tn2\n";
    const struct {
        std::vector<Text> words;
        Text storyboards, pages;
    } changes[] = {
        {{u"--add", u"New", u"--sbid", u"n1", u"--in", u"INTRO", u"--type", u"text"}, n1, s3s4 + s1n1s2},
        {{u"--add", u"", u"--sbid", u"n2"}, n1 + n2, s3s4 + last + s1n1s2},
        {{u"--remove", u"INTRO", u"--keep-children"}, n1 + n2, s3s4 + last + n1s2},
        {{u"--rename", u"new", u"--title", u"Newer 語", u"--identifier", u"N"}, n1Later + n2, s3s4 + last + n1s2},
        {{u"--remove", u"n2"}, n1Later, s3s4 + n1s2},
        {{u"--add", u"First", u"--sbid", u"n3", u"--before", u"s3"}, n1Later + n3, u"page\t1\tn3\n" + s3s4 + n1s2},
    };
    for (const auto& [words, storyboards, pages] : changes) {
        std::vector<Text> all = words;
        all.insert(all.begin(), u"L-1");
        const Outcome changed = Run(all);
        EXPECT_EQ(changed.exitCode, 0) << changed.errors;
        EXPECT_THAT(changed.output, StartsWith(words[0] == u"--add" ? "Added: " + ToUtf8(words[3]) + "\n" : "Main ("));
        Text kept = Storyboards;
        const Text first = u"storyboard\ts1\ttitle\tINTRO\tWelcome\n";
        if (pages.find(u"s1") == Text::npos) kept.erase(kept.find(first), first.size());
        kept.insert(kept.find(u"map\t"), storyboards);
        stored = kept + pages + u"current\ts2\n";
        EXPECT_EQ(ToUtf8(Stored()), ToUtf8(stored));
    }

    database.Run({LockRow(u"l1", u"юлия", u"m1", 1)});
    const Outcome edited = Run({u"L-1", u"--move", u"s4", u"--to", u"up"});
    EXPECT_EQ(edited.exitCode, 1);
    EXPECT_THAT(edited.errors, HasSubstr("юлия is editing"));
    EXPECT_EQ(Stored(), stored);
    EXPECT_EQ(Run({u"L-1", u"--move", u"s4", u"--to", u"up", u"--force"}).exitCode, 0);
    EXPECT_NE(Stored(), stored);
}

TEST_F(MapCommandTest, FindsAndRefuses) {
    MakeCourse(database, Storyboards + Pages);
    EXPECT_EQ(Run({u"l1", u"--find", u"WELCOME"}).output,
              "Welcome  [INTRO]  title  {s1}\nwelcome back  [Q-2]  question  {s3}\n");
    EXPECT_EQ(Run({u"l1", u"--find", u"q-2", u"--exact", u"--json"}).output,
              "[{\"sbid\":\"s3\",\"missing\":false,\"title\":\"welcome "
              "back\",\"identifier\":\"Q-2\",\"type\":\"question\"}]\n");
    const struct {
        std::vector<Text> words;
        std::string message;
    } cases[] = {
        {{u"l1", u"--find", u"nothing"}, "No storyboard fits"},
        {{u"l1", u"--move", u"s1", u"--to", u"up"}, "cannot move there"},
        {{u"l1", u"--move", u"Main", u"--to", u"down"}, "No storyboard in a map"},
        {{u"l1", u"--remove", u"INTR"}, "Did you mean 'INTRO'?"},
        {{u"l1", u"--rename", u"s1", u"--title", u"a\tb"}, "title of a storyboard cannot hold tabs"},
        {{u"l1", u"--add", u"T", u"--sbid", u"Main"}, "There is a storyboard or a map 'Main' already"},
        {{u"G-1"}, "is not a lesson but a group"},
        {{u"L-2"}, "Nothing is stored in the lesson 'L-2'"},
        {{u"l3"}, "Line 1: The text is no lesson"},
        {{u"L-4"}, "There is no entry 'L-4'"},
    };
    for (const auto& [words, message] : cases) {
        const Outcome outcome = Run(words);
        EXPECT_EQ(outcome.exitCode, 1) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_THAT(outcome.output, IsEmpty());
    }
    EXPECT_EQ(Stored(), Storyboards + Pages);
}

TEST(SampleLessonTest, HoldsWhatItsPropertiesSay) {
    const TempFolder folder;
    const Text file = folder.File(u"a.db");
    ASSERT_EQ(RunDax({u"sample", file, u"--lessons", u"40"}).exitCode, 0);
    for (const Text lesson : {u"SAF-7", u"SAF-8", u"SAF-39"}) {
        const Outcome map = RunDax({u"map", file, lesson, u"--json"});
        ASSERT_EQ(map.exitCode, 0) << map.errors;
        size_t pages = 0;
        for (size_t at = 0; (at = map.output.find("\"level\":", at)) != std::string::npos; ++at) ++pages;
        EXPECT_GT(pages, 2u);
        EXPECT_THAT(RunDax({u"info", file, lesson}).output,
                    HasSubstr("\n" + std::to_string(pages) + " active storyboards\n"));
        EXPECT_THAT(map.output, HasSubstr("\"default\":true"));
    }
    EXPECT_THAT(RunDax({u"map", file, u"SAF-7"}).output, HasSubstr("\nin no map\n"));
}

} // namespace
} // namespace dax::test
