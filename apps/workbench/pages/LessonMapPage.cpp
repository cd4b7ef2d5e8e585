#include "pages/LessonMapPage.h"

#include "base/Enumerations.h"
#include "pages/LessonStore.h"
#include "ui/Input.h"

#include <algorithm>
#include <utility>

namespace dax::workbench {

namespace {

enum Labels { labelLesson, labelTitle, labelIdentifier, labelType, labelSearch };

std::wstring Count(long number, const wchar_t* word) {
    return std::to_wstring(number) + L" " + word + (number == 1 ? L"" : L"s");
}

} // namespace

LessonMapPage::~LessonMapPage() {
    shownPage = {};
    opened = {};
    editor.reset();
    Destroy();
}

std::wstring LessonMapPage::Explanation() const {
    return L"LessonMapEditor shows the storyboards of a lesson, map by map. A double click on a lesson of the "
           L"hierarchy "
           L"page opens it here.";
}

void LessonMapPage::Build() {
    labels.push_back(AddLabel(L"Lesson:"));
    AddOutput(idEntry);
    AddToolbar(idToolbar,
               {{idSave, Icon::Save, L"Save the lesson into its database (Ctrl+S)", L"Save"},
                {},
                {idAddStoryboard, Icon::AddLesson, L"Add a page after the selected one (Ctrl+L)", L"Page"},
                {idRemove, Icon::Remove, L"Remove the selected page (Del)"},
                {},
                {idUp, Icon::Up, L"Move up (Alt+Up)"},
                {idDown, Icon::Down, L"Move down (Alt+Down)"},
                {idOutdent, Icon::Outdent, L"One level out (Alt+Left)"},
                {idIndent, Icon::Indent, L"One level in (Alt+Right)"},
                {idPreviousMap, Icon::PreviousMap, L"To the previous map (Alt+Page Up)"},
                {idNextMap, Icon::NextMap, L"To the next map (Alt+Page Down)"},
                {},
                {idExpandAll, Icon::ExpandAll, L"Expand all (Ctrl+E)"},
                {idCollapseAll, Icon::CollapseAll, L"Collapse all (Ctrl+W)"},
                {},
                {idCheckAll, Icon::CheckAll, L"Check all (Ctrl+K)"},
                {idUncheckAll, Icon::UncheckAll, L"Uncheck all (Ctrl+U)"},
                {},
                {idFreeze, Icon::Freeze, L"Lock the display: it shows no change (Ctrl+D)", L"Lock display", true}});
    editor = AddControl(idMap, true, ControlName, [this](const ControlEvent& event) { OnControlEvent(event); });
    if (editor) Frame(editor->Window());
    labels.push_back(AddLabel(L"&Title:"));
    AddEdit(idTitle);
    labels.push_back(AddLabel(L"&Identifier:"));
    AddEdit(idIdentifier);
    labels.push_back(AddLabel(L"&Kind:"));
    AddChoice(idType, {L"title", L"text", L"picture", L"video", L"audio", L"animation", L"question", L"exercise",
                       L"simulation", L"test", L"summary", L"menu"});
    AddButton(idUpdate, L"&Update");
    labels.push_back(AddLabel(L"&Search:"));
    AddEdit(idSearch, L"A title, an identifier or an SBID");
    AddButton(idFind, L"&Find next");
    AddCheck(idWrap, L"&Wrap around");
    AddCheck(idExact, L"Whole fi&eld");
    AddCheck(idCheckboxes, L"Check &boxes");
    AddCheck(idDragDrop, L"&Drag and drop");
    AddCheck(idLocked, L"L&ocked");
    AddCheck(idDefaultMapOnly, L"Default &map only");
    AddCheck(idByIdentifier, L"Captio&ns by identifier");
    AddOutput(idCounts);
    AddOutput(idResult);
    for (int id : {idWrap, idDragDrop}) SetChecked(id, true);
    if (editor) ShowSelection();
}

void LessonMapPage::Arrange(int top, int bottom) {
    const Style& style = context.style;
    const int lesson = Left() + style.TextWidth(L"Lesson:") + style.Scale(12);
    int y = PlaceRow(labels[labelLesson], idEntry, top, Left(), lesson, Right());
    y = PlaceToolbar(y - style.Scale(4));
    const int resultTop = bottom - style.FieldHeight();
    Place(Field(idResult), Left(), resultTop, Right(), bottom);
    const int below = std::max(resultTop - style.Gap(), y);

    const int middle = Right() - std::clamp((Right() - Left()) * 2 / 5, style.Scale(240), style.Scale(360));
    if (editor) Place(editor->Window(), Left() + 1, y + 1, middle - style.Margin(), below - 1);
    const int fieldLeft = middle + style.TextWidth(L"Identifier:") + style.Scale(12);
    y = PlaceRow(labels[labelTitle], idTitle, y, middle, fieldLeft, Right());
    y = PlaceRow(labels[labelIdentifier], idIdentifier, y, middle, fieldLeft, Right());
    const auto besideButton = [&](int label, int field, int button) {
        const int left = Right() - style.ButtonWidth(FieldText(button));
        Place(Field(button), left, y - style.Scale(1), Right(), y + style.ButtonHeight() - style.Scale(1));
        y = PlaceRow(labels[static_cast<size_t>(label)], field, y, middle, fieldLeft, left - style.Gap());
    };
    besideButton(labelType, idType, idUpdate);
    y += style.Margin();
    besideButton(labelSearch, idSearch, idFind);
    PlaceCheck(idExact, PlaceCheck(idWrap, fieldLeft, y), y);
    y += style.FieldHeight() + style.Margin();
    const int second = middle + (Right() - middle) / 2;
    PlaceCheck(idDragDrop, second, y);
    PlaceCheck(idCheckboxes, middle, y);
    y += style.FieldHeight();
    PlaceCheck(idDefaultMapOnly, second, y);
    PlaceCheck(idLocked, middle, y);
    y += style.FieldHeight();
    PlaceCheck(idByIdentifier, middle, y);
    y += style.FieldHeight() + style.Gap();
    Place(Field(idCounts), middle, y, Right(), std::min(y + style.FieldHeight(), below));
}

std::vector<Shortcut> LessonMapPage::Shortcuts() const {
    return {{'S', true, false, idSave},
            {'L', true, false, idAddStoryboard},
            {'E', true, false, idExpandAll},
            {'W', true, false, idCollapseAll},
            {'D', true, false, idFreeze},
            {'K', true, false, idCheckAll},
            {'U', true, false, idUncheckAll},
            {VK_UP, false, true, idUp},
            {VK_DOWN, false, true, idDown},
            {VK_LEFT, false, true, idOutdent},
            {VK_RIGHT, false, true, idIndent},
            {VK_F2, false, false, idRename},
            {VK_PRIOR, false, true, idPreviousMap},
            {VK_NEXT, false, true, idNextMap},
            {VK_F3, false, false, idFind},
            {'F', true, false, idSearchFor}};
}

std::vector<MenuEntry> LessonMapPage::Menu() const {
    std::vector<MenuEntry> entries = {{idRename, L"Re&name\tF2", IsWindowEnabled(Field(idTitle)) != FALSE}, {}};
    const std::vector<MenuEntry> fromTools = tools.Menu();
    entries.insert(entries.end(), fromTools.begin(), fromTools.end());
    const bool isOpen = static_cast<bool>(opened.lesson);
    const std::vector<MenuEntry> last = {{},
                                         {idSearchFor, L"&Find\u2026\tCtrl+F", isOpen},
                                         {idFind, L"Find ne&xt\tF3", isOpen},
                                         {},
                                         {idRefresh, L"&Draw again\tF5", isOpen}};
    entries.insert(entries.end(), last.begin(), last.end());
    return entries;
}

int LessonMapPage::DefaultButton() const {
    if (HasFocus(idMap)) return 0;
    return HasFieldFocus() ? idUpdate : idFind;
}

void LessonMapPage::Command(int id, int notification) {
    if (!editor || HandleFieldNotification(id, notification)) return;
    if (notification == 0) Apply();
    if (id == idRefresh) Refresh();
    if (id == idSave) Save();
    if (id == idAddStoryboard) Add();
    if (id == idUpdate) SetFocus(editor->Window()); // what was typed is applied
    if (id == idRemove) Remove();
    if (id >= idUp && id <= idPreviousMap) Move(id);
    if (id == idExpandAll || id == idCollapseAll || id == idCheckAll || id == idUncheckAll || id == idFreeze)
        Display(id);
    if (id == idFind && notification == BN_CLICKED) Find();
    if (id == idSearchFor) FocusField(idSearch);
    if (id == idContextMenu) ShowMenuAt(std::exchange(menuPlace, POINT{-1, -1}));
    if (id == idRename) FocusField(idTitle);
    const bool isOption =
        id == idCheckboxes || id == idDragDrop || id == idLocked || id == idDefaultMapOnly || id == idByIdentifier;
    if (isOption && notification == BN_CLICKED) SetOption(id);
}

void LessonMapPage::OnControlEvent(const ControlEvent& event) {
    if (event.name == L"AfterSelectionChange") {
        if (!context.busy) ClearResult();
        ShowSelection();
    }
    if (event.name == L"ItemChecked") ShowCounts();
    if (event.name == L"MapChanged") {
        isChanged = true;
        if (!context.busy) ClearResult();
        ShowCounts();
        EnableTools();
    }
    if (event.name == L"Error") ShowResult(event.Argument(L"Description"), Tone::Bad);
    if (event.name == L"DeleteRequest") Later(idRemove);
    if (event.name == L"ContextMenuRequest") Later(idContextMenu);
}

// The control reports a right click by its event, and the system where it was.
void LessonMapPage::RightClicked(HWND window, POINT at) {
    if (window != Field(idMap) && !IsChild(Field(idMap), window)) return FormPage::RightClicked(window, at);
    menuPlace = at;
    if (!context.busy) SelectAt(window, at);
}

void LessonMapPage::OpenLesson() {
    Apply();
    if (!editor || context.busy || !context.selection.isLesson) return;
    if (!ConfirmDiscard(L"Save the changes of the lesson that is open before another one is opened?")) return;
    Run([this] {
        const Selection& selection = context.selection;
        Opened next{ConnectionFor(selection.source), selection.lessonID, selection.title, {}};
        const std::wstring text = ReadLessonData(next.connection, next.lessonID);
        next.lesson = context.library.CreateObject(L"ContentObjects.Lesson");
        if (Trim(text).empty())
            AddDefaultMap(next.lesson);
        else
            next.lesson.Call(L"Load", {text});
        shownPage = {};
        opened = next;
        isChanged = false;
        Editor().Set(L"Lesson", opened.lesson.Object());
        SetField(idEntry, opened.title);
        ShowSelection();
        ShowResult(Trim(text).empty() ? L"Opened; the lesson has no pages yet." : L"Opened.", Tone::Good);
    });
}

// A lesson without content yet.
void LessonMapPage::AddDefaultMap(const Automation& lesson) const {
    const Automation map = context.library.CreateObject(L"ContentObjects.StoryboardMap");
    map.Set(L"Name", L"Main");
    const Automation maps(lesson.Get(L"Maps").Object());
    maps.Call(L"Add", {map.Object()});
    maps.Set(L"DefaultMap", map.Object());
}

void LessonMapPage::EditLesson(const std::function<void()>& work) {
    if (opened.lesson)
        Edit(work);
    else if (editor)
        ShowResult(L"Open a lesson first, by a double click on the hierarchy page.", Tone::Plain);
}

void LessonMapPage::Refresh() {
    EditLesson([this] { Call(*editor, ControlName, L"Refresh"); });
}

bool LessonMapPage::MayClose() { return ConfirmDiscard(L"Save the changes of the lesson?"); }

bool LessonMapPage::Save() {
    Apply();
    if (!editor || !isChanged) return true;
    Run([&] {
        WriteLessonData(opened.connection, opened.lessonID, opened.lesson.Call(L"Save").Text());
        isChanged = false;
        ShowResult(L"Saved.", Tone::Good);
        EnableTools();
    });
    return !isChanged;
}

void LessonMapPage::Add() {
    EditLesson([this] {
        const Automation storyboard = context.library.CreateObject(L"ContentObjects.Storyboard");
        storyboard.Set(L"Title", L"New page");
        storyboard.Set(L"StoryboardType", L"text");
        Call(*editor, ControlName, L"AddStoryboard", {storyboard.Object()});
        ShowResult(L"A page was added; F2 leads to its title.", Tone::Plain);
    });
}

void LessonMapPage::Store(const Entry& typed, const Entry& before) {
    const Automation storyboard = shownPage;
    if (typed.title != before.title) storyboard.Set(L"Title", typed.title);
    if (typed.identifier != before.identifier) storyboard.Set(L"Identifier", typed.identifier);
    if (typed.type >= 0 && typed.type != before.type) {
        wchar_t name[64] = L"";
        SendMessageW(Field(idType), CB_GETLBTEXT, static_cast<WPARAM>(typed.type), reinterpret_cast<LPARAM>(name));
        storyboard.Set(L"StoryboardType", name);
    }
    Call(*editor, ControlName, L"UpdateStoryboard", {storyboard.Object()});
}

void LessonMapPage::Remove() {
    if (!editor || context.busy || !opened.lesson) return;
    const Automation storyboard = Current();
    if (!storyboard) return;
    const int answer =
        context.ask(AskToRemove(storyboard.Get(L"Title").Text(),
                                Editor().Call(L"GetChildStoryboardCount", {storyboard.Get(L"SBID")}).Long(), L"pages"));
    if (answer != IDYES && answer != IDNO) return;
    EditLesson([&] {
        Call(*editor, ControlName, L"RemoveStoryboard", {storyboard.Object(), answer == IDYES});
        isChanged = true;
        ShowResult(L"Removed; not yet saved.", Tone::Plain);
    });
}

void LessonMapPage::Move(int tool) {
    EditLesson([&] { Call(*editor, ControlName, L"MoveCurrent", {static_cast<long>(tool - idUp + 1)}); });
}

void LessonMapPage::Display(int tool) {
    EditLesson([&] {
        if (tool == idExpandAll) Call(*editor, ControlName, L"ExpandAll");
        if (tool == idCollapseAll) Call(*editor, ControlName, L"CollapseAll");
        if (tool == idCheckAll) Call(*editor, ControlName, L"CheckAllStoryboards");
        if (tool == idUncheckAll) Call(*editor, ControlName, L"UncheckAllStoryboards");
        if (tool != idFreeze) return;
        isFrozen = !isFrozen;
        tools.Press(idFreeze, isFrozen);
        Call(*editor, ControlName, isFrozen ? L"LockDisplay" : L"UnlockDisplay");
    });
}

void LessonMapPage::Find() {
    const std::wstring text = FieldText(idSearch);
    if (text.empty()) return FocusField(idSearch);
    EditLesson([&] {
        const std::wstring found = Call(*editor, ControlName, L"FindNextSBID",
                                        {text, ftTitle | ftIdentifier | ftID, Checked(idExact), Checked(idWrap)})
                                       .Text();
        if (!found.empty()) Editor().Set(L"CurrentSBID", found);
        ShowResult(found.empty() ? L"Nothing else is found." : L"Found.", found.empty() ? Tone::Bad : Tone::Good);
    });
}

// Without a lesson the options work, too.
void LessonMapPage::SetOption(int id) {
    if (!editor) return;
    Run([&] {
        if (id == idCheckboxes) Editor().Set(L"Checkboxes", Checked(id));
        if (id == idDragDrop) Editor().Set(L"AllowDragDrop", Checked(id));
        if (id == idLocked) Editor().Set(L"Locked", Checked(id));
        if (id == idDefaultMapOnly) Editor().Set(L"ShowDefaultMapOnly", Checked(id));
        if (id == idByIdentifier) Editor().Set(L"CaptionStyle", Checked(id) ? csIdentifier : csTitle);
        ShowSelection();
    });
}

Automation LessonMapPage::Current() const { return Automation(Editor().Get(L"CurrentStoryboard").Object()); }

void LessonMapPage::SelectType(const std::wstring& type) {
    const HWND list = Field(idType);
    SetChoice(idType, -1);
    const LRESULT place =
        SendMessageW(list, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(type.c_str()));
    if (place != CB_ERR) SetChoice(idType, static_cast<int>(place));
}

void LessonMapPage::ShowSelection() {
    const Automation storyboard = opened.lesson ? Current() : Automation();
    if (IsTyped() && storyboard.Object().Get() != shownPage.Object().Get()) Update(); // the fields were not left before
    SetField(idTitle, storyboard ? storyboard.Get(L"Title").Text() : L"");
    SetField(idIdentifier, storyboard ? storyboard.Get(L"Identifier").Text() : L"");
    SelectType(storyboard ? storyboard.Get(L"StoryboardType").Text() : L"");
    EnableFields(static_cast<bool>(storyboard));
    shownPage = storyboard;
    shown = Typed();
    ShowCounts();
    EnableTools();
}

void LessonMapPage::ShowCounts() {
    if (!opened.lesson) {
        SetField(idEntry, L"none");
        SetField(idCounts, L"");
        return;
    }
    const Automation pages(opened.lesson.Get(L"Storyboards").Object());
    const Automation maps(opened.lesson.Get(L"Maps").Object());
    SetField(idCounts, Count(pages.Get(L"Count").Long(), L"page") + L" in " + Count(maps.Get(L"Count").Long(), L"map") +
                           L", " + std::to_wstring(Editor().Get(L"CheckedStoryboardCount").Long()) + L" checked");
}

void LessonMapPage::EnableTools() {
    const bool isOpen = static_cast<bool>(opened.lesson);
    for (int id : {idAddStoryboard, idExpandAll, idCollapseAll, idFreeze}) tools.Enable(id, isOpen);
    for (int id : {idCheckAll, idUncheckAll}) tools.Enable(id, isOpen && Checked(idCheckboxes));
    tools.Enable(idRemove, isOpen && static_cast<bool>(Current()));
    tools.Enable(idSave, isOpen && isChanged);
    for (int id = idUp; id <= idPreviousMap; ++id)
        tools.Enable(id, isOpen && Editor().Call(L"CanMoveCurrent", {static_cast<long>(id - idUp + 1)}).Bool());
}

// By its place in the lesson's first map, counted from 1.
void LessonMapPage::SelectPage(long place) const {
    const Automation tree(Editor().Get(L"tvwObject").Object());
    const Automation nodes(tree.Get(L"Nodes").Object());
    if (place + 1 > nodes.Get(L"Count").Long()) return;
    const Automation node(nodes.Call(L"Item", {place + 1}).Object());
    Editor().Set(L"CurrentSBID", node.Get(L"Key"));
}

std::vector<PageState> LessonMapPage::States() {
    std::vector<PageState> states = {{L"empty", [] {}}};
    if (!context.selection.isLesson) return states;
    states.push_back({L"opened", [this] {
                          OpenLesson();
                          SelectPage(3);
                          Display(idExpandAll);
                          SetFocus(editor->Window());
                      }});
    states.push_back({L"checked",
                      [this] {
                          SetChecked(idCheckboxes, true);
                          SetOption(idCheckboxes);
                          Display(idCheckAll);
                      },
                      {{L"LessonMapEditor", editor->Window()}}});
    states.push_back({L"identifiers", [this] {
                          SetChecked(idCheckboxes, false);
                          SetOption(idCheckboxes);
                          SetChecked(idByIdentifier, true);
                          SetOption(idByIdentifier);
                      }});
    states.push_back({L"found", [this] {
                          SetChecked(idByIdentifier, false);
                          SetOption(idByIdentifier);
                          SetField(idSearch, L"e");
                          Find();
                      }});
    states.push_back({L"edited", [this] {
                          Add();
                          SetField(idTitle, L"A page of today \u2013 \u043D\u043E\u0432\u0430\u044F");
                          SetField(idIdentifier, L"NEW-1");
                          Apply();
                          Move(idNextMap);
                      }});
    return states;
}

std::vector<StartStep> LessonMapPage::Steps() {
    return {{7, L"edited", L"a page has a new title and a new place",
             [this] {
                 Display(idExpandAll);
                 SelectPage(2);
                 SetField(idTitle, L"A page of today");
                 Apply();
                 Move(idDown);
             }},
            {8, L"saved", L"the lesson is saved", [this] { Save(); }}};
}

} // namespace dax::workbench
