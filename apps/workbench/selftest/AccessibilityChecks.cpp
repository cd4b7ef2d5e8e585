// What screen readers get of each control, by the system's accessibility interface.
#include "selftest/Checks.h"
#include "selftest/FilledForm.h"
#include "selftest/ScreenReader.h"

#include <commctrl.h>

namespace dax::workbench::selftest {

namespace {

// The elements of a window; throws HostError when it has none.
class Reader : public ScreenReader {
public:
    explicit Reader(HWND window) : ScreenReader(window) {
        Require(SUCCEEDED(Opened()), L"The window reports nothing to screen readers: " + DescribeResult(Opened()));
        operator->()->get_accChildCount(&count);
    }

    long Count() const { return count; }
    // The element of that name; throws HostError when there is none, with all that there are.
    long Find(const std::wstring& name) const {
        std::wstring all;
        for (const long child : Elements()) {
            if (Name(child) == name) return child;
            all += (all.empty() ? L"" : L", ") + Name(child);
        }
        throw HostError(E_FAIL, L"Screen readers find no '" + name + L"', but: " + all + L".");
    }

private:
    long count = 0;
};

std::wstring TitleOf(const Entry& entry) { return {entry.title, entry.title + Text(entry.title).size()}; }

std::wstring ReadHierarchy(FilledForm& filled) {
    const Reader reader(filled.Control(L"GroupEditor").Inner(L"SysTreeView32"));
    Require(reader.Role(CHILDID_SELF) == ROLE_SYSTEM_OUTLINE, L"The tree is not reported as one.");
    for (const Entry& entry : Entries()) {
        const long item = reader.Find(TitleOf(entry));
        RequireSame(L"The level of " + TitleOf(entry), reader.Value(item), std::to_wstring(entry.level));
        Require(reader.Role(item) == ROLE_SYSTEM_OUTLINEITEM,
                TitleOf(entry) + L" is not reported as an entry of a tree.");
        const bool isSelected = reader.State(item) & STATE_SYSTEM_SELECTED;
        Require(isSelected == (Text(entry.id) == u"l2"), L"The wrong entry is reported as selected.");
        const bool isOpen = reader.State(item) & STATE_SYSTEM_EXPANDED;
        Require(isOpen != entry.isLesson, TitleOf(entry) + L" is reported as open or closed, which it is not.");
    }
    return std::to_wstring(reader.Count()) + L" entries";
}

std::wstring ReadMap(FilledForm& filled) {
    HostedControl& hosted = filled.Control(L"LessonMapEditor");
    const Reader reader(hosted.Inner(L"SysTreeView32"));
    hosted.Control().Call(L"CheckAllStoryboards");
    for (const wchar_t* page : {L"Welcome", L"What you have learned"})
        Require(reader.State(reader.Find(page)) & STATE_SYSTEM_CHECKED,
                std::wstring(page) + L" is not reported as checked.");
    hosted.Control().Call(L"UncheckAllStoryboards");
    Require(!(reader.State(reader.Find(L"Welcome")) & STATE_SYSTEM_CHECKED),
            L"A page is reported as checked that is not.");
    return std::to_wstring(reader.Count()) + L" nodes";
}

std::wstring ReadLocks(FilledForm& filled) {
    const Reader reader(filled.Control(L"LockManager").Inner(L"SysListView32"));
    Require(reader.Count() >= lockCount, L"Screen readers find " + std::to_wstring(reader.Count()) + L" rows.");
    std::wstring all;
    for (long row = 1; row <= lockCount; ++row) {
        Require(!reader.Name(row).empty(), L"Row " + std::to_wstring(row) + L" has no name.");
        all += (row > 1 ? L"; " : L"") + reader.Name(row);
    }
    return all;
}

std::wstring ReadPanel(FilledForm& filled, const wchar_t* control, const std::wstring& expected) {
    const Reader reader(GetWindow(filled.Control(control).Window(), GW_CHILD));
    std::wstring all;
    for (const long line : reader.Elements()) {
        Require(reader.Role(line) == ROLE_SYSTEM_STATICTEXT && (reader.State(line) & STATE_SYSTEM_READONLY),
                L"A line is not reported as a text.");
        all += (all.empty() ? L"" : L" / ") + reader.Name(line);
    }
    Require(all.find(expected) != std::wstring::npos,
            L"Screen readers find no '" + expected + L"', but: " + all + L".");
    return all;
}

std::wstring ReadPicker(FilledForm& filled) {
    const Reader reader(filled.Control(L"SQLDBPicker").Inner(L"ComboBox"));
    if (reader.Role(CHILDID_SELF) == ROLE_SYSTEM_CLIENT)
        throw Skipped(L"This system reports nothing of its own drop-down lists.");
    Require(reader.Role(CHILDID_SELF) == ROLE_SYSTEM_COMBOBOX, L"The list of catalogs is not reported as one.");
    const std::wstring title = reader.Value(CHILDID_SELF);
    RequireSame(L"The reported catalog", title, filled.Control(L"SQLDBPicker").Control().Get(L"Title").Text());
    return title;
}

} // namespace

std::vector<Check> AccessibilityChecks(const Setting& setting) {
    const auto filled =
        std::make_shared<FilledForm>(setting.library, MakeCourseFiles(setting.folder, L"accessibility"));
    std::vector<Check> checks{{L"GroupEditor: entries, levels, selection", [filled] { return ReadHierarchy(*filled); }},
                              {L"LessonMapEditor: pages and checks", [filled] { return ReadMap(*filled); }},
                              {L"LockManager: rows", [filled] { return ReadLocks(*filled); }},
                              {L"SQLDBPicker: the catalog", [filled] { return ReadPicker(*filled); }}};
    for (const auto& [panel, expected] :
         {std::pair(L"LessonInfo", L"identifier: SAF-2"), std::pair(L"LockInfo", L"reading lesson"),
          std::pair(L"DatabaseValidator", L"accessibility.db")})
        checks.push_back({std::wstring(panel) + L": texts", [filled, panel = panel, expected = expected] {
                              return ReadPanel(*filled, panel, expected);
                          }});
    return checks;
}

} // namespace dax::workbench::selftest
