// What a user does by keys and mouse, as real input of the system, and what the controls raise then.
#include "base/Enumerations.h"
#include "selftest/Course.h"
#include "selftest/StartChecks.h"
#include "selftest/TestForm.h"

#include <commctrl.h>

namespace dax::workbench::selftest {

namespace {

std::wstring ItemText(HWND tree, HTREEITEM item) {
    wchar_t text[260] = L"";
    TVITEMW query{};
    query.mask = TVIF_TEXT;
    query.hItem = item;
    query.pszText = text;
    query.cchTextMax = 260;
    TreeView_GetItem(tree, &query);
    return text;
}

// A point of the visible row with that text, so far down in it; 50: its middle. Throws HostError when there is none.
POINT OnRow(HWND tree, const std::wstring& text, int percent = 50) {
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = TreeView_GetNextVisible(tree, item)) {
        RECT row{};
        if (ItemText(tree, item) != text || !TreeView_GetItemRect(tree, item, &row, TRUE)) continue;
        POINT point{(row.left + row.right) / 2, row.top + (row.bottom - row.top) * percent / 100};
        ClientToScreen(tree, &point);
        return point;
    }
    throw HostError(E_FAIL, L"The tree shows no entry '" + text + L"'.");
}

// The texts of the visible rows.
std::wstring Rows(HWND tree) {
    std::wstring rows;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = TreeView_GetNextVisible(tree, item))
        rows += ItemText(tree, item) + L" | ";
    return rows;
}

std::wstring TitleWithID(const wchar_t* id) {
    const Text requested(id, id + std::wstring(id).size());
    for (const Entry& entry : Entries())
        if (requested == entry.id) return {entry.title, entry.title + Text(entry.title).size()};
    return {};
}

// One control on a form, with the course.
struct OneControl {
    TestForm form;
    HostedControl& hosted;
    HWND inner = nullptr;

    OneControl(const Setting& setting, const wchar_t* control, const wchar_t* innerClass, int width, int height)
        : form(setting.library, width, height), hosted(form.Add(control, {0, 0, width, height})),
          inner(hosted.Inner(innerClass)) {
        Require(inner != nullptr, std::wstring(L"The control has no window of the class ") + innerClass + L".");
    }
    const Automation& Control() const { return hosted.Control(); }
    void Focus() {
        form.Play([](UserInput&) {});
        SetFocus(hosted.Window());
        Require(form.Until([&] { return GetFocus() == inner; }), L"The focus does not go into the control.");
        hosted.events.clear();
    }
    void Type(std::initializer_list<WORD> keys) {
        form.Play([&](UserInput& user) {
            for (const WORD key : keys) user.Type(key);
        });
    }
    void TypeWith(WORD modifier, WORD key) {
        form.Play([&](UserInput& user) {
            user.KeyDown(modifier);
            user.Type(key);
            user.KeyUp(modifier);
        });
    }
    void Drag(POINT from, POINT to, WORD modifier = 0) {
        form.Play([&](UserInput& user) {
            user.Press(from);
            user.Move({from.x + GetSystemMetrics(SM_CXDRAG) + 1, from.y});
            user.Move(to);
            if (modifier) user.KeyDown(modifier);
            user.Release();
            if (modifier) user.KeyUp(modifier);
        });
    }
    // Waits for an event that begins so, and clears the log.
    void RequireEvent(const wchar_t* what, const std::wstring& event) {
        const bool isRaised = form.Until([&] { return hosted.Raised(event); });
        Require(isRaised, std::wstring(what) + L" raised " + hosted.AllRaised() + L" instead of " + event + L").");
        hosted.events.clear();
    }
};

void LoadHierarchy(const Setting& setting, OneControl& one) {
    one.Control().Set(L"ConnectionString", MakeCourseFiles(setting.folder, L"input").content);
    Require(one.Control().Call(L"LoadDatabase").Bool(), L"The course cannot be loaded.");
    one.Control().Call(L"ExpandAll");
    one.Focus();
}

void LoadMap(const Setting& setting, OneControl& one) {
    const CourseFiles files = MakeCourseFiles(setting.folder, L"input");
    const Automation lesson = setting.library.CreateObject(L"ContentObjects.Lesson");
    lesson.Call(L"Load", {AskDatabase(files.content, L"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'")});
    one.Control().Set(L"CaptionStyle", csTitle);
    one.Control().Set(L"Lesson", lesson.Object());
    one.Control().Call(L"ExpandAll");
    one.Focus();
}

std::wstring HierarchyKeys(const Setting& setting) {
    OneControl one(setting, L"GroupEditor", WC_TREEVIEWW, 420, 360);
    LoadHierarchy(setting, one);
    one.Type({VK_END});
    one.RequireEvent(L"End", L"AfterSelectionChange(LessonID = \"l7\"");
    one.Type({VK_HOME, VK_DOWN, VK_DOWN});
    one.RequireEvent(L"Home and Down", L"AfterSelectionChange(LessonID = \"l1\"");
    one.Type({VK_DELETE});
    one.RequireEvent(L"Delete", L"DeleteRequest(");
    Require(one.Control().Get(L"NodeCount").Long() == static_cast<long>(Entries().size()) + 1,
            L"Delete has removed something by itself.");
    one.Type({VK_UP, VK_LEFT});
    Require(one.form.Until([&] { return Rows(one.inner).find(TitleWithID(L"l1")) == std::wstring::npos; }),
            L"Left does not close a group.");
    return {};
}

std::wstring HierarchyMouse(const Setting& setting) {
    OneControl one(setting, L"GroupEditor", WC_TREEVIEWW, 420, 360);
    LoadHierarchy(setting, one);
    one.form.Play([&](UserInput& user) { user.Click(OnRow(one.inner, TitleWithID(L"l6"))); });
    one.RequireEvent(L"A click", L"AfterSelectionChange(LessonID = \"l6\"");
    one.form.Play([&](UserInput& user) { user.DoubleClick(OnRow(one.inner, TitleWithID(L"l6"))); });
    one.RequireEvent(L"A double click", L"DblClick(");
    return {};
}

std::wstring HierarchyDrag(const Setting& setting) {
    OneControl one(setting, L"GroupEditor", WC_TREEVIEWW, 420, 360);
    LoadHierarchy(setting, one);
    const std::wstring before = Rows(one.inner);
    one.Drag(OnRow(one.inner, TitleWithID(L"l7")), OnRow(one.inner, TitleWithID(L"l1"), 20));
    one.RequireEvent(L"Dragging a lesson", L"DataChanged(");
    Require(Rows(one.inner).find(TitleWithID(L"l7") + L" | " + TitleWithID(L"l1")) != std::wstring::npos,
            L"The lesson is not where it was dropped: " + Rows(one.inner));
    one.Drag(OnRow(one.inner, TitleWithID(L"l7")), OnRow(one.inner, TitleWithID(L"g3")), VK_CONTROL);
    one.RequireEvent(L"Dragging a lesson with Ctrl", L"DataChanged(");
    Require(Rows(one.inner).find(TitleWithID(L"g3") + L" | " + TitleWithID(L"l7")) != std::wstring::npos,
            L"The lesson is not in the group that it was dropped on: " + Rows(one.inner));
    one.TypeWith(VK_CONTROL, 'A'); // nothing of the control's
    one.Control().Call(L"Undo");
    one.Control().Call(L"Undo");
    RequireSame(L"After undoing both", Rows(one.inner), before);
    return {};
}

std::wstring MapKeys(const Setting& setting) {
    OneControl one(setting, L"LessonMapEditor", WC_TREEVIEWW, 420, 300);
    LoadMap(setting, one);
    one.Type({VK_HOME, VK_DOWN, VK_DOWN});
    one.RequireEvent(L"Down", L"AfterSelectionChange(");
    RequireSame(L"Selected", one.Control().Get(L"CurrentSBID").Text(), L"l1b");
    one.Type({VK_DELETE});
    one.RequireEvent(L"Delete", L"DeleteRequest(");
    one.Type({VK_APPS});
    one.RequireEvent(L"The Menu key", L"ContextMenuRequest(");
    one.TypeWith(VK_SHIFT, VK_F10);
    one.RequireEvent(L"Shift+F10", L"ContextMenuRequest(");
    return {};
}

std::wstring MapMouse(const Setting& setting) {
    OneControl one(setting, L"LessonMapEditor", WC_TREEVIEWW, 420, 300);
    LoadMap(setting, one);
    one.form.Play([&](UserInput& user) { user.RightClick(OnRow(one.inner, L"Welcome")); });
    one.RequireEvent(L"A right click", L"ContextMenuRequest(");
    one.Control().Set(L"Checkboxes", true);
    const POINT label = OnRow(one.inner, L"What you have learned");
    RECT row{};
    const HTREEITEM item = [&] {
        TVHITTESTINFO hit{};
        hit.pt = label;
        ScreenToClient(one.inner, &hit.pt);
        return TreeView_HitTest(one.inner, &hit);
    }();
    Require(item && TreeView_GetItemRect(one.inner, item, &row, TRUE), L"No row rectangle was returned for the page.");
    // The box is left of the picture, which is left of the label.
    TVHITTESTINFO hit{};
    hit.pt = {row.left, (row.top + row.bottom) / 2};
    while (hit.pt.x > 0 && (TreeView_HitTest(one.inner, &hit), !(hit.flags & TVHT_ONITEMSTATEICON))) --hit.pt.x;
    POINT box{hit.pt.x - 4, hit.pt.y};
    ClientToScreen(one.inner, &box);
    one.form.Play([&](UserInput& user) { user.Click(box); });
    one.RequireEvent(L"A click on a box", L"ItemChecked(");
    RequireSame(L"Checked pages", one.Control().Get(L"CheckedStoryboardCount").Text(), L"2"); // with the page below
    return {};
}

std::wstring MapDrag(const Setting& setting) {
    OneControl one(setting, L"LessonMapEditor", WC_TREEVIEWW, 420, 300);
    LoadMap(setting, one);
    one.Drag(OnRow(one.inner, L"Welcome"), OnRow(one.inner, L"What you have learned", 80));
    one.RequireEvent(L"Dragging a page", L"MapChanged(");
    Require(Rows(one.inner).find(L"What you have learned | Welcome") != std::wstring::npos,
            L"The page is not where it was dropped: " + Rows(one.inner));
    one.Control().Set(L"Locked", true);
    const std::wstring before = Rows(one.inner);
    one.Drag(OnRow(one.inner, L"Welcome"), OnRow(one.inner, L"What you have learned", 20));
    RequireSame(L"Dragged in a locked map", Rows(one.inner), before);
    return {};
}

std::wstring LockKeys(const Setting& setting) {
    OneControl one(setting, L"LockManager", WC_LISTVIEWW, 620, 240);
    const Automation& locks = one.Control();
    locks.Set(L"MDBMode", true);
    locks.Set(L"IsAdministrator", true);
    locks.Set(L"ConnectionString", MakeCourseFiles(setting.folder, L"input").content);
    locks.Call(L"RebuildDisplay");
    one.Focus();
    one.Type({VK_HOME});
    one.TypeWith(VK_SHIFT, VK_END);
    Require(one.form.Until([&] { return locks.Get(L"SelectedLockCount").Long() == lockCount; }),
            L"Home and Shift+End have selected " + locks.Get(L"SelectedLockCount").Text() + L" locks.");
    one.Type({VK_DELETE});
    one.RequireEvent(L"Delete", L"DeleteRequest(");
    RequireSame(L"Locks after Delete alone", locks.Get(L"LockCount").Text(), std::to_wstring(lockCount));
    RECT row{};
    ListView_GetItemRect(one.inner, 1, &row, LVIR_LABEL);
    POINT at{row.left + 10, (row.top + row.bottom) / 2};
    ClientToScreen(one.inner, &at);
    one.form.Play([&](UserInput& user) { user.Click(at); });
    one.RequireEvent(L"A click", L"SelectionChanged(");
    RequireSame(L"Selected by a click", locks.Get(L"SelectedLockCount").Text(), L"1");
    const auto order = [&] {
        std::wstring texts;
        for (int i = 0; i < lockCount; ++i) {
            wchar_t text[260] = L"";
            ListView_GetItemText(one.inner, i, 0, text, 260);
            texts += std::wstring(text) + L" | ";
        }
        return texts;
    };
    POINT header{at.x, 0};
    RECT captions{};
    GetWindowRect(ListView_GetHeader(one.inner), &captions);
    header.y = (captions.top + captions.bottom) / 2;
    std::wstring orders[2];
    for (std::wstring& sorted : orders) {
        one.form.Play([&](UserInput& user) { user.Click(header); });
        sorted = order();
    }
    Require(orders[0] != orders[1], L"A click on a column's caption does not sort: " + orders[0]);
    return {};
}

std::wstring PickerKeys(const Setting& setting) {
    OneControl one(setting, L"SQLDBPicker", L"ComboBox", 300, 40);
    const CourseFiles files = MakeCourseFiles(setting.folder, L"input");
    Require(one.Control().Call(L"LoadPicker", {files.connector, courseUser, L"input"}).Bool(),
            L"The picker lists no such user.");
    one.RequireEvent(L"LoadPicker", L"CatalogChanged(DBCatalog = \"input\"");
    one.Focus();
    one.Type({VK_DOWN});
    one.RequireEvent(L"Down", L"CatalogChanged(DBCatalog = \"second\"");
    one.Type({VK_UP});
    one.RequireEvent(L"Up", L"CatalogChanged(DBCatalog = \"input\"");
    return {};
}

} // namespace

std::vector<Check> InputChecks(const Setting& setting) {
    const auto with = [&setting](std::wstring (*check)(const Setting&)) {
        return [&setting, check] { return check(setting); };
    };
    return {{L"GroupEditor: keys", with(HierarchyKeys)},
            {L"GroupEditor: click and double click", with(HierarchyMouse)},
            {L"GroupEditor: lessons are dragged beside others and, with Ctrl, into groups", with(HierarchyDrag)},
            {L"LessonMapEditor: keys, and those of the context menu", with(MapKeys)},
            {L"LessonMapEditor: right click, and a click on a check box", with(MapMouse)},
            {L"LessonMapEditor: pages are dragged to another map, unless it is locked", with(MapDrag)},
            {L"LockManager: keys, clicks, and sorting by a caption", with(LockKeys)},
            {L"SQLDBPicker: keys", with(PickerKeys)}};
}

} // namespace dax::workbench::selftest
