#include "panels/LessonInfo.h"
#include "panels/LockInfo.h"

#include "base/modGeneric.h"
#include "hierarchy/EditorFixture.h"
#include "support/FakeSurface.h"

#include <gmock/gmock.h>

#include <set>

namespace dax {
namespace {

using test::FakeSurface;
using ::testing::ElementsAre;

class PanelTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::CreateTables(database);
        const auto properties = [](int storyboards) {
            return u"StoryboardCount=" + ToText(storyboards) +
                   u"\nClassification=public\nModifiedDate=1 March\n"
                   u"ModifiedBy=ann\n";
        };
        database.Run({test::RowStatement(u"g1", u"Animals", u"", 1, 1, ltGroup, properties(0)),
                      test::RowStatement(u"l1", u"Birds", u"g1", 2, 1, ltLesson, properties(1)),
                      test::RowStatement(u"l2", u"", u"g1", 2, 2, ltLesson, properties(1)),
                      test::RowStatement(u"g2", u"Empty", u"", 1, 2, ltUnknown, u"StoryboardCount=many"),
                      u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID = 'l2'"});
        editor->SetConnectionString(database.ConnectionString());
        ASSERT_TRUE(editor->LoadDatabase());
    }

    template <typename Info>
    std::vector<std::string> LinesOf(const Info& info) {
        FakeSurface surface(1000);
        info.Paint(surface);
        EXPECT_TRUE(!surface.isBold && surface.size == 8) << "the next one to paint begins as this one did";
        for (const auto& line : surface.drawn) EXPECT_EQ(line.place.left, 0);
        return surface.Lines();
    }
    // What the panel shows of an entry.
    template <typename Info>
    std::vector<std::string> LinesOf(Info& info, const Text& lessonID) {
        editor->SetCurrentLessonID(lessonID);
        info.UpdateFrom(editor.get());
        return LinesOf(info);
    }

    test::TestDatabase database{Engine::SQLite};
    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
};

TEST_F(PanelTest, LessonInfoTellsEachKindAtTheLevelThatFits) {
    LessonInfo info;
    int changes = 0;
    info.Changed = [&] { ++changes; };
    editor->SetCurrentLessonID(u"l1");
    info.UpdateFrom(editor.get());
    FakeSurface roomy(1000);
    info.Paint(roomy);
    EXPECT_THAT(roomy.Lines(), ElementsAre("Birds", "*lesson", "identifier: id l1", "1 active storyboard",
                                           "modified 1 March", "by ann", "exported ", "by (unknown)", "*public"));
    for (const auto& line : roomy.drawn) {
        EXPECT_EQ(line.size, line.text == "Birds" ? 14 : 8);
        EXPECT_EQ(line.flags, DrawTextFlags::Right | DrawTextFlags::EndEllipsis | DrawTextFlags::NoPrefix);
    }
    const int whole = MeasurePanel(roomy, info.Layout(1)), less = MeasurePanel(roomy, info.Layout(2));
    EXPECT_EQ(whole, roomy.drawn.back().place.top + 16) << "measured as it is painted";
    FakeSurface exact(whole), lower(whole - 1), low(less - 1), lowest(1);
    info.Paint(exact);
    EXPECT_EQ(exact.Lines(), roomy.Lines());
    info.Paint(lower);
    EXPECT_THAT(lower.Lines(), ElementsAre("Birds", "*lesson", "identifier: id l1", "1 active storyboard",
                                           "modified 1 March", "*public"));
    EXPECT_EQ(less, lower.drawn.back().place.top + 16);
    for (FakeSurface* surface : {&low, &lowest}) {
        info.Paint(*surface);
        EXPECT_THAT(surface->Lines(), ElementsAre("Birds", "*lesson", "modified 1 March", "*public"));
    }
    EXPECT_TRUE(info.ShowIdentifier());
    changes = 0;
    info.SetShowIdentifier(false);
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(LinesOf(info, u"l1"), ::testing::Not(::testing::Contains("identifier: id l1")));
    EXPECT_THAT(LinesOf(info, u"g1"), ::testing::Not(::testing::Contains("identifier: id g1")));
    info.SetShowIdentifier(true);

    LinesOf(info, u"l2");
    EXPECT_EQ(info.Texts().title, u"(untitled)");
    EXPECT_EQ(info.Texts().identifierLine, u"identifier: (no identifier)");
    EXPECT_THAT(LinesOf(info, u"g1"), ElementsAre("Animals", "*group", "identifier: id g1", "contains 1 group",
                                                  "2 lessons", "2  storyboards", "*public"));
    FakeSurface tight(MeasurePanel(roomy, info.Layout(1)) - 1), tighter(MeasurePanel(roomy, info.Layout(2)) - 1);
    info.Paint(tight);
    EXPECT_THAT(tight.Lines(),
                ElementsAre("Animals", "*group", "identifier: id g1", "contains 1 group", "2 lessons", "*public"));
    info.Paint(tighter);
    EXPECT_THAT(tighter.Lines(), ElementsAre("Animals", "*group", "*public"));
    EXPECT_THAT(LinesOf(info, u"g2"), ElementsAre("Empty", "*type 2", "identifier: id g2", "contains 1 group",
                                                  "no lessons", "no  storyboards", "*"));
    editor->SetDatabaseTitle(u"Course");
    EXPECT_THAT(LinesOf(info, u""), ElementsAre("Course", "*content database", "contains 2 groups", "2 lessons",
                                                "2  storyboards", "*public"));
    EXPECT_EQ(info.Layout(2).size(), info.Layout(1).size()) << "a database keeps its number of storyboards";
    editor->AddLesson(u"new", u"New", u"n", ltLesson); // without properties yet
    EXPECT_THAT(LinesOf(info, u"new"), ElementsAre("New", "*lesson", "identifier: n", "no active storyboards",
                                                   "modified ", "by (unknown)", "exported ", "by (unknown)", "*"));
    changes = 0;
    info.UpdateFrom(nullptr);
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(LinesOf(info), ElementsAre());
}

TEST_F(PanelTest, LockInfoCountsAndNames) {
    const struct {
        std::vector<std::pair<Text, int>> locks; // on l1
        std::vector<std::string> lesson, group;
    } cases[] = {
        {{}, {"no locks"}, {"no locks"}},
        {{{u"'ann'", 5}, {u"'bob'", -2}}, {"no locks"}, {"no locks"}},
        {{{u"'ann'", 1}},
         {"*: editing lesson", "*ann", "since 2026-03-01"},
         {"*: editing lesson", "*(1 user)", "since 2026-03-01"}},
        {{{u"NULL", 1}},
         {"*: editing lesson", "*(unknown)", "since 2026-03-01"},
         {"*: editing lesson", "*(1 user)", "since 2026-03-01"}},
        {{{u"'eve'", 2}, {u"'ann'", 1}, {u"'bob'", 1}},
         {"*: editing lesson", "*(2 users)", ": reading lesson", "(1 user)"},
         {"*: editing lesson", "*(2 users)", ": reading lesson", "(1 user)"}},
        {{{u"'ann'", 3}, {u"'bob'", 4}, {u"'eve'", 4}},
         {"*: editing guide", "*ann", ": reading guide", "(2 users)"},
         {"*: editing guide", "*ann", ": reading guide", "(2 users)"}},
        {{{u"'ann'", 3}, {u"'bob'", 3}},
         {"*: editing guide", "*(2 users)", "since 2026-03-01"},
         {"*: editing guide", "*(2 users)", "since 2026-03-01"}},
        {{{u"'ann'", 4}}, {": reading guide", "(1 user)"}, {": reading guide", "(1 user)"}},
    };
    LockInfo info;
    int changes = 0;
    info.Changed = [&] { ++changes; };
    for (const auto& [locks, lesson, group] : cases) {
        database.Run({u"DELETE FROM velmoraUserLocks"});
        for (const auto& [user, type] : locks) database.Run({test::LockStatement(u"l1", user, type)});
        for (const auto& [id, expected] : {std::pair{u"l1", lesson}, std::pair{u"g1", group}}) {
            std::vector<std::string> lines = LinesOf(info, id);
            for (std::string& line : lines)
                if (line.starts_with("since ")) line = "since 2026-03-01"; // in the form of the locale
            EXPECT_EQ(lines, expected);
            EXPECT_EQ(std::exchange(changes, 0), 1);
            EXPECT_EQ(info.LockCount(), static_cast<int>(locks.size()) - (locks.size() == 2 && locks[1].second == -2));
        }
    }
    LinesOf(info, u"l2");
    EXPECT_EQ(info.LockCount(), 0) << "the locks of another lesson";
    LinesOf(info, u"l1");
    info.UpdateFrom(nullptr);
    EXPECT_EQ(info.LockCount(), 0);
    EXPECT_EQ(changes, 3);
}

TEST_F(PanelTest, LockInfoStandsBesideItsSuffixAndSaysWhatFails) {
    LockSummary summary;
    summary.editLessonCount = 1;
    summary.editLessonText = u"ann";
    summary.editGuideCount = 1;
    summary.editGuideText = u"bob";
    FakeSurface surface(200, 300), narrow(200, 10);
    PaintPanel(surface, summary.Layout());
    ASSERT_EQ(surface.drawn.size(), 4u);
    EXPECT_EQ(surface.drawn[0].place.right, 300);
    EXPECT_EQ(surface.drawn[1].place.right, 300 - 10 * static_cast<int>(std::string(": editing lesson").size()));
    EXPECT_EQ(surface.drawn[2].place.top, 16 + 16 / 2 + 1) << "half a line and a pixel between lesson and guide";
    PaintPanel(narrow, summary.Layout());
    EXPECT_EQ(narrow.drawn[1].place.right, 0);

    LockInfo info;
    std::set<int32_t> numbers;
    info.Error.Add([&](int32_t number, const Text&) { numbers.insert(number); });
    info.UpdateFrom(nullptr);
    EXPECT_FALSE(info.Summary().isAvailable);
    EXPECT_TRUE(numbers.empty());
    database.Run({u"DROP TABLE velmoraUserLocks"});
    EXPECT_THAT(LinesOf(info, u"l1"), ElementsAre("lock data not available"));
    EXPECT_EQ(numbers.size(), 1u);
    editor->SetConnectionString(u"");
    info.UpdateFrom(editor.get());
    EXPECT_THAT(LinesOf(info), ElementsAre("lock data not available")) << "without a connection the display stays";
}

TEST_F(PanelTest, ASampleIsShownUntilItIsCleared) {
    const DateTime now{2026, 3, 1};
    const std::string date = ToUtf8(modGeneric::VariantToString(now, u""));
    database.Run({test::LockStatement(u"l1", u"'ann'", 2)});
    LessonInfo info;
    LockInfo locks;
    LinesOf(locks, u"l1");
    info.ShowDesignSample(now);
    locks.ShowDesignSample(now);
    EXPECT_THAT(LinesOf(info, u"l1"),
                ElementsAre("design-time", "*lesson", "identifier: (design time)", "12 active storyboards",
                            "modified " + date, "by tquenby", "exported " + date, "by tquenby", "*"));
    EXPECT_THAT(LinesOf(locks, u"l1"), ElementsAre("*: editing lesson", "*designtime", "since " + date,
                                                   "*: editing guide", "*tquenby", ": reading guide", "(4 users)"));
    EXPECT_EQ(locks.LockCount(), 0);
    int changes = 0;
    info.Changed = locks.Changed = [&] { ++changes; };
    info.Clear();
    locks.Clear();
    EXPECT_EQ(changes, 2);
    EXPECT_THAT(LinesOf(info), ElementsAre());
    EXPECT_THAT(LinesOf(locks), ElementsAre("no locks"));
    EXPECT_EQ(LinesOf(info, u"l1").front(), "Birds");
    EXPECT_THAT(LinesOf(locks, u"l1"), ElementsAre(": reading lesson", "(1 user)"));
    changes = 0;
    info.ShowDesignSample(now);
    locks.ShowDesignSample(now);
    EXPECT_EQ(changes, 2);
}

} // namespace
} // namespace dax
