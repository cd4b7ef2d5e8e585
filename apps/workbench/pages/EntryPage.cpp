#include "pages/EntryPage.h"

#include <utility>

namespace dax::workbench {

void EntryPage::Apply() {
    if (!editor || context.busy || !IsTyped()) return;
    Edit([this] { Update(); });
}

void EntryPage::Edit(const std::function<void()>& work) {
    if (!editor) return;
    Run([&] {
        work();
        ShowSelection();
    });
}

bool EntryPage::ConfirmDiscard(const std::wstring& question) {
    Apply();
    if (!isChanged || !context.options.shots.empty()) return true;
    const int answer = context.ask(AskToSave(question));
    return answer == IDNO || (answer == IDYES && Save());
}

void EntryPage::Update() {
    const Entry typed = Typed();
    const Entry before = std::exchange(shown, typed); // handlers of the change see nothing typed
    try {
        Store(typed, before);
    } catch (const HostError&) {
        shown = before;
        throw;
    }
    isChanged = true;
    ShowResult(L"Updated; not yet saved.", Tone::Plain);
}

bool EntryPage::HandleFieldNotification(int id, int notification) {
    if (notification == 0 || (id != idTitle && id != idIdentifier && id != idType)) return false;
    const bool isLeft = notification == (id == idType ? CBN_KILLFOCUS : EN_KILLFOCUS);
    if (isLeft)
        Apply();
    else if (!context.busy)
        tools.Enable(idSave, isChanged || IsTyped());
    return true;
}

void EntryPage::EnableFields(bool enable) const {
    for (int id : {idTitle, idIdentifier, idType, idUpdate}) EnableWindow(Field(id), enable);
}

} // namespace dax::workbench
