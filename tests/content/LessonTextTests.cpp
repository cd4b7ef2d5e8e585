#include "content/LessonText.h"

#include "support/TestDatabases.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

const TextView sample = u"lesson\t1\n"
                        u"storyboard\ts1\ttext\tINTRO\tWelcome\\tback\\\\ \\n\n"
                        u"storyboard\ts2\t\t\t\n"
                        u"map\tMain\tdefault\n"
                        u"page\t1\ts1\n"
                        u"page\t2\ts2\n"
                        u"page\t1\tmissing\n"
                        u"map\t\n"
                        u"current\ts2\n";

Text Again(TextView text) { return LessonText::Save(*LessonText::Load(text)); }

TEST(LessonText, ReadsWhatItWrites) {
    const auto lesson = LessonText::Load(sample);
    const auto page = lesson->Storyboards()->Item(u"s1");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->StoryboardType(), u"text");
    EXPECT_EQ(page->Identifier(), u"INTRO");
    EXPECT_EQ(page->Title(), u"Welcome\tback\\ \n");
    ASSERT_EQ(lesson->Maps()->Count(), 2);
    EXPECT_EQ(lesson->Maps()->DefaultMap(), lesson->Maps()->Item(Text(u"Main")));
    EXPECT_EQ(lesson->CurrentSBID(), u"s2");
    EXPECT_EQ(LessonText::Save(*lesson), sample);

    Text windows;
    for (const char16_t unit : sample) windows += unit == u'\n' ? Text(u"\r\n\r\n") : Text(1, unit);
    EXPECT_EQ(Again(windows), sample) << "line ends of any system, blank lines";
    EXPECT_EQ(Again(sample.substr(0, sample.size() - 1)), sample) << "no last line end";
    EXPECT_EQ(Again(u"lesson\t1"), u"lesson\t1\n");
}

TEST(LessonText, RefusesWithTheLine) {
    const struct {
        Text text;
        const char* place;
    } cases[] = {
        {u"", "Line 0"},
        {u"lesson\t2\n", "Line 1"},
        {u"lesson\t1\n\n?\n", "Line 3"},
        {u"lesson\t1\nstoryboard\ta\tb\tc\n", "Line 2"},
        {u"lesson\t1\nstoryboard\ta\tb\tc\td\te\n", "Line 2"},
        {u"lesson\t1\nstoryboard\ta\t\t\t\nstoryboard\ta\t\t\t\n", "Line 3"},
        {u"lesson\t1\nstoryboard\ta\t\t\t\\x\n", "Line 2"},
        {u"lesson\t1\npage\t1\ta\n", "Line 2"},
        {u"lesson\t1\nmap\tm\tmain\n", "Line 2"},
        {u"lesson\t1\nmap\tm\tdefault\nmap\tn\tdefault\n", "Line 3"},
        {u"lesson\t1\nmap\tm\npage\t2\ta\n\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\ta\npage\t1\ta\nmap\tn\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\ta\npage\t2\tb\npage\t1\tc\npage\t3\td\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\t\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t0\ta\n", "Line 3"},
        {u"lesson\t1\nmap\tm\npage\t99999999999999999999\ta\n", "Line 3"},
        {u"lesson\t1\nmap\tm\\", "Line 2"},
    };
    for (const auto& [text, place] : cases) {
        const auto failure = test::FailureOf([&text] { LessonText::Load(text); });
        EXPECT_TRUE(ToUtf8(failure.Description()).starts_with(std::string(place) + ":")) << failure.what();
    }
}

// Nothing where a list should be, null in a list, and no more asked for than the list counts.
TEST(LessonText, SavesAHostsLesson) {
    struct HostsMaps : ContentMaps {
        std::shared_ptr<StoryboardMap> Item(int32_t index) const override {
            if (index >= count) throw Error(9, u"There is no such element.");
            return ContentMaps::Item(index);
        }
        int32_t Count() const override { return count; }
        int32_t count = 1;
    };
    struct HostsPages : ContentStoryboards {
        std::vector<std::shared_ptr<Storyboard>> All() const override {
            return {nullptr, std::make_shared<ContentStoryboard>(u"s")};
        }
    };
    struct HostsLesson : ContentLesson {
        std::shared_ptr<StoryboardMaps> Maps() const override { return maps; }
        std::shared_ptr<dax::Storyboards> Storyboards() const override { return pages; }
        std::shared_ptr<HostsMaps> maps;
        std::shared_ptr<HostsPages> pages;
    } lesson;
    EXPECT_EQ(LessonText::Save(lesson), u"lesson\t1\n");
    lesson.pages = std::make_shared<HostsPages>();
    lesson.maps = std::make_shared<HostsMaps>();
    lesson.maps->Add(std::make_shared<ContentMap>(u"a\rb"));
    const Text saved = u"lesson\t1\nstoryboard\ts\t\t\t\nmap\ta\\rb\n";
    EXPECT_EQ(LessonText::Save(lesson), saved);
    EXPECT_EQ(Again(saved), saved);
    lesson.maps->count = 3;
    EXPECT_EQ(LessonText::Save(lesson), saved);
}

} // namespace
} // namespace dax
