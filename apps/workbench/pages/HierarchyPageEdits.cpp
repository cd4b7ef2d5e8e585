// Loading, saving and editing on the hierarchy page.
#include "pages/HierarchyPage.h"

#include "base/Enumerations.h"
#include "base/ErrorNumbers.h"
#include "pages/EditLocks.h"
#include "ui/Input.h"

#include <algorithm>
#include <string>

namespace dax::workbench {

bool HierarchyPage::MayClose() { return ConfirmDiscard(L"Save the changes of the hierarchy?"); }

bool HierarchyPage::Load() {
    if (!editor || context.busy || !ConfirmDiscard(L"Save the changes of the hierarchy before it is loaded again?"))
        return false;
    Read();
    return true;
}

void HierarchyPage::Read() {
    Run([this] {
        ShowResult(L"Loading\u2026", Tone::Plain);
        failure.clear();
        const std::wstring source = TakeConnection();
        const std::wstring title = source == context.catalog.source ? context.catalog.title : CatalogOf(source);
        context.selection = {source, {}, {}, false, Editor()};
        Editor().Set(L"ConnectionString", ConnectionFor(source));
        Editor().Set(L"DatabaseTitle", title.empty() ? L"velmora database" : title);
        const bool isLoaded = Call(*editor, ControlName, L"LoadDatabase").Bool();
        isChanged = false;
        ShowSelection();
        const long entries = std::max(Editor().Get(L"NodeCount").Long() - 1, 0L);
        if (isLoaded)
            ShowResult(std::to_wstring(entries) + (entries == 1 ? L" entry loaded." : L" entries loaded."), Tone::Good);
        else
            ShowResult(L"Not loaded: " + failure, Tone::Bad);
    });
}

bool HierarchyPage::Save() {
    Apply();
    if (!editor || !isChanged) return true;
    bool isSaved = false;
    failureNumber.clear();
    Run([&] {
        failure.clear();
        isSaved = Call(*editor, ControlName, L"SaveDatabase").Bool();
        if (isSaved) isChanged = false;
        ShowResult(isSaved ? L"Saved." : L"Nothing was saved: " + failure, isSaved ? Tone::Good : Tone::Bad);
        EnableTools();
    });
    if (!isSaved && failureNumber == std::to_wstring(ErrorNumbers::Conflict)) OfferToLoad();
    return isSaved;
}

void HierarchyPage::OfferToLoad() {
    const Question question{L"Nothing was saved: another author has changed the hierarchy.",
                            failure,
                            {{IDYES, L"&Load again (your edits are lost)"}, {IDCANCEL, L"&Keep editing"}},
                            IDCANCEL,
                            IDCANCEL,
                            true};
    if (context.ask(question) == IDYES) Read();
}

void HierarchyPage::Add(bool isGroup) {
    Edit([&] {
        const Automation utility = context.library.CreateObject(L"ContentObjects.Utility");
        Call(*editor, ControlName, L"AddLesson",
             {utility.Call(L"NewIdentifier"), isGroup ? L"New group" : L"New lesson", L"",
              isGroup ? ltGroup : ltLesson});
        ShowResult(isGroup ? L"A group was added; F2 leads to its title."
                           : L"A lesson was added; F2 leads to its title.",
                   Tone::Plain);
    });
}

void HierarchyPage::Store(const Entry& typed, const Entry& before) {
    const auto stored = [this](const wchar_t* question) { return Editor().Call(question, {shownID}); };
    Call(*editor, ControlName, L"UpdateLesson",
         {shownID, typed.title == before.title ? stored(L"GetLessonTitle") : Variant(typed.title),
          typed.identifier == before.identifier ? stored(L"GetLessonIdentifier") : Variant(typed.identifier),
          typed.type == before.type ? stored(L"GetLessonType") : Variant(static_cast<long>(typed.type))});
}

void HierarchyPage::FocusTree() const {
    if (editor) SetFocus(editor->Window());
}

void HierarchyPage::UndoOrRedo(bool isUndo) {
    Edit([&] {
        Call(*editor, ControlName, isUndo ? L"Undo" : L"Redo");
        ShowResult(isUndo ? L"Undone; not yet saved." : L"Done again; not yet saved.", Tone::Plain);
    });
}

void HierarchyPage::Find() {
    const std::wstring requested = FieldText(idSearch);
    if (requested.empty()) return FocusField(idSearch);
    Edit([&] {
        const bool isFound =
            !Call(*editor, ControlName, L"FindLesson", {requested, ftTitle | ftIdentifier | ftID, true}).Text().empty();
        ShowResult(isFound ? L"Found." : L"Nothing else is found.", isFound ? Tone::Good : Tone::Bad);
    });
}

void HierarchyPage::Remove() {
    if (!editor || context.busy || CurrentID().empty()) return;
    const std::wstring id = CurrentID();
    Question question = AskToRemove(Editor().Call(L"GetLessonTitle", {id}).Text(),
                                    Editor().Call(L"GetChildLessonCount", {id}).Long(), L"entries");
    std::vector<std::wstring> removed;
    const Automation ids(Editor().Call(L"GetChildLessonIDCollection", {id}).Object());
    const long count = ids.Get(L"Count").Long();
    for (long i = 1; i <= count; ++i) removed.push_back(ids.Call(L"Item", {i}).Text());
    if (const std::wstring holders = DescribeEditLocks(ConnectionFor(context.selection.source), removed);
        !holders.empty()) {
        question.text += (question.text.empty() ? L"" : L"\n\n") + holders;
        question.byDefault = IDCANCEL;
        question.isWarning = true;
    }
    const int answer = context.ask(question);
    if (answer != IDYES && answer != IDNO) return;
    const bool withChildren = answer == IDYES;
    Edit([&] {
        Call(*editor, ControlName, L"RemoveLesson", {id, withChildren});
        ShowResult(L"Removed; not yet saved.", Tone::Plain);
    });
}

void HierarchyPage::Move(int tool) {
    Edit([&] { Call(*editor, ControlName, L"MoveCurrent", {static_cast<long>(tool - idUp + 1)}); });
}

void HierarchyPage::Display(int tool) {
    Edit([&] {
        if (tool == idExpandAll) Call(*editor, ControlName, L"ExpandAll");
        if (tool == idCollapseAll) Call(*editor, ControlName, L"CollapseAll");
        if (tool != idFreeze) return;
        isFrozen = !isFrozen;
        tools.Press(idFreeze, isFrozen);
        Call(*editor, ControlName, isFrozen ? L"LockDisplay" : L"UnlockDisplay");
    });
}

} // namespace dax::workbench
