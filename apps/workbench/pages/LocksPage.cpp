#include "pages/LocksPage.h"

#include "base/Enumerations.h"
#include "ui/Input.h"

#include <algorithm>
#include <commctrl.h>

namespace dax::workbench {

namespace {

std::wstring Number(const Automation& manager, const wchar_t* name) {
    return std::to_wstring(manager.Get(name).Long());
}

std::wstring Locks(long count) { return std::to_wstring(count) + (count == 1 ? L" lock" : L" locks"); }

} // namespace

LocksPage::~LocksPage() {
    manager.reset();
    Destroy();
}

std::wstring LocksPage::Explanation() const {
    return L"LockManager lists the locks of a database. Lesson and group are those of the entry that is selected on "
           L"the hierarchy page. Locks in italics are invalid: no running program can hold them.";
}

void LocksPage::Build() {
    connectionLabel = AddLabel(L"File or &connection:");
    AddEdit(idConnection, L"A database file, or a connection string");
    AddButton(idBrowse, L"&Browse\u2026");
    AddButton(idLoad, L"&Refresh", true);
    displayLabel = AddLabel(L"&Show:");
    AddChoice(idDisplay,
              {L"All locks", L"Locks of the user", L"Locks of the lesson", L"Locks of the group", L"Invalid locks"});
    userLabel = AddLabel(L"&User:");
    AddEdit(idUser, L"Whose locks may be deleted");
    AddCheck(idAdministrator, L"&Administrator");
    AddCheck(idShowIdentifier, L"&Identifiers");
    SetChecked(idShowIdentifier, true);
    entryLabel = AddLabel(L"Entry:");
    AddOutput(idEntry);
    manager = AddControl(idLocks, true, ControlName, [this](const ControlEvent& event) { OnControlEvent(event); });
    if (manager) Frame(manager->Window());
    AddOutput(idCounts);
    AddButton(idDelete, L"&Delete selected\u2026");
    AddOutput(idResult);
    if (manager) ShowCounts();
}

void LocksPage::Arrange(int top, int bottom) {
    const Style& style = context.style;
    const int fieldLeft = Left() + style.TextWidth(L"File or connection:") + style.Scale(12);
    const int refresh = Right() - style.ButtonWidth(FieldText(idLoad));
    const int browse = refresh - style.Gap() - style.ButtonWidth(FieldText(idBrowse));
    Place(Field(idLoad), refresh, top - style.Scale(1), Right(), top + style.ButtonHeight() - style.Scale(1));
    Place(Field(idBrowse), browse, top - style.Scale(1), refresh - style.Gap(),
          top + style.ButtonHeight() - style.Scale(1));
    int y = PlaceRow(connectionLabel, idConnection, top, Left(), fieldLeft, browse - style.Gap());

    const int half = fieldLeft + (browse - fieldLeft) / 2;
    PlaceRow(displayLabel, idDisplay, y, Left(), fieldLeft, half - style.Scale(8));
    const int user = half + style.Scale(8) + style.TextWidth(L"User:") + style.Scale(12);
    PlaceCheck(idAdministrator, browse, y);
    y = PlaceRow(userLabel, idUser, y, half + style.Scale(8), user, browse - style.Gap());
    PlaceCheck(idShowIdentifier, browse, y);
    y = PlaceRow(entryLabel, idEntry, y, Left(), fieldLeft, browse - style.Gap());

    const int buttonTop = bottom - style.ButtonHeight();
    Place(Field(idResult), PlaceButton(idDelete, Left(), buttonTop), buttonTop, Right(), bottom);
    const int counts = buttonTop - style.Gap() - style.FieldHeight();
    Place(Field(idCounts), Left(), counts, Right(), counts + style.FieldHeight());
    if (manager) Place(manager->Window(), Left() + 1, y + 1, Right() - 1, std::max(counts - style.Scale(4), y + 1));
}

// The user's name decides which locks can be deleted: the list always belongs to the name in the field.
void LocksPage::Apply() {
    if (manager && !context.busy && FieldText(idUser) != user && !Trim(FieldText(idConnection)).empty()) List(false);
}

std::vector<MenuEntry> LocksPage::Menu() const {
    const bool isListed = manager && Manager().Get(L"LockCount").Long() > 0;
    return {{idDelete, L"&Delete selected\u2026\tDel", IsWindowEnabled(Field(idDelete)) != FALSE},
            {},
            {idSelectAll, L"Select &all\tCtrl+A", isListed},
            {},
            {idLoad, L"&Refresh\tF5", manager != nullptr}};
}

bool LocksPage::HandleKey(const MSG& message) {
    return message.wParam == 'A' && !HasFocus(idLocks) ? false : FormPage::HandleKey(message);
}

void LocksPage::Command(int id, int notification) {
    if (!manager) return;
    if (id == idUser && notification == EN_KILLFOCUS) return Apply();
    if (id == idSelectAll) {
        SelectRows(static_cast<int>(Manager().Get(L"LockCount").Long()));
        ShowCounts();
    }
    if (id == idBrowse && Browse(idConnection)) List(true);
    if (id == idLoad) List(false);
    if (id == idDelete) Delete();
    if (id == idAdministrator && notification == BN_CLICKED) List(false);
    if (id == idShowIdentifier && notification == BN_CLICKED) List(true);
    if (id == idDisplay && notification == CBN_SELCHANGE) List(false);
}

void LocksPage::OnControlEvent(const ControlEvent& event) {
    if (event.name == L"SelectionChanged") ShowCounts();
    if (event.name == L"DeleteRequest") Later(idDelete);
    if (event.name != L"Error") return;
    hasFailed = true;
    // The reply must be set before the event ends: the control continues according to it.
    const Question question{L"An error occurred while " + event.Argument(L"OccuredWhen") + L".",
                            event.Argument(L"Description") + L" (" + event.Argument(L"Number") + L")",
                            {{IDRETRY, L"&Try again"}, {IDIGNORE, L"&Ignore"}, {IDABORT, L"&Stop"}},
                            IDRETRY,
                            IDABORT,
                            true};
    event.Answer(L"Action", context.ask(question));
    ShowResult(event.Argument(L"Routine") + L": " + event.Argument(L"Description"), Tone::Bad);
}

void LocksPage::Start() {
    const std::wstring& source = context.selection.source;
    SetField(idConnection, source.empty() ? context.options.file : source);
    SetField(idUser, context.options.user);
    SetChecked(idAdministrator, context.options.user.empty() || context.catalog.isAdministrator);
    if (!FieldText(idConnection).empty() && context.options.shots.empty()) List(true);
}

void LocksPage::CatalogChanged() {
    SetField(idConnection, context.catalog.source);
    SetChecked(idAdministrator, context.catalog.isAdministrator);
    List(true);
}

void LocksPage::Shown() {
    const Selection& selection = context.selection;
    SetField(idEntry, selection.lessonID.empty() ? L"none; select a lesson or a group on the hierarchy page"
                                                 : (selection.isLesson ? L"lesson " : L"group ") + selection.title);
}

void LocksPage::KeyReleased() {
    if (manager && HasFocus(idLocks) && !context.busy) ShowCounts();
}

void LocksPage::ApplyFields() {
    const std::wstring source = TakeConnection();
    const Selection& selection = context.selection;
    const bool isChosen = !selection.lessonID.empty() && selection.source == source;
    const long display = Choice(idDisplay);
    Manager().Set(L"ConnectionString", ConnectionFor(source));
    Manager().Set(L"MDBMode", IsFile(source));
    user = FieldText(idUser);
    Manager().Set(L"Username", user);
    Manager().Set(L"IsAdministrator", Checked(idAdministrator));
    Manager().Set(L"LockDisplayType", display);
    Manager().Set(L"LessonID", isChosen ? selection.lessonID : std::wstring());
    Manager().Set(L"ShowIdentifier", Checked(idShowIdentifier));
    ComPtr<IDispatch> group;
    if (isChosen && display == ldtGroupLocks)
        group = selection.editor.Call(L"GetChildLessonIDCollection", {selection.lessonID}).Object();
    Manager().Set(L"GroupIDCollection", group);
}

void LocksPage::List(bool rebuild) {
    if (!manager) return;
    Run([&] {
        ShowResult(L"Reading\u2026", Tone::Plain);
        hasFailed = false;
        ApplyFields();
        Call(*manager, ControlName, rebuild ? L"RebuildDisplay" : L"Refresh");
        ShowCounts();
        const bool isNone = Trim(FieldText(idConnection)).empty();
        if (!hasFailed)
            ShowResult(isNone ? L"No database is named." : Locks(Manager().Get(L"LockCount").Long()) + L" listed.",
                       isNone ? Tone::Plain : Tone::Good);
    });
}

void LocksPage::Delete() {
    if (!manager || context.busy) return;
    const long selected = Manager().Get(L"SelectedLockCount").Long();
    const long deletable = Manager().Get(L"SelectedDeletableLockCount").Long();
    if (selected == 0) return;
    if (deletable == 0) {
        ShowResult(L"None of the selected locks is the user's own.", Tone::Bad);
        return;
    }
    const long valid = Manager().Get(L"SelectedValidLockCount").Long();
    std::wstring text;
    if (valid > 0)
        text = (valid == selected ? selected == 1 ? L"It is valid" : L"All are valid"
                                  : std::to_wstring(valid) + L" of the " + std::to_wstring(selected) + L" selected " +
                                        (valid == 1 ? L"is valid" : L"are valid")) +
               std::wstring(L": a user may be editing.");
    if (selected > deletable)
        text += (text.empty() ? L"" : L"\n\n") + Locks(selected - deletable) + L" of the selection " +
                (selected - deletable == 1 ? L"belongs" : L"belong") + L" to other users and " +
                (selected - deletable == 1 ? L"stays." : L"stay.");
    const Question question{
        L"Delete " + Locks(deletable) + L"?", text,  {{IDYES, L"&Delete " + Locks(deletable)}, {IDCANCEL, L"Cancel"}},
        valid > 0 ? IDCANCEL : IDYES,         IDYES, valid > 0};
    if (context.ask(question) != IDYES) return;
    Run([&] {
        hasFailed = false;
        Call(*manager, ControlName, L"DeleteSelected");
        ShowCounts();
        if (!hasFailed) ShowResult(Locks(deletable) + L" deleted, or already removed.", Tone::Good);
    });
}

void LocksPage::ShowCounts() {
    const Automation& control = Manager();
    const long selected = control.Get(L"SelectedLockCount").Long();
    std::wstring text = Locks(control.Get(L"LockCount").Long()) + L": " + Number(control, L"ValidLockCount") +
                        L" valid, " + Number(control, L"InvalidLockCount") + L" invalid, " +
                        Number(control, L"DeletableLockCount") + L" deletable.    Selected: " +
                        std::to_wstring(selected);
    if (selected > 0)
        text += L" (" + Number(control, L"SelectedValidLockCount") + L" valid, " +
                Number(control, L"SelectedInvalidLockCount") + L" invalid, " +
                Number(control, L"SelectedDeletableLockCount") + L" deletable), " +
                control.EnumName(L"LockDeleteTypes", control.Get(L"SelectedLockDeleteType").Long());
    SetField(idCounts, text);
    EnableWindow(Field(idDelete), selected > 0);
}

HWND LocksPage::ListWindow() const {
    HWND list = manager->Window();
    while (list && !FindWindowExW(list, nullptr, WC_LISTVIEWW, nullptr)) list = GetWindow(list, GW_CHILD);
    return list ? FindWindowExW(list, nullptr, WC_LISTVIEWW, nullptr) : nullptr;
}

// As a user would, in the list of the control.
void LocksPage::SelectRows(int count) const {
    const HWND list = ListWindow();
    SetFocus(manager->Window());
    for (int row = 0; row < count; ++row)
        ListView_SetItemState(list, row, LVIS_SELECTED | (row == 0 ? LVIS_FOCUSED : 0), LVIS_SELECTED | LVIS_FOCUSED);
}

void LocksPage::ClickHeader(int column) const {
    const HWND header = ListView_GetHeader(ListWindow());
    RECT place{};
    Header_GetItemRect(header, column, &place);
    const LPARAM middle = MAKELPARAM((place.left + place.right) / 2, (place.top + place.bottom) / 2);
    SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    SendMessageW(header, WM_LBUTTONUP, 0, middle);
}

std::vector<PageState> LocksPage::States() {
    std::vector<PageState> states = {{L"empty", [] {}}};
    const std::wstring file = context.options.file;
    if (file.empty()) return states;
    states.push_back({L"all", [this] {
                          SetChecked(idAdministrator, true);
                          List(true);
                      }});
    states.push_back({L"selected", [this] {
                          SetField(idUser, L"anna");
                          SetChecked(idAdministrator, false);
                          List(false);
                          SelectRows(4);
                          ShowCounts();
                      }});
    states.push_back({L"sorted", [this] { ClickHeader(4); }, {{L"LockManager", manager->Window()}}});
    states.push_back({L"invalid", [this] {
                          SetChoice(idDisplay, 4);
                          List(false);
                      }});
    if (!IsFile(file)) return states;
    states.push_back({L"error", [this, file] {
                          SetField(idConnection, file + L".missing");
                          List(false);
                      }});
    return states;
}

std::vector<StartStep> LocksPage::Steps() {
    return {{9, L"locks", L"the locks that no running program can hold any more",
             [this] {
                 SetChoice(idDisplay, 4);
                 List(false);
                 SelectRows(static_cast<int>(Manager().Get(L"LockCount").Long()));
                 ShowCounts();
             }},
            {10, L"cleared", L"they are deleted", [this] { Delete(); }}};
}

} // namespace dax::workbench
