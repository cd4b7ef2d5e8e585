// Large lessons in the lesson map's window: whatever is done, the window shows it in one go.
#include "windows/TreeControlHost.h"

#include <commctrl.h>

#include <functional>

namespace dax::test {

namespace {

constexpr UINT_PTR CounterSubclass = 9;

enum class Form { TenMaps, Deep, Wide };

std::shared_ptr<ContentLesson> LargeLesson(Form form, int count) {
    const auto lesson = std::make_shared<ContentLesson>();
    const int maps = form == Form::TenMaps ? 10 : 2; // the second of two is empty
    const int perMap = form == Form::TenMaps ? count / maps : count;
    for (int m = 0, page = 0; m < maps; ++m) {
        const auto map = std::make_shared<ContentMap>(u"Map " + ToText(m));
        std::vector<LayoutEntry> layout;
        for (int n = 0; n < perMap && page < count; ++n, ++page) {
            const Text sbid = u"s" + ToText(page);
            lesson->Storyboards()->Add(
                std::make_shared<ContentStoryboard>(sbid, u"Page " + ToText(page), u"", u"text"));
            layout.push_back({sbid, form == Form::Deep ? n + 1 : form == Form::Wide ? 1 : 1 + n % 4});
        }
        map->SetLayout(std::move(layout));
        lesson->Maps()->Add(map);
    }
    return lesson;
}

LRESULT CALLBACK CountPaints(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR paints) {
    if (message == WM_PAINT) ++*reinterpret_cast<int*>(paints);
    return DefSubclassProc(window, message, wParam, lParam);
}

// Does it to a lesson of that size in a window: no repaint before the end.
class LargeHost {
public:
    LargeHost(Form form, int count) : lesson(LargeLesson(form, count)) {
        SetWindowSubclass(host.TreeHandle(), CountPaints, CounterSubclass, reinterpret_cast<DWORD_PTR>(&paints));
    }
    void Step(const char* what, const std::function<void(LessonMapEditor&)>& act) {
        SCOPED_TRACE(what);
        paints = 0;
        act(host.Editor());
        EXPECT_EQ(paints, 0) << "in the midst of it";
        ProcessPendingMessages();
        EXPECT_GE(paints, 1);
        EXPECT_EQ(SendMessageW(host.TreeHandle(), TVM_GETCOUNT, 0, 0), host.Model().Count());
    }

    int paints = 0;
    LessonMapHost host{true};
    std::shared_ptr<ContentLesson> lesson;
};

} // namespace

TEST(LessonMapSize, IsShownInOneRepaintWhateverTheShape) {
    for (const Form form : {Form::TenMaps, Form::Deep, Form::Wide}) {
        SCOPED_TRACE(static_cast<int>(form));
        constexpr int count = 20'000;
        LargeHost large(form, count);
        LessonMapHost& host = large.host;
        large.Step("build", [&](LessonMapEditor& editor) { editor.SetLesson(large.lesson); });
        EXPECT_EQ(host.Model().Count(), count + large.lesson->Maps()->Count());
        EXPECT_EQ(host.Editor().FindNextSBID(u"page 19999", ftTitle, true, true), u"s19999");
        host.Editor().SetCurrentSBID(u"s0");
        ProcessPendingMessages();
        // The moved branch is all of the deep tree, one page of the wide one.
        large.Step("move", [](LessonMapEditor& editor) { editor.MoveCurrent(smtNextMap); });
        EXPECT_EQ(host.At(u"s0").Parent()->Key(), u"Map 1");
        EXPECT_EQ(std::static_pointer_cast<ContentMap>(large.lesson->Maps()->Item(1))->Layout()[0].sbid, u"s0");
        large.Step("refresh", [](LessonMapEditor& editor) { editor.Refresh(); });
        EXPECT_EQ(host.Editor().CurrentSBID(), u"s0");
        EXPECT_EQ(NextItem(host.TreeHandle(), TVGN_CARET), ItemOf(&host.At(u"s0")));
        large.Step("clear", [](LessonMapEditor& editor) { editor.SetLesson(nullptr); });
    }
}

// Fewer pages: some systems take a step outside of the process for each changed box.
TEST(LessonMapSize, AllBoxesAreTickedInOneRepaint) {
    LargeHost large(Form::TenMaps, 400);
    large.host.Editor().SetLesson(large.lesson);
    ProcessPendingMessages();
    large.Step("check", [](LessonMapEditor& editor) { editor.CheckAllStoryboards(); });
    EXPECT_MIRROR(large.host.TreeHandle(), large.host.Model(), true);
    EXPECT_EQ(large.host.Editor().CheckedStoryboardCount(), 400);
    large.Step("uncheck", [](LessonMapEditor& editor) { editor.UncheckAllStoryboards(); });
    EXPECT_MIRROR(large.host.TreeHandle(), large.host.Model(), true);
}

} // namespace dax::test
