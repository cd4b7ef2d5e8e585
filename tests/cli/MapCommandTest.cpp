// dax map: the real program on a stored lesson, and on the lessons of a sample course.
#include "CourseRows.h"
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

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
    Outcome Run(const std::string& words) const { return RunOn(database.ConnectionString(), "map " + words); }
    Text Stored() const { return database.Ask(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'"); }

    const TestDatabase database{Engine::SQLite};
};

TEST_F(MapCommandTest, ShowsAndMoves) {
    MakeCourse(database, Storyboards + Pages + u"current\ts2\n");
    EXPECT_EQ(Run("L-1").output, "Main (3)  default map\n"
                                 "├─ Welcome  [INTRO]  title  {s1}\n"
                                 "│  └─ Warum 語?  [Q-1]  text  {s2}  current\n"
                                 "└─ welcome back  [Q-2]  question  {s3}\n"
                                 "Extra (1)\n"
                                 "└─ (untitled)  {s4}\n"
                                 "in no map\n"
                                 "   In no map  [O]  text  {s5}\n");

    for (const std::string move : {"INTRO --to down", "s1 --to next-map", "s2 --to outdent", "s4 --to previous-map"})
        EXPECT_EQ(Run("L-1 --move " + move).exitCode, 0) << move;
    EXPECT_EQ(Stored(), Storyboards + u"page\t1\ts3\npage\t1\ts4\nmap\tExtra\npage\t1\ts1\npage\t1\ts2\ncurrent\ts2\n");

    // Pages that come, get other words, and go: the storyboards behind those that were there at first, and the pages.
    const Text n1 = u"storyboard\tn1\ttext\t\tNew\n", n2 = u"storyboard\tn2\t\t\t\n",
               n1Later = u"storyboard\tn1\ttext\tN\tNewer 語\n", n3 = u"storyboard\tn3\t\t\tFirst\n";
    const Text s3s4 = u"page\t1\ts3\npage\t1\ts4\n", s1n1s2 = u"map\tExtra\npage\t1\ts1\npage\t2\tn1\npage\t1\ts2\n",
               n1s2 = u"map\tExtra\npage\t1\tn1\npage\t1\ts2\n", last = u"page\t1\tn2\n";
    const struct {
        std::string words;
        Text storyboards, pages;
    } changes[] = {
        {"--add New --sbid n1 --in INTRO --type text", n1, s3s4 + s1n1s2},
        {"--add \"\" --sbid n2", n1 + n2, s3s4 + last + s1n1s2},
        {"--remove INTRO --keep-children", n1 + n2, s3s4 + last + n1s2},
        {"--rename new --title \"Newer 語\" --identifier N", n1Later + n2, s3s4 + last + n1s2},
        {"--remove n2", n1Later, s3s4 + n1s2},
        {"--add First --sbid n3 --before s3", n1Later + n3, u"page\t1\tn3\n" + s3s4 + n1s2},
    };
    Text stored;
    for (const auto& [words, storyboards, pages] : changes) {
        const Outcome changed = Run("L-1 " + words);
        EXPECT_EQ(changed.exitCode, 0) << changed.errors;
        EXPECT_THAT(changed.output, StartsWith(words.starts_with("--add") ? "Added: n" : "Main ("));
        Text kept = Storyboards;
        const Text first = u"storyboard\ts1\ttitle\tINTRO\tWelcome\n";
        if (pages.find(u"s1") == Text::npos) kept.erase(kept.find(first), first.size());
        kept.insert(kept.find(u"map\t"), storyboards);
        stored = kept + pages + u"current\ts2\n";
        EXPECT_EQ(ToUtf8(Stored()), ToUtf8(stored));
    }

    database.Run({LockRow(u"l1", u"юлия", u"m1", 1)});
    ExpectSaid(database.ConnectionString(), {{"map L-1 --move s4 --to up", 1, "юлия is editing"}});
    EXPECT_EQ(Stored(), stored);
    EXPECT_EQ(Run("L-1 --move s4 --to up --force").exitCode, 0);
    EXPECT_NE(Stored(), stored);
}

TEST_F(MapCommandTest, FindsAndRefuses) {
    MakeCourse(database, Storyboards + Pages);
    EXPECT_EQ(Run("l1 --find WELCOME").output, "Welcome  [INTRO]  title  {s1}\nwelcome back  [Q-2]  question  {s3}\n");
    EXPECT_EQ(Run("l1 --find q-2 --exact --json").output, "[{\"sbid\":\"s3\",\"missing\":false,\"title\":\"welcome "
                                                          "back\",\"identifier\":\"Q-2\",\"type\":\"question\"}]\n");
    ExpectSaid(database.ConnectionString(),
               {{"map l1 --find nothing", 1, "No storyboard fits"},
                {"map l1 --move s1 --to up", 1, "cannot move there"},
                {"map l1 --move Main --to down", 1, "No storyboard in a map"},
                {"map l1 --remove INTR", 1, "Did you mean 'INTRO'?"},
                {"map l1 --rename s1 --title \"a\tb\"", 1, "title of a storyboard cannot hold tabs"},
                {"map l1 --add T --sbid Main", 1, "There is a storyboard or a map 'Main' already"},
                {"map G-1", 1, "is not a lesson but a group"},
                {"map L-2", 1, "Nothing is stored in the lesson 'L-2'"},
                {"map L-4", 1, "There is no entry 'L-4'"}});
    EXPECT_EQ(Stored(), Storyboards + Pages);
}

TEST(SampleLessonTest, HoldsWhatItsPropertiesSay) {
    const TempFolder folder;
    const Text file = folder.File(u"a.db");
    ASSERT_EQ(RunOn(file, "sample --lessons 40").exitCode, 0);
    for (const std::string lesson : {"SAF-7", "SAF-8", "SAF-39"}) {
        const std::string map = RunOn(file, "map --json " + lesson).output;
        size_t pages = 0;
        for (size_t at = 0; (at = map.find("\"level\":", at)) != std::string::npos; ++at) ++pages;
        EXPECT_GT(pages, 2u);
        ExpectSaid(file, {{"info " + lesson, 0, "\n" + std::to_string(pages) + " active storyboards\n"}});
    }
    ExpectSaid(file, {{"map SAF-7", 0, "\nin no map\n"}, {"map SAF-7 --json", 0, "\"default\":true"}});
}

} // namespace
} // namespace dax::test
