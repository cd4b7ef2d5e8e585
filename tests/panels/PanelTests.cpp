#include "panels/LessonInfo.h"
#include "panels/LockInfo.h"

#include "hierarchy/EditorFixture.h"

#include <gmock/gmock.h>

#include <set>

namespace dax {
namespace {

using ::testing::ElementsAre;

// Ten pixels a character at 8 points, more at larger sizes; remembers what was drawn.
class RecordingSurface : public Surface {
public:
    explicit RecordingSurface(int newHeight, int newWidth = 400) : width(newWidth), height(newHeight) {}
    int Width() const override { return width; }
    int Height() const override { return height; }
    void Clear() override { drawn.clear(); }
    void SetBold(bool bold) override { isBold = bold; }
    void SetFontSize(double points) override { size = points == 0 ? 8 : points; }
    int DrawText(const Text& text, Rect& rect, uint32_t flags) override {
        const int lineHeight = static_cast<int>(size * 2);
        if (flags & DrawTextFlags::CalcRect) return lineHeight;
        drawn.push_back({ToUtf8(text), rect, isBold, size, flags});
        return lineHeight;
    }
    int TextWidth(const Text& text) override { return static_cast<int>(text.size()) * 10; }

    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const auto& line : drawn) lines.push_back(line.text);
        return lines;
    }

    struct Drawn {
        std::string text;
        Rect place;
        bool isBold;
        double size;
        uint32_t flags;
    };
    std::vector<Drawn> drawn;

private:
    int width, height;
    bool isBold = false;
    double size = 8;
};

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
                      u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID = 'l2'"});
        editor->SetConnectionString(database.ConnectionString());
        ASSERT_TRUE(editor->LoadDatabase());
    }

    void Lock(const Text& lessonID, const Text& user, int type) {
        database.Run({u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate,"
                      u" lockType) VALUES ('" +
                      lessonID + u"', '" + user + u"', '', '', '', '2026-03-01 10:00:00', " + ToText(type) + u")"});
    }

    test::TestDatabase database{Engine::SQLite};
    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
};

TEST_F(PanelTest, LessonInfoTellsEachKindAtTheLevelThatFits) {
    LessonInfo info;
    editor->SetCurrentLessonID(u"l1");
    info.UpdateFrom(editor.get());
    RecordingSurface roomy(1000);
    info.Paint(roomy);
    EXPECT_THAT(roomy.Lines(), ElementsAre("Birds", "lesson", "identifier: id l1", "1 active storyboard",
                                           "modified 1 March", "by ann", "exported ", "by (unknown)", "public"));
    for (const auto& line : roomy.drawn) {
        EXPECT_EQ(line.isBold, line.text == "lesson" || line.text == "public") << line.text;
        EXPECT_EQ(line.size, line.text == "Birds" ? 14 : 8);
        EXPECT_EQ(line.flags, DrawTextFlags::Right | DrawTextFlags::EndEllipsis | DrawTextFlags::NoPrefix);
    }
    const int whole = MeasurePanel(roomy, info.Layout(1)), less = MeasurePanel(roomy, info.Layout(2));
    RecordingSurface exact(whole), lower(whole - 1), low(less - 1);
    info.Paint(exact);
    EXPECT_EQ(exact.Lines(), roomy.Lines());
    info.Paint(lower);
    EXPECT_THAT(lower.Lines(), ElementsAre("Birds", "lesson", "identifier: id l1", "1 active storyboard",
                                           "modified 1 March", "public"));
    info.Paint(low);
    EXPECT_THAT(low.Lines(), ElementsAre("Birds", "lesson", "modified 1 March", "public"));
    info.SetShowIdentifier(false);
    info.Paint(roomy);
    EXPECT_THAT(roomy.Lines(), ::testing::Not(::testing::Contains("identifier: id l1")));
    info.SetShowIdentifier(true);

    editor->SetCurrentLessonID(u"l2");
    info.UpdateFrom(editor.get());
    EXPECT_EQ(info.Texts().title, u"(untitled)");
    EXPECT_EQ(info.Texts().identifierLine, u"identifier: (no identifier)");

    editor->SetCurrentLessonID(u"g1");
    info.UpdateFrom(editor.get());
    info.Paint(roomy);
    EXPECT_THAT(roomy.Lines(), ElementsAre("Animals", "group", "identifier: id g1", "contains 1 group", "2 lessons",
                                           "2  storyboards", "public"));
    info.UpdateFrom(nullptr);
    info.Paint(roomy);
    EXPECT_TRUE(roomy.drawn.empty());
}

TEST_F(PanelTest, LockInfoCountsAndNames) {
    const struct {
        std::vector<std::pair<Text, int>> locks; // on l1
        std::vector<std::string> lesson, group;
    } cases[] = {
        {{}, {"no locks"}, {"no locks"}},
        {{{u"ann", 5}, {u"bob", -2}}, {"no locks"}, {"no locks"}},
        {{{u"ann", 1}},
         {": editing lesson", "ann", "since 2026-03-01"},
         {": editing lesson", "(1 user)", "since 2026-03-01"}},
        {{{u"ann", 1}, {u"bob", 1}, {u"eve", 2}},
         {": editing lesson", "(2 users)", ": reading lesson", "(1 user)"},
         {": editing lesson", "(2 users)", ": reading lesson", "(1 user)"}},
        {{{u"ann", 3}, {u"bob", 4}, {u"eve", 4}},
         {": editing guide", "ann", ": reading guide", "(2 users)"},
         {": editing guide", "ann", ": reading guide", "(2 users)"}},
    };
    for (const auto& [locks, lesson, group] : cases) {
        database.Run({u"DELETE FROM velmoraUserLocks"});
        for (const auto& [user, type] : locks) Lock(u"l1", user, type);
        for (const auto& [id, expected] : {std::pair{u"l1", lesson}, std::pair{u"g1", group}}) {
            LockInfo info;
            editor->SetCurrentLessonID(id);
            info.UpdateFrom(editor.get());
            RecordingSurface surface(200);
            info.Paint(surface);
            ASSERT_EQ(surface.drawn.size(), expected.size()) << locks.size();
            for (size_t line = 0; line < expected.size(); ++line) {
                const bool isDate = expected[line].starts_with("since");
                const std::string& drawn = surface.drawn[line].text;
                EXPECT_EQ(isDate ? drawn.substr(0, 6) : drawn, isDate ? "since " : expected[line]);
            }
        }
    }
    LockInfo other;
    editor->SetCurrentLessonID(u"l2");
    other.UpdateFrom(editor.get());
    EXPECT_EQ(other.LockCount(), 0) << "the locks of another lesson";
}

TEST_F(PanelTest, LockInfoStandsBesideItsSuffixAndSaysWhatFails) {
    LockSummary summary;
    summary.editLessonCount = 1;
    summary.editLessonText = u"ann";
    summary.editGuideCount = 1;
    summary.editGuideText = u"bob";
    RecordingSurface surface(200, 300);
    PaintPanel(surface, summary.Layout());
    ASSERT_EQ(surface.drawn.size(), 4u);
    EXPECT_EQ(surface.drawn[0].place.right, 300);
    EXPECT_EQ(surface.drawn[1].place.right, 300 - 10 * static_cast<int>(std::string(": editing lesson").size()));
    EXPECT_EQ(surface.drawn[2].place.top, 16 + 16 / 2 + 1) << "half a line and a pixel between lesson and guide";

    LockInfo info;
    std::set<int32_t> numbers;
    info.Error.Add([&](int32_t number, const Text&) { numbers.insert(number); });
    info.UpdateFrom(nullptr);
    EXPECT_FALSE(info.Summary().isAvailable);
    EXPECT_TRUE(numbers.empty());
    editor->SetCurrentLessonID(u"l1");
    database.Run({u"DROP TABLE velmoraUserLocks"});
    info.UpdateFrom(editor.get());
    EXPECT_EQ(numbers.size(), 1u);
    info.Paint(surface);
    EXPECT_THAT(surface.Lines(), ElementsAre("lock data not available"));
    editor->SetConnectionString(u"");
    info.UpdateFrom(editor.get());
    info.Paint(surface);
    EXPECT_THAT(surface.Lines(), ElementsAre("lock data not available")) << "without a connection the display stays";
}

} // namespace
} // namespace dax
