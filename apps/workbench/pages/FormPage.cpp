#include "pages/FormPage.h"

#include "ui/Ids.h"
#include "ui/Input.h"

#include <algorithm>
#include <commctrl.h>
#include <commdlg.h>
#include <windowsx.h>

namespace dax::workbench {

namespace {

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

} // namespace

bool FormPage::Create(HWND parent, int id) {
    if (!CreateAs(L"DAXWorkbenchPage", L"", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT, parent,
                  id, {0, 0, 10, 10}))
        return false;
    AddLabel(Heading(), idHeading);
    AddLabel(Explanation(), idHint);
    Build();
    if (!problem.empty()) {
        // The page shows the reason instead of fields that would lead nowhere.
        for (HWND child = GetWindow(Handle(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            if (GetDlgCtrlID(child) != idHeading) ShowWindow(child, SW_HIDE);
        AddLabel(problem, idProblem);
        context.showStatus(problem.substr(0, problem.find(L'\n')));
    }
    StyleChanged();
    return true;
}

HWND FormPage::Add(const wchar_t* className, const std::wstring& text, DWORD style, DWORD extendedStyle, int id) {
    return CreateWindowExW(extendedStyle, className, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, 0, 10, 10,
                           Handle(), reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                           nullptr);
}

HWND FormPage::AddLabel(const std::wstring& text, int id) {
    const bool isText = id != idLabelDefault;
    return Add(WC_STATICW, text, isText ? SS_LEFT | SS_NOPREFIX : SS_LEFT | SS_CENTERIMAGE, 0,
               isText ? id : static_cast<int>(idLabel));
}

HWND FormPage::AddEdit(int id, const std::wstring& hint) {
    const HWND edit = Add(WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, id);
    SendMessageW(edit, EM_SETLIMITTEXT, 0, 0);
    if (!hint.empty()) SetHint(id, hint);
    return edit;
}

HWND FormPage::AddButton(int id, const std::wstring& text, bool isDefault) {
    return Add(WC_BUTTONW, text, WS_TABSTOP | static_cast<DWORD>(isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON), 0, id);
}

HWND FormPage::AddCheck(int id, const std::wstring& text) {
    return Add(WC_BUTTONW, text, WS_TABSTOP | BS_AUTOCHECKBOX, 0, id);
}

HWND FormPage::AddChoice(int id, std::initializer_list<const wchar_t*> choices) {
    const HWND list = Add(WC_COMBOBOXW, L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 0, id);
    for (const wchar_t* choice : choices) SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(choice));
    SetChoice(id, 0);
    return list;
}

void FormPage::AddToolbar(int id, const std::vector<Tool>& buttons) { tools.Create(Handle(), id, buttons); }

HWND FormPage::AddOutput(int id) {
    return Add(WC_STATICW, L"", SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE | SS_ENDELLIPSIS, 0, id);
}

std::unique_ptr<ControlHost> FormPage::AddControl(int id, bool tabStop, const std::wstring& name,
                                                  ControlEventHandler handler) {
    try {
        auto host = std::make_unique<ControlHost>(Handle(), id, tabStop, context.library, name,
                                                  [this, name, handler](const ControlEvent& event) {
                                                      context.log.AddEvent(name, event);
                                                      if (handler) handler(event);
                                                  });
        return host;
    } catch (const HostError& error) {
        Refuse(error.Text());
        return nullptr;
    }
}

std::wstring FormPage::FieldText(int id) const { return WindowText(Field(id)); }

void FormPage::SetField(int id, const std::wstring& text) { SetWindowTextW(Field(id), text.c_str()); }

std::wstring FormPage::TakeConnection() {
    const std::wstring typed = Trim(FieldText(idConnection)), shown = HidePassword(typed);
    if (shown != typed) SetField(idConnection, shown);
    return shown;
}

void FormPage::SetHint(int id, const std::wstring& hint) {
    SendMessageW(Field(id), EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(hint.c_str()));
}

bool FormPage::Checked(int id) const { return SendMessageW(Field(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }

void FormPage::SetChecked(int id, bool isChecked) const {
    SendMessageW(Field(id), BM_SETCHECK, isChecked ? BST_CHECKED : BST_UNCHECKED, 0);
}

int FormPage::Choice(int id) const { return static_cast<int>(SendMessageW(Field(id), CB_GETCURSEL, 0, 0)); }

void FormPage::SetChoice(int id, int choice) const {
    SendMessageW(Field(id), CB_SETCURSEL, static_cast<WPARAM>(choice), 0);
}

void FormPage::ShowResult(const std::wstring& text, Tone tone) {
    resultTone = tone;
    std::wstring line = text; // it has only one
    std::replace_if(
        line.begin(), line.end(), [](wchar_t c) { return c < L' '; }, L' ');
    SetField(idResult, line);
    InvalidateRect(Field(idResult), nullptr, TRUE);
}

int FormPage::Right() const {
    RECT area;
    GetClientRect(Handle(), &area);
    return area.right - context.style.Margin();
}

void FormPage::Place(HWND child, int left, int top, int right, int bottom) const {
    SetWindowPos(child, nullptr, left, top, std::max(right - left, 0), std::max(bottom - top, 0),
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

int FormPage::PlaceRow(HWND label, int id, int top, int labelLeft, int fieldLeft, int right) const {
    const int bottom = top + context.style.FieldHeight();
    if (label) Place(label, labelLeft, top, fieldLeft - context.style.Scale(4), bottom);
    wchar_t name[16] = L"";
    GetClassNameW(Field(id), name, 16);
    // The height of a drop-down list counts the list.
    const bool drops = CompareStringOrdinal(name, -1, WC_COMBOBOXW, -1, TRUE) == CSTR_EQUAL;
    Place(Field(id), fieldLeft, top, right, drops ? bottom + 10 * context.style.LineHeight() : bottom);
    return bottom + context.style.Gap();
}

int FormPage::PlaceButton(int id, int left, int top) const {
    const int right = left + context.style.ButtonWidth(FieldText(id));
    Place(Field(id), left, top, right, top + context.style.ButtonHeight());
    return right + context.style.Gap();
}

int FormPage::PlaceCheck(int id, int left, int top) const {
    const int right = left + context.style.TextWidth(FieldText(id)) + context.style.Scale(26);
    Place(Field(id), left, top, right, top + context.style.FieldHeight());
    return right + context.style.Gap();
}

int FormPage::PlaceToolbar(int top) const {
    const int bottom = top + tools.Height() + context.style.Scale(2);
    Place(tools.Window(), Left() - context.style.Scale(4), top, Right(), bottom);
    return bottom + context.style.Scale(4);
}

void FormPage::StyleChanged() {
    for (HWND child = GetWindow(Handle(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(child);
        if (ControlHost::IsHost(child) || child == tools.Window()) continue; // they have fonts of their own
        const HFONT font = id == idHeading ? context.style.Heading() : context.style.Plain();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    if (tools.Window()) tools.StyleChanged(context.style);
    ArrangeAll();
    InvalidateRect(Handle(), nullptr, TRUE);
}

void FormPage::ArrangeAll() {
    RECT area;
    GetClientRect(Handle(), &area);
    if (area.right < context.style.Scale(200)) return; // not yet in its place
    const Style& style = context.style;
    int top = style.Margin();
    Place(Field(idHeading), Left(), top, Right(), top + style.HeadingHeight());
    top += style.HeadingHeight() + style.Scale(2);
    const int bottom = top + style.WrappedHeight(Explanation(), Right() - Left());
    Place(Field(idHint), Left(), top, Right(), bottom);
    Arrange(bottom + style.Margin(), area.bottom - style.Margin());
    Place(Field(idProblem), Left(), bottom, Right(), area.bottom - style.Margin());
    InvalidateRect(Handle(), nullptr, TRUE);
}

bool FormPage::HandleKey(const MSG& message) {
    const bool control = GetKeyState(VK_CONTROL) < 0;
    const bool alt = message.message == WM_SYSKEYDOWN;
    for (const Shortcut& shortcut : Shortcuts()) {
        if (shortcut.key != message.wParam || shortcut.control != control || shortcut.alt != alt) continue;
        const bool isTool = *tools.Tip(shortcut.command) != 0;
        if (!problem.empty() || (isTool && !tools.IsEnabled(shortcut.command))) return true;
        Command(shortcut.command, 0);
        return true;
    }
    return false;
}

bool FormPage::HasFocus(int id) const {
    const HWND field = Field(id);
    return field && (GetFocus() == field || IsChild(field, GetFocus()));
}

void FormPage::TakeFocus() {
    const HWND first = GetNextDlgTabItem(Handle(), nullptr, FALSE);
    SetFocus(first ? first : Handle());
    if (first && (SendMessageW(first, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL)) SendMessageW(first, EM_SETSEL, 0, -1);
}

void FormPage::FocusField(int id) const {
    if (!IsWindowEnabled(Field(id))) return;
    SetFocus(Field(id));
    SendMessageW(Field(id), EM_SETSEL, 0, -1);
}

void FormPage::ShowMenuAt(POINT at) {
    if (context.busy || !problem.empty()) return;
    Apply();
    if (const std::vector<MenuEntry> entries = Menu(); !entries.empty()) ShowContextMenu(Handle(), at, entries);
}

void FormPage::RightClicked(HWND window, POINT at) {
    if (context.busy) return;
    SelectAt(window, at);
    ShowMenuAt(at);
}

void FormPage::Run(const std::function<void()>& work) {
    if (context.busy || !problem.empty()) return;
    context.busy = true;
    if (resultTone != Tone::Plain || !FieldText(idResult).empty()) ClearResult();
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    try {
        work();
    } catch (const HostError& error) {
        ShowResult(error.Text(), Tone::Bad);
    }
    SetCursor(before);
    context.busy = false;
}

Variant FormPage::Call(const ControlHost& host, const std::wstring& control, const wchar_t* method,
                       const std::vector<Variant>& arguments) {
    try {
        const Variant answer = host.Control().Call(method, arguments);
        context.log.AddCall(control, method,
                            answer.vt == VT_EMPTY  ? L"done"
                            : answer.vt == VT_BSTR ? L"returned \"" + answer.Text() + L"\""
                                                   : L"returned " + DescribeValue(answer));
        return answer;
    } catch (const HostError& error) {
        context.log.AddCall(control, method, L"failed: " + error.Text());
        throw;
    }
}

bool FormPage::Browse(int id) {
    std::wstring path = FileOf(Trim(FieldText(id)));
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) path.clear();
    path.resize(32768);
    OPENFILENAMEW ask{};
    ask.lStructSize = sizeof ask;
    ask.hwndOwner = GetAncestor(Handle(), GA_ROOT);
    ask.lpstrFilter = L"Databases (*.db; *.sqlite; *.mdb; *.accdb)\0*.db;*.sqlite;*.sqlite3;*.mdb;*.accdb\0"
                      L"All files (*.*)\0*.*\0";
    ask.lpstrFile = path.data();
    ask.nMaxFile = static_cast<DWORD>(path.size());
    ask.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER;
    if (!GetOpenFileNameW(&ask)) return false;
    SetField(id, path.c_str());
    return true;
}

void FormPage::PaintFrames(HDC dc) const {
    for (const auto& [child, space] : framed) {
        RECT area;
        GetWindowRect(child, &area);
        MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&area), 2);
        const int margin = context.style.Scale(space);
        InflateRect(&area, margin, margin);
        if (margin > 0) FillRect(dc, &area, GetSysColorBrush(COLOR_WINDOW));
        InflateRect(&area, 1, 1);
        FrameRect(dc, &area, GetSysColorBrush(COLOR_BTNSHADOW));
    }
}

LRESULT FormPage::Colour(HDC dc, HWND child) const {
    const int id = GetDlgCtrlID(child);
    const Tone tone = id == idResult ? resultTone : id == idHint ? Tone::Hint : Tone::Plain;
    COLORREF colour = GetSysColor(COLOR_BTNTEXT);
    if (!HighContrast() && tone == Tone::Good) colour = RGB(0, 96, 32);
    if (!HighContrast() && tone == Tone::Bad) colour = RGB(160, 16, 16);
    if (!HighContrast() && tone == Tone::Hint) colour = RGB(80, 80, 80);
    SetTextColor(dc, colour);
    SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
    return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
}

LRESULT FormPage::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_SIZE:
        ArrangeAll();
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT paint;
        PaintFrames(BeginPaint(Handle(), &paint));
        EndPaint(Handle(), &paint);
        return 0;
    }
    case WM_CTLCOLORSTATIC:
        return Colour(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
    case WM_COMMAND:
        Command(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY: {
        auto* requested = reinterpret_cast<NMTTDISPINFOW*>(lParam);
        if (requested->hdr.code != TTN_GETDISPINFOW) break;
        requested->lpszText = const_cast<wchar_t*>(tools.Tip(static_cast<int>(requested->hdr.idFrom)));
        return 0;
    }
    case WM_SETFOCUS:
        TakeFocus();
        return 0;
    case WM_CONTEXTMENU: {
        const POINT at{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        // The message may name any window on its way here.
        const HWND inner = WindowFromPoint(at);
        if (at.x == -1 && at.y == -1)
            ShowMenu();
        else
            RightClicked(inner && IsChild(Handle(), inner) ? inner : reinterpret_cast<HWND>(wParam), at);
        return 0;
    }
    }
    return Window::OnMessage(message, wParam, lParam);
}

std::wstring DescribeOutcome(const Automation& validator, bool valid) {
    const long type = validator.Get(L"ErrorType").Long();
    std::wstring text = valid ? L"Valid." : L"Refused: ";
    if (valid) return text;
    text += validator.EnumName(L"ValidationErrorTypes", type);
    const long number = validator.Get(L"ErrorNumber").Long();
    if (number == 0) return text + L".";
    const std::wstring description = validator.Get(L"ErrorDescription").Text();
    return text + L", error " + std::to_wstring(number) + L": " + description;
}

} // namespace dax::workbench
