// A large lesson in the lesson map's window: whatever is done, the window shows it in one repaint, and soon.
#include "windows/TreeControlHost.h"

#include <commctrl.h>

#include <functional>

namespace dax::test {

namespace {

constexpr UINT_PTR CounterSubclass = 9;

LRESULT CALLBACK CountPaints(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR paints) {
    if (message == WM_PAINT) ++*reinterpret_cast<int*>(paints);
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

TEST(LessonMapSize, AllBoxesAreTickedInOneRepaintAndAsFastAsTheTreeIsFilled) {
    LessonMapHost host(true);
    std::string text;
    for (int page = 0; page < 10'000; ++page) {
        if (page % 1000 == 0) text += (page ? " | Map" : "Map") + std::to_string(page / 1000) + ":";
        text += " s" + std::to_string(page);
    }
    const auto lesson = MakeLesson(text);
    int paints = 0;
    SetWindowSubclass(host.TreeHandle(), CountPaints, CounterSubclass, reinterpret_cast<DWORD_PTR>(&paints));
    UserInput input(host.host.handle);
    // Each the fastest of several, painting included: others may use the machine.
    ULONGLONG filling = ~0ull, ticking = ~0ull;
    const auto step = [&](const char* what, ULONGLONG& fastest, int checked, UINT state, const auto& act) {
        SCOPED_TRACE(what);
        paints = 0;
        const ULONGLONG start = GetTickCount64();
        act(host.Editor());
        EXPECT_EQ(paints, 0) << "before the end";
        ProcessPendingMessages();
        fastest = std::min(fastest, GetTickCount64() - start);
        EXPECT_GE(paints, 1);
        EXPECT_EQ(SendMessageW(host.TreeHandle(), TVM_GETCOUNT, 0, 0), host.Model().Count());
        EXPECT_EQ(host.Editor().CheckedStoryboardCount(), checked);
        const auto last = reinterpret_cast<WPARAM>(ItemOf(host.Model().First()->LastChild()));
        EXPECT_EQ(SendMessageW(host.TreeHandle(), TVM_GETITEMSTATE, last, TVIS_STATEIMAGEMASK) >> 12, state);
    };
    for (int turn = 0; turn < 3; ++turn) {
        host.Editor().SetLesson(nullptr);
        ProcessPendingMessages();
        step("fill", filling, 0, 1, [&](LessonMapEditor& editor) { editor.SetLesson(lesson); });
        step("check", ticking, 10'000, 2, [](LessonMapEditor& editor) { editor.CheckAllStoryboards(); });
        step("uncheck", ticking, 0, 1, [](LessonMapEditor& editor) { editor.UncheckAllStoryboards(); });
        SendMessageW(host.TreeHandle(), WM_VSCROLL, SB_TOP, 0);
        step("click on a map", ticking, 1000, 2, [&](LessonMapEditor&) {
            input.Do([&](UserInput& user) { user.Click(host.On(u"Map0", RowPart::Box)); });
            paints = 0; // the press itself paints the row
            InvalidateRect(host.TreeHandle(), nullptr, TRUE);
        });
    }
    EXPECT_LT(ticking, 4 * filling + 50);
}

} // namespace dax::test
