#include "ui/Question.h"

#include <commctrl.h>

namespace dax::workbench {

int AskUser(HWND owner, const Question& question) {
    std::vector<TASKDIALOG_BUTTON> buttons;
    for (const Question::Choice& choice : question.choices) buttons.push_back({choice.id, choice.text.c_str()});
    TASKDIALOGCONFIG box{};
    box.cbSize = sizeof box;
    box.hwndParent = owner;
    box.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_POSITION_RELATIVE_TO_WINDOW | TDF_SIZE_TO_CONTENT;
    box.pszWindowTitle = L"DAXWorkbench";
    box.pszMainIcon = question.isWarning ? TD_WARNING_ICON : TD_INFORMATION_ICON;
    box.pszMainInstruction = question.title.c_str();
    if (!question.text.empty()) box.pszContent = question.text.c_str();
    box.cButtons = static_cast<UINT>(buttons.size());
    box.pButtons = buttons.data();
    box.nDefaultButton = question.byDefault;
    int answer = 0;
    if (FAILED(TaskDialogIndirect(&box, &answer, nullptr, nullptr))) return question.choices.back().id;
    for (const Question::Choice& choice : question.choices)
        if (choice.id == answer) return answer;
    return question.choices.back().id;
}

Question AskToSave(const std::wstring& title) {
    return {title, {}, {{IDYES, L"&Save"}, {IDNO, L"Do&n't save"}, {IDCANCEL, L"Cancel"}}, IDYES, IDYES};
}

Question AskToRemove(const std::wstring& name, long below, const std::wstring& plural) {
    const std::wstring title = L"Remove \u201C" + name + L"\u201D", count = std::to_wstring(below);
    if (below == 0) return {title + L"?", {}, {{IDYES, L"&Remove"}, {IDCANCEL, L"Cancel"}}, IDYES, IDYES};
    if (below == 1)
        return {title + L"?",
                L"There is one entry in it.",
                {{IDYES, L"&Remove both"}, {IDNO, L"&Keep the one in it, one level up"}, {IDCANCEL, L"Cancel"}},
                IDCANCEL,
                IDYES};
    return {
        title + L"?",
        L"There are " + count + L" " + plural + L" in it.",
        {{IDYES, L"&Remove all " + count}, {IDNO, L"&Keep the " + count + L", one level up"}, {IDCANCEL, L"Cancel"}},
        IDCANCEL,
        IDYES};
}

} // namespace dax::workbench
