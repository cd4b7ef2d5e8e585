#include "panels/LessonInfo.h"
#include "panels/LockInfo.h"

#include "base/modGeneric.h"
#include "hierarchy/EditorFixture.h"
#include "support/FakeSurface.h"
#include "support/SentStatements.h"

#include <gtest/gtest.h>

#include <set>

namespace dax {
namespace {

using test::FakeSurface;

class PanelTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::CreateTables(database);
        const auto properties = [](int storyboards) {
            return u"StoryboardCount=" + ToText(storyboards) +
                   u"\nClassification=public\nModifiedDate=1 March\nModifiedBy=ann\n";
        };
        database.Run(
            {test::RowStatement(u"g1", u"Animals", u"", 1, 1, ltGroup, properties(0)),
             test::RowStatement(u"l1", u"Birds", u"g1", 2, 1, ltLesson, properties(1)),
             test::RowStatement(u"l2", u"", u"g1", 2, 2, ltLesson, properties(1)),
             test::RowStatement(u"l3", u"Odd", u"g1", 2, 3, ltLesson, u"StoryboardCount=many\nClassification=public"),
             test::RowStatement(u"l4", u"Bare", u"g1", 2, 4, ltLesson, u"Classification=public"),
             test::RowStatement(u"g2", u"Empty", u"", 1, 2, ltUnknown),
             u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID = 'l2'"});
        editor->SetConnectionString(database.ConnectionString());
        ASSERT_TRUE(editor->LoadDatabase());
    }

    // The lines with bars between them, bold ones with a star before.
    static std::string Join(const FakeSurface& surface) {
        std::string joined;
        for (const std::string& line : surface.Lines()) joined += (joined.empty() ? "" : "|") + line;
        return joined;
    }
    template <typename Info>
    std::string LinesOf(const Info& info) {
        FakeSurface surface(1000);
        for (int i = 0; i < 2; ++i) info.Paint(surface); // what was drawn before is cleared
        EXPECT_TRUE(!surface.isBold && surface.size == 8) << "the next one to paint begins as this one did";
        for (const auto& line : surface.drawn) EXPECT_EQ(line.place.left, 0);
        return Join(surface);
    }
    // What the panel shows of an entry.
    template <typename Info>
    std::string LinesOf(Info& info, const Text& lessonID) {
        editor->SetCurrentLessonID(lessonID);
        info.UpdateFrom(editor.get());
        return LinesOf(info);
    }
    static std::string Shown(const DateTime& date) { return ToUtf8(modGeneric::VariantToString(date, u"")); }

    test::TestDatabase database{Engine::SQLite};
    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
};

TEST_F(PanelTest, LessonInfoShowsEachKindAtTheLevelThatFits) {
    editor->SetDatabaseTitle(u"Course");
    editor->AddLesson(u"new", u"New", u"n", ltLesson); // without properties yet
    const struct {
        Text lessonID;
        int level; // 1 where all fits, 2 and 3 where the previous level needs one pixel more
        int gaps;  // in all, in pixels
        std::string lines;
    } cases[] = {
        {u"l1", 1, 9,
         "Birds|*lesson|identifier: id l1|1 active storyboard|modified 1 March|by ann|exported |by (unknown)|*public"},
        {u"l1", 2, 2, "Birds|*lesson|identifier: id l1|1 active storyboard|modified 1 March|*public"},
        {u"l1", 3, 2, "Birds|*lesson|modified 1 March|*public"},
        {u"l2", 2, 2, "(untitled)|*lesson|identifier: (no identifier)|1 active storyboard|modified 1 March|*public"},
        {u"new", 1, 9,
         "New|*lesson|identifier: n|no active storyboards|modified |by (unknown)|exported |by (unknown)|*"},
        {u"l3", 2, 2, "Odd|*lesson|identifier: id l3|no active storyboards|modified |*public"},
        {u"l4", 2, 2, "Bare|*lesson|identifier: id l4|no active storyboards|modified |*public"},
        {u"g1", 1, 2, "Animals|*group|identifier: id g1|contains 1 group|4 lessons|2  storyboards|*public"},
        {u"g1", 2, 2, "Animals|*group|identifier: id g1|contains 1 group|4 lessons|*public"},
        {u"g1", 3, 0, "Animals|*group|*public"},
        {u"g2", 1, 2, "Empty|*type 2|identifier: id g2|contains 1 group|no lessons|no  storyboards|*"},
        {u"", 1, 2, "Course|*content database|contains 2 groups|5 lessons|2  storyboards|*public"},
    };
    LessonInfo info;
    FakeSurface tall(1000);
    for (auto [lessonID, level, gaps, lines] : cases) {
        LinesOf(info, lessonID);
        const int before = MeasurePanel(tall, info.Layout(std::max(level - 1, 1)));
        FakeSurface surface(level == 1 ? before : before - 1);
        info.Paint(surface);
        EXPECT_EQ(Join(surface), lines);
        for (const auto& line : surface.drawn) {
            EXPECT_EQ(line.size, &line == &surface.drawn[0] ? 14 : 8);
            EXPECT_EQ(line.flags, DrawTextFlags::Right | DrawTextFlags::EndEllipsis | DrawTextFlags::NoPrefix);
        }
        EXPECT_EQ(surface.drawn.back().place.top, 28 + static_cast<int>(surface.drawn.size() - 2) * 16 + gaps);
        EXPECT_EQ(MeasurePanel(tall, info.Layout(level)), surface.drawn.back().place.top + 16) << "as it is painted";
        const size_t identifier = lines.find("|identifier: ");
        if (level > 1 || identifier == std::string::npos) continue;
        info.SetShowIdentifier(false);
        EXPECT_EQ(LinesOf(info), lines.erase(identifier, lines.find('|', identifier + 1) - identifier));
        info.SetShowIdentifier(true);
    }
    EXPECT_EQ(info.Layout(2).size(), info.Layout(1).size()) << "a database keeps its number of storyboards";
    EXPECT_TRUE(info.ShowIdentifier());
    int changes = 0;
    info.Changed = [&] { ++changes; };
    info.SetShowIdentifier(false);
    info.UpdateFrom(nullptr);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(LinesOf(info), "");
}

TEST_F(PanelTest, LockInfoCountsAndNames) {
    const std::string since = "|since " + Shown({2026, 3, 1, 11, 0, 0});
    const struct {
        std::vector<std::pair<Text, int>> locks; // on l1
        int count;
        std::string lesson, group = lesson;
    } cases[] = {
        {{}, 0, "no locks"},
        {{{u"'ann'", 5}, {u"'bob'", -2}}, 1, "no locks"},
        {{{u"'ann'", 1}}, 1, "*: editing lesson|*ann" + since, "*: editing lesson|*(1 user)" + since},
        {{{u"NULL", 1}}, 1, "*: editing lesson|*(unknown)" + since, "*: editing lesson|*(1 user)" + since},
        {{{u"'eve'", 2}, {u"'ann'", 1}, {u"'bob'", 1}}, 3, "*: editing lesson|*(2 users)|: reading lesson|(1 user)"},
        {{{u"'ann'", 3}, {u"'bob'", 4}, {u"'eve'", 4}}, 3, "*: editing guide|*ann|: reading guide|(2 users)"},
        {{{u"'ann'", 3}, {u"'bob'", 3}}, 2, "*: editing guide|*(2 users)" + since},
        {{{u"'ann'", 4}}, 1, ": reading guide|(1 user)"},
    };
    LockInfo info;
    int changes = 0;
    info.Changed = [&] { ++changes; };
    for (const auto& [locks, count, lesson, group] : cases) {
        database.Run({u"DELETE FROM velmoraUserLocks"});
        for (const auto& [user, type] : locks) database.Run({test::LockStatement(u"l1", user, type)});
        for (const auto& [id, expected] : {std::pair{u"l1", lesson}, std::pair{u"g1", group}}) {
            EXPECT_EQ(LinesOf(info, id), expected);
            EXPECT_EQ(std::exchange(changes, 0), 1);
            EXPECT_EQ(info.LockCount(), count);
        }
    }
    EXPECT_EQ(LinesOf(info, u"l2"), "no locks") << "those of another lesson";
    LinesOf(info, u"l1");
    info.UpdateFrom(nullptr);
    EXPECT_EQ(info.LockCount(), 0);
    EXPECT_EQ(changes, 3);
}

TEST_F(PanelTest, LockInfoShowsItsSuffixAndReportsFailures) {
    database.Run({test::LockStatement(u"l1", u"'ann'", 1), test::LockStatement(u"l1", u"'bob'", 3)});
    LockInfo info;
    std::set<int32_t> numbers;
    info.Error.AddPermanent([&](int32_t number, const Text&) { numbers.insert(number); });
    {
        const test::SentStatements sent;
        LinesOf(info, u"l1");
        EXPECT_EQ(sent.Texts(), std::vector<std::string>{"SELECT lessonID, username, lockDate, lockType FROM "
                                                         "velmoraUserLocks WHERE lockType <> -2"});
    }
    FakeSurface surface(200, 300), narrow(200, 10);
    info.Paint(surface);
    ASSERT_EQ(surface.drawn.size(), 6u);
    EXPECT_EQ(surface.drawn[0].place.right, 300);
    EXPECT_EQ(surface.drawn[1].place.right, 300 - 10 * static_cast<int>(std::string(": editing lesson").size()));
    EXPECT_EQ(surface.drawn[3].place.top, 2 * 16 + 16 / 2 + 1) << "half a line and a pixel between lesson and guide";
    info.Paint(narrow);
    EXPECT_EQ(narrow.drawn[1].place.right, 0);

    info.UpdateFrom(nullptr);
    EXPECT_FALSE(info.Summary().isAvailable);
    EXPECT_TRUE(numbers.empty());
    database.Run({u"DROP TABLE velmoraUserLocks"});
    EXPECT_EQ(LinesOf(info, u"l1"), "lock data not available");
    EXPECT_EQ(numbers.size(), 1u);
    editor->SetConnectionString(u"");
    EXPECT_EQ(LinesOf(info, u"l1"), "lock data not available") << "without a connection the display stays";
}

TEST_F(PanelTest, ASampleIsShownUntilItIsCleared) {
    const DateTime now{2026, 3, 1};
    database.Run({test::LockStatement(u"l1", u"'ann'", 2)});
    LessonInfo info;
    LockInfo locks;
    int changes = 0;
    info.Changed = locks.Changed = [&] { ++changes; };
    info.ShowDesignSample(now);
    locks.ShowDesignSample(now);
    EXPECT_EQ(LinesOf(info, u"l1"), "design-time|*lesson|identifier: (design time)|12 active storyboards|modified " +
                                        Shown(now) + "|by tquenby|exported " + Shown(now) + "|by tquenby|*");
    EXPECT_EQ(LinesOf(locks, u"l1"), "*: editing lesson|*designtime|since " + Shown(now) +
                                         "|*: editing guide|*tquenby|: reading guide|(4 users)");
    EXPECT_EQ(locks.LockCount(), 0);
    info.Clear();
    locks.Clear();
    EXPECT_EQ(changes, 4);
    EXPECT_EQ(LinesOf(info) + LinesOf(locks), "no locks");
    EXPECT_TRUE(LinesOf(info, u"l1").starts_with("Birds|"));
    EXPECT_EQ(LinesOf(locks, u"l1"), ": reading lesson|(1 user)");
}

} // namespace
} // namespace dax
