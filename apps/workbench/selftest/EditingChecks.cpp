// What is edited in the controls is in the database after a save, and in other controls that load it then.
#include "base/Enumerations.h"
#include "pages/LessonStore.h"
#include "selftest/Course.h"
#include "selftest/StartChecks.h"
#include "selftest/TestForm.h"

#include <commctrl.h>

namespace dax::workbench::selftest {

namespace {

const RECT wholeForm{0, 0, 400, 360};

struct Place {
    std::wstring content;
    bool isFile;
    std::wstring newTitle;
};

HostedControl& AddEditor(TestForm& form, const Place& place) {
    HostedControl& editor = form.Add(L"GroupEditor", wholeForm);
    editor.Control().Set(L"ConnectionString", place.content);
    Require(editor.Control().Call(L"LoadDatabase").Bool(), L"The course cannot be loaded: " + editor.AllRaised());
    return editor;
}

// All titles in the order of the tree.
std::wstring Titles(const Automation& editor) {
    const Automation all(editor.Call(L"GetChildLessonIDCollection", {L""}).Object());
    const long count = all.Get(L"Count").Long();
    std::wstring titles;
    for (long i = 1; i <= count; ++i)
        if (const std::wstring id = all.Call(L"Item", {i}).Text(); !id.empty())
            titles += editor.Call(L"GetLessonTitle", {id}).Text() + L" | ";
    return titles;
}

std::wstring LoadCourse(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 360);
    const HostedControl& editor = AddEditor(form, place);
    RequireSame(L"Entries with the database", editor.Control().Get(L"NodeCount").Text(),
                std::to_wstring(Entries().size() + 1));
    std::wstring expected;
    for (const Entry& entry : Entries())
        expected += std::wstring(entry.title, entry.title + Text(entry.title).size()) + L" | ";
    RequireSame(L"Titles", Titles(editor.Control()), expected);
    Require(editor.Raised(L"AfterSelectionChange("), L"Loading raised " + editor.AllRaised() + L".");
    return editor.Control().Get(L"NodeCount").Text() + L" entries";
}

std::wstring EditHierarchy(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 360);
    HostedControl& hosted = AddEditor(form, place);
    const Automation& editor = hosted.Control();
    const std::wstring before = Titles(editor);
    hosted.events.clear();
    editor.Set(L"CurrentLessonID", L"l5");
    editor.Call(L"AddLesson", {L"new-1", L"before it is renamed", L"NEW-1", ltLesson});
    editor.Call(L"UpdateLesson", {L"new-1", place.newTitle, L"NEW-1", ltLesson});
    Require(editor.Call(L"CanMoveCurrent", {gmtDown}).Bool(), L"The new entry cannot be moved down.");
    editor.Call(L"MoveCurrent", {gmtDown});
    editor.Call(L"RemoveLesson", {L"g2", true});
    Require(hosted.Raised(L"DataChanged("), L"Editing raised " + hosted.AllRaised() + L".");
    const std::wstring edited = Titles(editor);
    Require(edited != before && edited.find(place.newTitle) != std::wstring::npos, L"The edits are not in the tree.");
    int undone = 0;
    for (; editor.Get(L"CanUndo").Bool() && undone < 100; ++undone) editor.Call(L"Undo");
    RequireSame(L"After undoing", Titles(editor), before);
    for (int i = 0; i < undone; ++i) editor.Call(L"Redo");
    RequireSame(L"After doing it again", Titles(editor), edited);
    Require(editor.Call(L"SaveDatabase").Bool(), L"Saving has failed: " + hosted.AllRaised());
    HostedControl& other = AddEditor(form, place);
    RequireSame(L"After loading again", Titles(other.Control()), edited);
    RequireSame(L"Rows", AskDatabase(place.content, L"SELECT Count(*) FROM velmoraLessons"),
                std::to_wstring(Entries().size() + 1 - 3));
    return std::to_wstring(undone) + L" edits";
}

std::wstring RefuseConflict(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 360);
    HostedControl& hosted = AddEditor(form, place);
    hosted.Control().Set(L"ConflictCheck", true);
    hosted.Control().Call(L"UpdateLesson", {L"l7", L"mine", L"TOP-1", ltLesson});
    RunStatement(place.content, L"UPDATE velmoraLessons SET lessonTitle = 'theirs' WHERE lessonID = 'l7'");
    Require(!hosted.Control().Call(L"SaveDatabase").Bool() && hosted.Raised(L"Error("),
            L"A save that overwrites what another author has changed was not refused: " + hosted.AllRaised());
    RequireSame(L"The other's title",
                AskDatabase(place.content, L"SELECT lessonTitle FROM velmoraLessons WHERE "
                                           L"lessonID = 'l7'"),
                L"theirs");
    return {};
}

std::wstring EditLesson(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 360);
    HostedControl& hosted = form.Add(L"LessonMapEditor", wholeForm);
    const auto open = [&] {
        const Automation lesson = setting.library.CreateObject(L"ContentObjects.Lesson");
        lesson.Call(L"Load", {ReadLessonData(place.content, L"l1")});
        hosted.Control().Set(L"Lesson", lesson.Object());
        return lesson;
    };
    const Automation lesson = open();
    const Automation tree(hosted.Control().Get(L"tvwObject").Object());
    RequireSame(L"Nodes of two maps", Automation(tree.Get(L"Nodes").Object()).Get(L"Count").Text(), L"7");
    hosted.Control().Set(L"CurrentSBID", L"l1b");
    hosted.Control().Call(L"MoveCurrent", {smtNextMap});
    Require(hosted.Raised(L"MapChanged("), L"Moving a page raised " + hosted.AllRaised() + L".");
    const Automation page(hosted.Control().Get(L"CurrentStoryboard").Object());
    page.Set(L"Title", place.newTitle);
    hosted.Control().Call(L"UpdateStoryboard", {page.Object()});
    WriteLessonData(place.content, L"l1", lesson.Call(L"Save").Text());
    const Automation again = open();
    hosted.Control().Set(L"CurrentSBID", L"l1b");
    const Automation reread(hosted.Control().Get(L"CurrentStoryboard").Object());
    RequireSame(L"The page's title after loading again", reread.Get(L"Title").Text(), place.newTitle);
    const std::wstring stored = again.Call(L"Save").Text();
    Require(stored.find(L"map\tMore") < stored.find(L"\tl1b\n", stored.find(L"map\tMore")) &&
                stored.find(L"\tl1b\n", stored.find(L"map\tMore")) != std::wstring::npos,
            L"The page's new map was not saved.");
    return {};
}

std::wstring ShowPanels(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 560);
    const HostedControl& editor = AddEditor(form, place);
    const HostedControl& locks = form.Add(L"LockInfo", {0, 360, 200, 560});
    const HostedControl& info = form.Add(L"LessonInfo", {200, 360, 400, 560});
    editor.Control().Set(L"CurrentLessonID", L"l1");
    for (const HostedControl* panel : {&locks, &info})
        panel->Control().Call(L"UpdateFrom", {editor.Control().Object()});
    RequireSame(L"Locks on the lesson", locks.Control().Get(L"LockCount").Text(), L"1");
    return {};
}

std::wstring ClearLocks(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 600, 260);
    const HostedControl& hosted = form.Add(L"LockManager", {0, 0, 600, 260});
    const Automation& locks = hosted.Control();
    locks.Set(L"MDBMode", place.isFile);
    locks.Set(L"Username", courseUser);
    locks.Set(L"IsAdministrator", true);
    locks.Set(L"ConnectionString", place.content);
    locks.Call(L"RebuildDisplay");
    const long all = locks.Get(L"LockCount").Long();
    RequireSame(L"Locks", std::to_wstring(all), AskDatabase(place.content, L"SELECT Count(*) FROM velmoraUserLocks"));
    locks.Set(L"LockDisplayType", ldtInvalidLocks);
    locks.Call(L"Refresh");
    const long stale = locks.Get(L"LockCount").Long();
    const HWND list = hosted.Inner(L"SysListView32");
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
    locks.Call(L"DeleteSelected");
    RequireSame(L"Stale locks left", locks.Get(L"LockCount").Text(), L"0");
    RequireSame(L"Locks in the database", AskDatabase(place.content, L"SELECT Count(*) FROM velmoraUserLocks"),
                std::to_wstring(all - stale));
    return std::to_wstring(stale) + L" of " + std::to_wstring(all) + L" locks deleted";
}

std::wstring Validate(const Setting& setting, const Place& place) {
    TestForm form(setting.library, 400, 160);
    const HostedControl& hosted = form.Add(L"DatabaseValidator", {0, 0, 400, 160});
    const auto validate = [&](const std::wstring& connection, const std::wstring& catalog) {
        return hosted.Control().Call(L"ValidateDataConnection", {connection, catalog, place.isFile}).Bool();
    };
    Require(validate(place.content, place.content),
            L"The course is not valid: " + hosted.Control().Get(L"ErrorDescription").Text());
    if (place.isFile)
        Require(!validate(place.content + L".missing", place.content + L".missing"),
                L"A file that is missing is valid.");
    return {};
}

} // namespace

std::vector<Check> EditingOn(const Setting& setting, const std::wstring& content, bool isFile,
                             const std::wstring& newTitle) {
    const Place place{content, isFile, newTitle};
    const auto with = [&setting, place](std::wstring (*check)(const Setting&, const Place&)) {
        return [&setting, place, check] { return check(setting, place); };
    };
    return {
        {L"DatabaseValidator: the course is valid", with(Validate)},
        {L"GroupEditor: all entries are loaded", with(LoadCourse)},
        {L"GroupEditor: added, renamed, moved, removed, undone, done again, saved, loaded again", with(EditHierarchy)},
        {L"GroupEditor: nobody's changes are overwritten", with(RefuseConflict)},
        {L"LessonMapEditor: a page is moved and renamed, saved, loaded again", with(EditLesson)},
        {L"LessonInfo, LockInfo: the selected lesson", with(ShowPanels)},
        {L"LockManager: stale locks are listed and deleted", with(ClearLocks)}};
}

std::vector<Check> EditingChecks(const Setting& setting) {
    return EditingOn(setting, MakeCourseFiles(setting.folder, L"editing").content, true,
                     L"\u00DCn\u00EF \u2013 \u0416 \u8A9E \U0001F44D 'quoted' \"twice\"; --");
}

} // namespace dax::workbench::selftest
