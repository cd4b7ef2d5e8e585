// Large lessons in the lesson map's window: whatever is done, the window shows it in one go.
#include "windows/TreeControlHost.h"

#include <commctrl.h>

#include <functional>

namespace dax::test {

namespace {

constexpr UINT_PTR CounterSubclass = 9;

enum class Form { TenMaps, Deep, Wide };

std::string LargeText(Form form, int count) {
    const int perMap = form == Form::TenMaps ? count / 10 : count;
    std::string text;
    for (int page = 0; page < count; ++page) {
        if (page % perMap == 0) text += (page ? " | Map" : "Map") + std::to_string(page / perMap) + ":";
        text += " s" + std::to_string(page) + (form == Form::Deep ? "(" : "");
    }
    return form == Form::TenMaps ? text : text + " | Map1:"; // an empty one
}

// What the tree and its parent window hear: paintings of the tree, and drawing going off and on.
struct Heard {
    HWND tree;
    int paints = 0;
    std::string drawing;
};

LRESULT CALLBACK Listen(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR reference) {
    Heard& heard = *reinterpret_cast<Heard*>(reference);
    const bool isTree = window == heard.tree;
    if (message == WM_PAINT) heard.paints += isTree;
    if (message == WM_SETREDRAW)
        heard.drawing += std::string(isTree ? "tree" : "parent") + (wParam ? " on, " : " off, ");
    return DefSubclassProc(window, message, wParam, lParam);
}

// Does it to a lesson of that size in a window: no repaint before the end.
class LargeHost {
public:
    LargeHost(Form form, int count) : lesson(MakeLesson(LargeText(form, count))) {
        heard.tree = host.TreeHandle();
        ListenAt(heard.tree);
    }
    void ListenAt(HWND window) {
        SetWindowSubclass(window, Listen, CounterSubclass, reinterpret_cast<DWORD_PTR>(&heard));
    }
    // Answers how long it took, painting included; much longer with `isHeld`, by which the parent is listened to.
    ULONGLONG Step(const char* what, const std::function<void(LessonMapEditor&)>& act, bool isHeld = false) {
        SCOPED_TRACE(what);
        heard.paints = 0;
        heard.drawing.clear();
        if (isHeld) ListenAt(host.Control()->Handle());
        const ULONGLONG start = GetTickCount64();
        act(host.Editor());
        EXPECT_EQ(heard.paints, 0) << "in the midst of it";
        if (isHeld) {
            EXPECT_EQ(heard.drawing, "parent off, tree off, tree on, parent on, ");
            RemoveWindowSubclass(host.Control()->Handle(), Listen, CounterSubclass);
        }
        ProcessPendingMessages();
        const ULONGLONG duration = GetTickCount64() - start;
        EXPECT_GE(heard.paints, 1);
        EXPECT_EQ(SendMessageW(host.TreeHandle(), TVM_GETCOUNT, 0, 0), host.Model().Count());
        return duration;
    }

    Heard heard{};
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
        host.Editor().SetCurrentSBID(u"s0");
        ProcessPendingMessages();
        // The moved branch is all of the deep tree, one page of the wide one.
        large.Step("move", [](LessonMapEditor& editor) { editor.MoveCurrent(smtNextMap); });
        EXPECT_EQ(host.At(u"s0").Parent()->Key(), u"Map1");
        large.Step(
            "refresh", [](LessonMapEditor& editor) { editor.Refresh(); }, true);
        EXPECT_EQ(NextItem(host.TreeHandle(), TVGN_CARET), ItemOf(&host.At(u"s0")));
        large.Step("clear", [](LessonMapEditor& editor) { editor.SetLesson(nullptr); });
    }
}

TEST(LessonMapSize, AllBoxesAreTickedInOneRepaintAndAsFastAsTheTreeIsFilled) {
    LargeHost large(Form::TenMaps, 10'000);
    LessonMapHost& host = large.host;
    UserInput input(host.host.handle);
    // Each the fastest of several: others may use the machine.
    ULONGLONG filling = ~0ull, ticking = ~0ull;
    for (int turn = 0; turn < 4; ++turn) {
        const auto step = [&](const char* what, ULONGLONG& fastest, const auto& act, int checked, UINT state) {
            const ULONGLONG duration = large.Step(what, act, turn == 0 && checked != 1000 && &fastest == &ticking);
            if (turn > 0) fastest = std::min(fastest, duration);
            EXPECT_EQ(host.Editor().CheckedStoryboardCount(), checked) << what;
            const auto last = reinterpret_cast<WPARAM>(ItemOf(host.Model().First()->LastChild()));
            EXPECT_EQ(SendMessageW(host.TreeHandle(), TVM_GETITEMSTATE, last, TVIS_STATEIMAGEMASK) >> 12, state)
                << what;
        };
        host.Editor().SetLesson(nullptr);
        step(
            "fill", filling, [&](LessonMapEditor& editor) { editor.SetLesson(large.lesson); }, 0, 1);
        step(
            "check", ticking, [](LessonMapEditor& editor) { editor.CheckAllStoryboards(); }, 10'000, 2);
        step(
            "uncheck", ticking, [](LessonMapEditor& editor) { editor.UncheckAllStoryboards(); }, 0, 1);
        const auto press = [&](LessonMapEditor&) {
            input.Do([&](UserInput& user) { user.Click(host.On(u"Map0", RowPart::Box)); });
            large.heard.paints = 0; // the press itself paints the row
            InvalidateRect(host.TreeHandle(), nullptr, TRUE);
        };
        SendMessageW(host.TreeHandle(), WM_VSCROLL, SB_TOP, 0);
        step("click on a map", ticking, press, 1000, 2);
    }
    EXPECT_LT(ticking, 4 * filling + 50);
}

} // namespace dax::test
