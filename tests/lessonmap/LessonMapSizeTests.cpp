#include "lessonmap/EditorFixture.h"

namespace dax {
namespace {

class LessonMapSize : public test::EditorFixture {};

// Whatever the size and the shape, every operation is over at once.
TEST_F(LessonMapSize, DeepWideAndManyMaps) {
    constexpr int count = 20'000;
    for (const int shape : {0, 1, 2}) { // wide, deep, ten maps
        lesson = std::make_shared<ContentLesson>();
        const auto page = [](int i) { return u"s" + ToText(i); };
        for (int i = 0; i < count; ++i) {
            lesson->Storyboards()->Add(std::make_shared<ContentStoryboard>(page(i), u"Title " + ToText(i)));
        }
        const int maps = shape == 2 ? 10 : 2;
        std::vector<std::shared_ptr<ContentMap>> map;
        for (int m = 0, i = 0; m < maps; ++m) {
            map.push_back(std::make_shared<ContentMap>(u"M" + ToText(m)));
            std::vector<LayoutEntry> layout;
            const int until = shape == 2 ? (m + 1) * count / maps : count;
            for (int depth = 1; i < until; ++i, ++depth)
                layout.push_back({page(i), shape ? 1 + (depth - 1) % count : 1});
            map.back()->SetLayout(std::move(layout));
            lesson->Maps()->Add(map.back());
        }
        const auto before = map[0]->Layout();
        editor->SetLesson(nullptr);
        editor->SetLesson(lesson);
        ASSERT_EQ(tree->Count(), count + maps);
        EXPECT_EQ(editor->FindNextSBID(u"title 19999", ftTitle, true, true), u"s19999");
        editor->SetCurrentSBID(u"s19999");
        EXPECT_EQ(editor->FindNextSBID(u"TITLE 19999", ftTitle, true, true), u"");
        editor->CheckAllStoryboards();
        EXPECT_EQ(editor->CheckedStoryboardCount(), count);
        EXPECT_EQ(editor->CheckedStoryboards().size(), static_cast<size_t>(count));
        const auto part = std::static_pointer_cast<ContentMap>(editor->GetCheckedLesson()->Maps()->Item(0));
        EXPECT_TRUE(part->Layout() == before);
        editor->CollapseAll();
        editor->ExpandAll();
        editor->SetCurrentSBID(u"s0");
        editor->MoveCurrent(smtNextMap);
        EXPECT_EQ(map[1]->Layout()[0].sbid, u"s0");
        editor->SetCurrentSBID(u"s0");
        editor->MoveCurrent(smtPreviousMap);
        EXPECT_EQ(map[0]->Layout().size(), before.size());
        editor->Refresh();
        EXPECT_EQ(tree->Count(), count + maps);
        editor->RemoveStoryboard(editor->CurrentStoryboard(), false);
        EXPECT_EQ(tree->Count(), count + maps - 1);
        EXPECT_TRUE(editor->OrphanedStoryboards().empty());
        editor->RemoveStoryboard(lesson->Storyboards()->Item(tree->First()->FirstChild()->Key()), true);
        EXPECT_EQ(lesson->Storyboards()->Count(), tree->Count() - maps);
        EXPECT_EQ(map[0]->Layout().size(), static_cast<size_t>(modTVW::CountDescendants(tree->First())));
    }
    // As many maps of one name as pages.
    lesson = std::make_shared<ContentLesson>();
    for (int i = 0; i < count; ++i) lesson->Maps()->Add(std::make_shared<ContentMap>(u"M"));
    editor->SetLesson(lesson);
    EXPECT_EQ(tree->Last()->Key(), u"M_19999");
}

} // namespace
} // namespace dax
