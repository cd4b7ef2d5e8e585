#include "pages/HierarchyPage.h"

#include "base/Enumerations.h"
#include "ui/Input.h"

#include <algorithm>

namespace dax::workbench {

namespace {

constexpr wchar_t lessonInfoName[] = L"LessonInfo";
constexpr wchar_t lockInfoName[] = L"LockInfo";
constexpr int panelSpace = 5; // between a panel and its border

} // namespace

HierarchyPage::~HierarchyPage() {
    context.selection = {};
    lockInfo.reset();
    lessonInfo.reset();
    editor.reset();
    Destroy();
}

std::wstring HierarchyPage::Explanation() const {
    return L"GroupEditor shows and edits the tree; LessonInfo and LockInfo describe the selected entry. A double click "
           L"opens a lesson's map.";
}

void HierarchyPage::Build() {
    connectionLabel = AddLabel(L"File or &connection:");
    AddEdit(idConnection, L"A database file, or a connection string");
    AddButton(idBrowse, L"&Browse\u2026");
    AddButton(idLoad, L"&Load", true);
    AddToolbar(idToolbar,
               {{idSave, Icon::Save, L"Save the changes in one transaction (Ctrl+S)", L"Save"},
                {},
                {idUndo, Icon::Undo, L"Undo (Ctrl+Z)"},
                {idRedo, Icon::Redo, L"Redo (Ctrl+Y)"},
                {},
                {idAddGroup, Icon::AddGroup, L"Add a group after the selected entry (Ctrl+G)", L"Group"},
                {idAddLesson, Icon::AddLesson, L"Add a lesson after the selected entry (Ctrl+L)", L"Lesson"},
                {idRemove, Icon::Remove, L"Remove the selected entry (Del)"},
                {},
                {idUp, Icon::Up, L"Move up (Alt+Up)"},
                {idDown, Icon::Down, L"Move down (Alt+Down)"},
                {idOutdent, Icon::Outdent, L"One level out (Alt+Left)"},
                {idIndent, Icon::Indent, L"One level in (Alt+Right)"},
                {},
                {idExpandAll, Icon::ExpandAll, L"Expand all (Ctrl+E)"},
                {idCollapseAll, Icon::CollapseAll, L"Collapse all (Ctrl+W)"},
                {},
                {idFreeze, Icon::Freeze, L"Lock the display: it shows no change (Ctrl+D)", L"Lock display", true}});
    searchLabel = AddLabel(L"&Find:");
    AddEdit(idSearch, L"A title, an identifier or a lessonID");
    AddButton(idFind, L"Find ne&xt");
    editor = AddControl(idTree, true, ControlName, [this](const ControlEvent& event) { OnControlEvent(event); });
    if (editor) Frame(editor->Window());
    titleLabel = AddLabel(L"&Title:");
    AddEdit(idTitle);
    identifierLabel = AddLabel(L"&Identifier:");
    AddEdit(idIdentifier);
    typeLabel = AddLabel(L"&Kind:");
    AddChoice(idType, {L"Group", L"Lesson", L"Other"});
    AddButton(idUpdate, L"&Update");
    lessonInfo = AddControl(idLessonInfo, false, lessonInfoName, {});
    if (lessonInfo) Frame(lessonInfo->Window(), panelSpace);
    lockInfo = AddControl(idLockInfo, false, lockInfoName, [this](const ControlEvent& event) {
        ShowResult(L"LockInfo: " + event.Argument(L"Description"), Tone::Bad);
    });
    if (lockInfo) Frame(lockInfo->Window(), panelSpace);
    AddCheck(idDragDrop, L"&Drag and drop");
    AddCheck(idLocked, L"L&ocked");
    AddCheck(idSingleExpand, L"Si&ngle expand");
    AddCheck(idShowIdentifier, L"Panel &shows identifier");
    AddOutput(idResult);
    for (int id : {idDragDrop, idShowIdentifier}) SetChecked(id, true);
    if (!lessonInfo || !lockInfo || !editor) {
        editor.reset(); // the page shows why, and does nothing
        return;
    }
    Editor().Set(L"ConflictCheck", true);
    EnableTools();
}

void HierarchyPage::Arrange(int top, int bottom) {
    const Style& style = context.style;
    const int fieldLeft = Left() + style.TextWidth(L"File or connection:") + style.Scale(12);
    const int load = Right() - style.ButtonWidth(FieldText(idLoad));
    const int browse = load - style.Gap() - style.ButtonWidth(FieldText(idBrowse));
    Place(Field(idLoad), load, top - style.Scale(1), Right(), top + style.ButtonHeight() - style.Scale(1));
    Place(Field(idBrowse), browse, top - style.Scale(1), load - style.Gap(),
          top + style.ButtonHeight() - style.Scale(1));
    int y = PlaceRow(connectionLabel, idConnection, top, Left(), fieldLeft, browse - style.Gap());
    y = PlaceToolbar(y);

    const int resultTop = bottom - style.FieldHeight();
    Place(Field(idResult), Left(), resultTop, Right(), bottom);
    const int checks = resultTop - style.FieldHeight();
    int x = PlaceCheck(idDragDrop, Left(), checks);
    x = PlaceCheck(idLocked, x, checks);
    x = PlaceCheck(idSingleExpand, x, checks);
    PlaceCheck(idShowIdentifier, x, checks);
    const int below = std::max(checks - style.Gap(), y);

    const int width = Right() - Left();
    const int middle = Right() - std::clamp(width * 2 / 5, style.Scale(200), style.Scale(360));
    const int searchLeft = Left() + style.TextWidth(L"Find:") + style.Scale(12);
    const int find = middle - style.Margin() - style.ButtonWidth(FieldText(idFind));
    Place(Field(idFind), find, y - style.Scale(1), middle - style.Margin(), y + style.ButtonHeight() - style.Scale(1));
    const int treeTop = PlaceRow(searchLabel, idSearch, y, Left(), searchLeft, find - style.Gap());
    if (editor) Place(editor->Window(), Left() + 1, treeTop + 1, middle - style.Margin() - 1, below - 1);
    const int entryLeft = middle + style.TextWidth(L"Identifier:") + style.Scale(12);
    int right = PlaceRow(titleLabel, idTitle, y, middle, entryLeft, Right());
    right = PlaceRow(identifierLabel, idIdentifier, right, middle, entryLeft, Right());
    const int update = Right() - style.ButtonWidth(FieldText(idUpdate));
    Place(Field(idUpdate), update, right - style.Scale(1), Right(), right + style.ButtonHeight() - style.Scale(1));
    right = PlaceRow(typeLabel, idType, right, middle, entryLeft, update - style.Gap());
    // A lock panel has four lines and a gap; the other panel takes what is left.
    const int space = style.Scale(panelSpace) + 1;
    const int locks = std::max(below - 5 * style.LineHeight() - 2 * space, right);
    const auto placePanel = [&](const std::unique_ptr<ControlHost>& panel, int above, int under) {
        if (panel) Place(panel->Window(), middle + space, above + space, Right() - space, under - space);
    };
    placePanel(lessonInfo, right, locks - style.Gap());
    placePanel(lockInfo, locks, below);
}

std::vector<Shortcut> HierarchyPage::Shortcuts() const {
    return {{'S', true, false, idSave},        {'G', true, false, idAddGroup},    {'L', true, false, idAddLesson},
            {'E', true, false, idExpandAll},   {'W', true, false, idCollapseAll}, {'D', true, false, idFreeze},
            {VK_UP, false, true, idUp},        {VK_DOWN, false, true, idDown},    {VK_LEFT, false, true, idOutdent},
            {VK_RIGHT, false, true, idIndent}, {VK_F2, false, false, idRename},   {VK_RETURN, true, false, idOpen},
            {'Z', true, false, idUndo},        {'Y', true, false, idRedo},        {'F', true, false, idSearchFor},
            {VK_F3, false, false, idFind}};
}

// A field takes back what was typed there; Enter opens a lesson in the tree alone.
bool HierarchyPage::HandleKey(const MSG& message) {
    const bool isKey = message.message == WM_KEYDOWN, isControl = GetKeyState(VK_CONTROL) < 0;
    if (isKey && isControl && (message.wParam == 'Z' || message.wParam == 'Y')) {
        const bool isField = (SendMessageW(message.hwnd, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0;
        if (isField && SendMessageW(message.hwnd, EM_CANUNDO, 0, 0)) return false;
    }
    if (isKey && !isControl && message.wParam == VK_RETURN && editor && HasFocus(idTree)) {
        Command(idOpen, 0);
        return true;
    }
    return FormPage::HandleKey(message);
}

std::vector<MenuEntry> HierarchyPage::Menu() const {
    std::vector<MenuEntry> entries = {{idOpen, L"&Open the lesson's map\tEnter", context.selection.isLesson},
                                      {idRename, L"Re&name\tF2", IsWindowEnabled(Field(idTitle)) != FALSE},
                                      {}};
    const std::vector<MenuEntry> fromTools = tools.Menu();
    entries.insert(entries.end(), fromTools.begin(), fromTools.end());
    const std::vector<MenuEntry> last = {{},
                                         {idSearchFor, L"&Find\u2026\tCtrl+F"},
                                         {idFind, L"Find ne&xt\tF3"},
                                         {},
                                         {idLoad, L"&Load again\tF5", !Trim(FieldText(idConnection)).empty()}};
    entries.insert(entries.end(), last.begin(), last.end());
    return entries;
}

int HierarchyPage::DefaultButton() const {
    if (HasFocus(idTree)) return 0; // Enter is the control's
    if (HasFocus(idSearch) || HasFocus(idFind)) return idFind;
    return HasFieldFocus() ? idUpdate : idLoad;
}

void HierarchyPage::Command(int id, int notification) {
    if (!editor || HandleFieldNotification(id, notification)) return;
    if (notification == 0) Apply();
    if (id == idBrowse && Browse(idConnection)) Load();
    if (id == idLoad) Load();
    if (id == idSave) Save();
    if (id == idAddGroup || id == idAddLesson) Add(id == idAddGroup);
    if (id == idUndo || id == idRedo) UndoOrRedo(id == idUndo);
    if (id == idUpdate) FocusTree(); // what was typed is applied
    if (id == idFind && notification == BN_CLICKED) Find();
    if (id == idSearchFor) FocusField(idSearch);
    if (id == idRemove) Remove();
    if (id >= idUp && id <= idOutdent) Move(id);
    if (id == idExpandAll || id == idCollapseAll || id == idFreeze) Display(id);
    if (id == idOpen && context.selection.isLesson && !context.busy) context.openLesson();
    if (id == idRename) FocusField(idTitle);
    const bool isOption = id == idDragDrop || id == idLocked || id == idSingleExpand || id == idShowIdentifier;
    if (isOption && notification == BN_CLICKED) SetOption(id);
}

// Questions and other pages wait until the control has finished its event.
void HierarchyPage::OnControlEvent(const ControlEvent& event) {
    if (event.name == L"AfterSelectionChange") {
        if (!context.busy) ClearResult();
        ShowSelection();
    }
    if (event.name == L"DataChanged") {
        isChanged = true;
        ShowSelection();
    }
    if (event.name == L"DeleteRequest") Later(idRemove);
    if (event.name == L"DblClick") Later(idOpen);
    if (event.name == L"Error") {
        failure = event.Argument(L"Description");
        failureNumber = event.Argument(L"Number");
    }
}

void HierarchyPage::Start() {
    SetField(idConnection, context.options.file);
    if (!context.options.file.empty() && context.options.shots.empty()) Load();
}

void HierarchyPage::CatalogChanged() {
    const std::wstring former = FieldText(idConnection);
    SetField(idConnection, context.catalog.source);
    if (!Load()) SetField(idConnection, former);
}

void HierarchyPage::SetOption(int id) {
    Edit([&] {
        if (id == idDragDrop) Editor().Set(L"AllowDragDrop", Checked(id));
        if (id == idLocked) Editor().Set(L"Locked", Checked(id));
        if (id == idSingleExpand) Editor().Set(L"SingleExpand", Checked(id));
        if (id == idShowIdentifier) lessonInfo->Control().Set(L"ShowIdentifier", Checked(id));
    });
}

std::wstring HierarchyPage::CurrentID() const { return Editor().Get(L"CurrentLessonID").Text(); }

void HierarchyPage::ShowSelection() {
    const std::wstring id = CurrentID();
    const long type = Editor().Call(L"GetLessonType", {id}).Long();
    const bool isEntry = !id.empty();
    if (shownID != id && IsTyped()) Update(); // the selection has moved on without the fields being left
    context.selection.lessonID = id;
    context.selection.title = Editor().Call(L"GetLessonTitle", {id}).Text();
    context.selection.isLesson = isEntry && type == ltLesson;
    SetField(idTitle, isEntry ? context.selection.title : L"");
    SetField(idIdentifier, Editor().Call(L"GetLessonIdentifier", {id}).Text());
    SetChoice(idType, !isEntry ? -1 : type == ltGroup || type == ltLesson ? static_cast<int>(type) : 2);
    shownID = id;
    shown = Typed();
    ShowPanels();
    EnableTools();
}

// A panel that cannot show the entry must not keep the other one from it.
void HierarchyPage::ShowPanels() {
    const bool isEmpty = Editor().Get(L"NodeCount").Long() == 0;
    const Variant shown(isEmpty ? ComPtr<IDispatch>() : Editor().Object());
    for (const auto& [panel, name] :
         {std::pair(lessonInfo.get(), lessonInfoName), std::pair(lockInfo.get(), lockInfoName)}) {
        try {
            panel->Control().Call(L"UpdateFrom", {shown});
            context.log.AddCall(name, L"UpdateFrom",
                                panel == lockInfo.get()
                                    ? L"done, LockCount " + std::to_wstring(panel->Control().Get(L"LockCount").Long())
                                    : L"done");
        } catch (const HostError& error) {
            context.log.AddCall(name, L"UpdateFrom", L"failed: " + error.Text());
        }
    }
}

void HierarchyPage::EnableTools() {
    const bool isThere = Editor().Get(L"NodeCount").Long() > 0;
    const bool isEntry = isThere && !CurrentID().empty();
    EnableFields(isEntry);
    for (int id : {idAddGroup, idAddLesson, idExpandAll, idCollapseAll, idFreeze}) tools.Enable(id, isThere);
    tools.Enable(idRemove, isEntry);
    tools.Enable(idSave, isChanged);
    tools.Enable(idUndo, Editor().Get(L"CanUndo").Bool());
    tools.Enable(idRedo, Editor().Get(L"CanRedo").Bool());
    for (int id = idUp; id <= idOutdent; ++id)
        tools.Enable(id, isThere && Editor().Call(L"CanMoveCurrent", {static_cast<long>(id - idUp + 1)}).Bool());
}

// By its place in the tree, counted from 1.
void HierarchyPage::SelectEntry(long place) {
    const Automation all(Editor().Call(L"GetChildLessonIDCollection", {L""}).Object());
    if (place <= all.Get(L"Count").Long()) Editor().Set(L"CurrentLessonID", all.Call(L"Item", {place}));
}

// By its place among the lessons.
void HierarchyPage::SelectLesson(long place) {
    const Automation all(Editor().Call(L"GetChildLessonIDCollection", {L""}).Object());
    const long count = all.Get(L"Count").Long();
    for (long i = 1; i <= count; ++i) {
        const Variant id = all.Call(L"Item", {i});
        if (Editor().Call(L"GetLessonType", {id}).Long() != ltLesson || --place > 0) continue;
        Editor().Set(L"CurrentLessonID", id);
        return;
    }
}

// The last one leaves a lesson selected, for the pages that go by it.
std::vector<PageState> HierarchyPage::States() {
    std::vector<PageState> states = {{L"empty", [] {}}};
    const std::wstring file = context.options.file;
    if (file.empty()) return states;
    if (IsFile(file))
        states.push_back({L"error", [this, file] {
                              SetField(idConnection, file + L".missing");
                              Load();
                          }});
    states.push_back({L"database", [this, file] {
                          SetField(idConnection, file);
                          Load();
                          SetFocus(editor->Window());
                      }});
    states.push_back({L"group", [this] {
                          Display(idExpandAll);
                          SelectEntry(2);
                      }});
    states.push_back({L"edited", [this] {
                          SelectEntry(3);
                          Add(false);
                          Move(idDown);
                          SetField(idTitle, L"A lesson of today \u2013 \u043D\u043E\u0432\u044B\u0439");
                          SetField(idIdentifier, L"NEW-1");
                          Apply();
                      }});
    states.push_back({L"lesson",
                      [this] {
                          Load();
                          SelectEntry(3);
                      },
                      {{L"GroupEditor", editor->Window()},
                       {L"LessonInfo", lessonInfo->Window()},
                       {L"LockInfo", lockInfo->Window()}}});
    const auto show = [this](int how) { return [this, how] { ShowWindow(GetAncestor(Handle(), GA_ROOT), how); }; };
    states.push_back({L"maximised", show(SW_MAXIMIZE)});
    states.push_back({L"restored", show(SW_RESTORE)}); // to look like the one before
    return states;
}

std::vector<StartStep> HierarchyPage::Steps() {
    return {{4, L"hierarchy", L"the hierarchy is loaded", [] {}},
            {5, L"selection", L"a lesson is selected, both panels follow",
             [this] {
                 Display(idExpandAll);
                 SelectLesson(2);
                 SetFocus(editor->Window());
             }},
            {6, L"lesson-map", L"the lesson is opened in the map editor", [this] { Command(idOpen, 0); }}};
}

} // namespace dax::workbench
