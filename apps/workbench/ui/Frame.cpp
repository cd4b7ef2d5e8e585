#include "ui/Frame.h"

#include "automation/ControlHost.h"
#include "controls/win32/GdiSurface.h"
#include "selftest/SelfTest.h"
#include "ui/Ids.h"
#include "ui/Input.h"

#include <algorithm>
#include <commctrl.h>
#include <windowsx.h>

namespace dax::workbench {

namespace {

constexpr int splitterHeight = 6;
constexpr int minLog = 70;
constexpr int minPage = 400;

HWND AddChild(HWND parent, const wchar_t* className, const wchar_t* text, DWORD windowStyle, DWORD extended, int id) {
    return CreateWindowExW(extended, className, text, WS_CHILD | WS_VISIBLE | windowStyle, 0, 0, 10, 10, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
}

BOOL CALLBACK SendTo(HWND child, LPARAM message) {
    const MSG& sent = *reinterpret_cast<const MSG*>(message);
    SendMessageW(child, sent.message, sent.wParam, sent.lParam);
    return TRUE;
}

// What the system sends to frames only.
void SendToChildren(HWND frame, UINT message, WPARAM wParam, LPARAM lParam) {
    const MSG sent{frame, message, wParam, lParam, 0, {}};
    EnumChildWindows(frame, SendTo, reinterpret_cast<LPARAM>(&sent));
}

} // namespace

Frame::Frame(const Options& given, const ControlLibrary& controls)
    : options(given), library(controls),
      style(MonitorDpi(nullptr)), context{options, library, style, log,
                                          [this](const std::wstring& text) { ShowStatus(text); }} {
    options.file = HidePassword(options.file);
    options.connector = HidePassword(options.connector);
    context.openLesson = [this] { OpenLesson(); };
    context.openCatalog = [this](const Catalog& catalog) { OpenCatalog(catalog); };
    context.ask = [this](const Question& question) { return Ask(question); };
    for (const PageEntry& entry : PageTable()) pages.push_back({&entry, nullptr});
}

Frame::~Frame() {
    pages.clear();
    Destroy();
}

bool Frame::Create(bool visible) {
    const RECT place = {CW_USEDEFAULT, CW_USEDEFAULT, 0, 0};
    if (!CreateAs(frameClass, L"DAXWorkbench", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT, nullptr, 0,
                  place))
        return false;
    style.SetDpi(MonitorDpi(Handle()));
    RECT workArea{0, 0, style.Scale(1120), style.Scale(800)};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    const SIZE most{workArea.right - workArea.left, workArea.bottom - workArea.top};
    const bool isLarger = most.cx < style.Scale(1120) || most.cy < style.Scale(800);
    SetWindowPos(Handle(), nullptr, workArea.left, workArea.top, std::min<int>(most.cx, style.Scale(1120)),
                 std::min<int>(most.cy, style.Scale(800)), (isLarger ? 0 : SWP_NOMOVE) | SWP_NOZORDER | SWP_NOACTIVATE);
    if (!Build() || !Show(0)) return false;
    if (visible) {
        ShowWindow(Handle(), SW_SHOW);
        UpdateWindow(Handle());
    }
    return true;
}

// The letters of the menus and of the event log are those that no page uses for a field.
void Frame::BuildMenu() {
    const HMENU bar = CreateMenu(), program = CreatePopupMenu();
    std::vector<MenuEntry> entries;
    for (size_t i = 0; i < pages.size(); ++i) {
        const std::wstring number = std::to_wstring(i + 1);
        entries.push_back(
            {idShowFirst + static_cast<int>(i), L"&" + number + L" " + pages[i].entry->title + L"\tCtrl+" + number});
    }
    for (const MenuEntry& entry :
         {MenuEntry(), MenuEntry{idNextPage, L"&Next page\tCtrl+Tab, Ctrl+Page Down"},
          MenuEntry{idPreviousPage, L"Pre&vious page\tCtrl+Shift+Tab, Ctrl+Page Up"},
          MenuEntry{idPageList, L"&List of pages\tEsc"}, MenuEntry(),
          MenuEntry{idCopyEvents, L"&Copy events and calls\tCtrl+C, in their list"},
          MenuEntry{idEventsClear, L"Clea&r events and calls\tDel, in their list"}, MenuEntry(),
          MenuEntry{idSelfTest, L"&Self-test\u2026\tCtrl+Shift+T"}, MenuEntry(), MenuEntry{idExit, L"E&xit\tAlt+F4"}})
        entries.push_back(entry);
    FillMenu(program, entries);
    pageMenu = CreatePopupMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(program), L"Pro&gram");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(pageMenu), L"T&his page");
    SetMenu(Handle(), bar);
    FillPageMenu();
}

// Created again each time that it opens: the page decides what is enabled.
void Frame::FillPageMenu() const {
    std::vector<MenuEntry> entries;
    if (Current() && !context.busy && Current()->Problem().empty()) entries = Current()->Menu();
    if (entries.empty()) entries.push_back({idRefresh, L"&Refresh\tF5", Current() && !context.busy});
    FillMenu(pageMenu, entries);
}

std::vector<MenuEntry> Frame::LogMenu() const {
    return {{idCopyEvents, L"&Copy\tCtrl+C"}, {idEventsClear, L"Clea&r\tDel"}};
}

bool Frame::Build() {
    list = AddChild(Handle(), WC_LISTBOXW, L"Pages",
                    WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT,
                    0, idPages);
    for (const Shown& one : pages) SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(one.entry->title));
    logLabel = AddChild(Handle(), WC_STATICW, L"E&vents and calls", SS_CENTERIMAGE, 0, idEventsLabel);
    if (!log.Create(Handle(), idEvents, style)) return false;
    logClear = AddChild(Handle(), WC_BUTTONW, L"Clear", WS_TABSTOP | BS_PUSHBUTTON, 0, idEventsClear);
    status = AddChild(Handle(), STATUSCLASSNAMEW, L"", SBARS_SIZEGRIP | CCS_BOTTOM, 0, idStatus);
    BuildMenu();
    ShowStatus(L"Controls from: " + library.Origin());
    ChangeStyle(style.Dpi(), {});
    return list && logLabel && logClear && status;
}

// An empty place leaves the window where it is.
void Frame::ChangeStyle(int dpi, const RECT& place) {
    style.SetDpi(dpi);
    for (HWND child : {list, logLabel, logClear, status})
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(style.Plain()), TRUE);
    SendMessageW(list, LB_SETITEMHEIGHT, 0, style.LineHeight() + style.Scale(14));
    log.StyleChanged(style);
    for (const Shown& one : pages)
        if (one.page) one.page->StyleChanged();
    if (place.right > place.left)
        SetWindowPos(Handle(), nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    Arrange();
}

void Frame::Arrange() {
    if (!status) return;
    SendMessageW(status, WM_SIZE, 0, 0);
    RECT area, bar;
    GetClientRect(Handle(), &area);
    GetWindowRect(status, &bar);
    const int bottom = area.bottom - (bar.bottom - bar.top);
    const std::wstring keys = Keys();
    int parts[] = {std::max<int>(area.right - style.TextWidth(keys) - style.Scale(48), style.Scale(100)), -1};
    SendMessageW(status, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
    SendMessageW(status, SB_SETTEXTW, 1, reinterpret_cast<LPARAM>(keys.c_str()));

    int listWidth = style.Scale(140);
    for (const Shown& one : pages) listWidth = std::max(listWidth, style.TextWidth(one.entry->title) + style.Scale(36));
    const auto place = [](HWND child, int left, int top, int right, int below) {
        SetWindowPos(child, nullptr, left, top, std::max(right - left, 0), std::max(below - top, 0),
                     SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
    };
    place(list, 0, 0, listWidth, bottom);
    const int logHeight = std::clamp(style.Scale(logShare), style.Scale(minLog),
                                     std::max(bottom - style.Scale(minPage), style.Scale(minLog)));
    splitterTop = bottom - logHeight - style.ButtonHeight() - style.Scale(splitterHeight);
    if (Current()) place(Current()->Window(), listWidth, 0, area.right, splitterTop);
    const int left = listWidth + style.Margin();
    const int right = area.right - style.Margin();
    const int top = splitterTop + style.Scale(splitterHeight);
    const int button = right - style.ButtonWidth(L"Clear");
    place(logLabel, left, top, button - style.Gap(), top + style.ButtonHeight());
    place(logClear, button, top, right, top + style.ButtonHeight());
    place(log.Window(), left, top + style.ButtonHeight() + style.Scale(4), right, bottom - style.Scale(8));
    log.Resized();
    // The children, too: what the system moves along with them is not always what they show in their new size.
    RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

bool Frame::Show(size_t index) {
    Shown& shown = pages[index];
    const bool first = !shown.page;
    if (first) {
        shown.page = shown.entry->make(context);
        if (!shown.page->Create(Handle(), idPageFirst + static_cast<int>(index))) return false;
        // Behind the list of pages in the tab order.
        SetWindowPos(shown.page->Window(), list, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    if (Current()) Current()->Apply();
    const HWND before = Current() ? Current()->Window() : nullptr;
    const bool focused = before && IsChild(before, GetFocus());
    current = index;
    SendMessageW(list, LB_SETCURSEL, index, 0);
    if (before && before != shown.page->Window()) ShowWindow(before, SW_HIDE);
    Arrange();
    ShowWindow(shown.page->Window(), SW_SHOWNA);
    if (first) shown.page->Start();
    shown.page->Shown();
    if (focused) shown.page->TakeFocus();
    return true;
}

std::wstring Frame::Keys() const {
    return (Current() ? Current()->Keys() + L"    " : L"") + L"Ctrl+Tab Next page    Esc Pages";
}

void Frame::OpenLesson() {
    for (size_t i = 0; i < pages.size(); ++i) {
        if (!pages[i].entry->showsLessons || !Show(i)) continue;
        Current()->OpenLesson();
        return;
    }
}

void Frame::OpenCatalog(const Catalog& catalog) {
    context.catalog = catalog;
    options.file = catalog.source;
    const bool isNew = !pages[0].page; // then it begins with the file
    Show(0);
    if (!isNew) Current()->CatalogChanged();
    if (!Current()->Failure().empty()) return;
    for (size_t i = 1; i < pages.size(); ++i)
        if (pages[i].page) pages[i].page->CatalogChanged();
}

int Frame::Ask(const Question& question) const {
    if (!options.start.empty()) return question.unattended;
    return options.shots.empty() ? AskUser(Handle(), question) : question.choices.back().id;
}

bool Frame::MayClose() {
    for (size_t i = 0; i < pages.size(); ++i) {
        if (!pages[i].page) continue;
        pages[i].page->Apply();
        if (!pages[i].page->MayClose()) return false;
    }
    return true;
}

void Frame::Step(int direction) {
    const size_t count = pages.size();
    if (!context.busy) Show((current + count + static_cast<size_t>(direction + static_cast<int>(count))) % count);
}

int Frame::Run() {
    if (Current()) Current()->TakeFocus();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) HandleMessage(message);
    return static_cast<int>(message.wParam);
}

void Frame::HandleMessage(MSG& message) {
    Deliver(message);
    if (message.message == WM_KEYUP && Handle() && Current() && IsChild(Current()->Window(), message.hwnd))
        Current()->KeyReleased();
}

// The control that has the focus comes first, then the program's keys, then those of dialogs.
void Frame::Deliver(MSG& message) {
    if (Handle() && message.message == WM_SYSKEYDOWN && message.wParam == VK_F4) {
        PostMessageW(Handle(), WM_SYSCOMMAND, SC_CLOSE, 0); // Alt+F4, also where a list would open on F4
        return;
    }
    if (Handle() && IsChild(Handle(), message.hwnd) && (ControlHost::OfferKey(Handle(), message) || HandleKey(message)))
        return;
    if (Handle() && IsDialogMessageW(Handle(), &message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

bool Frame::HandleKey(const MSG& message) {
    // Not every system makes WM_CONTEXTMENU of it, as it does of the Menu key.
    if (message.message == WM_SYSKEYDOWN && message.wParam == VK_F10 && GetKeyState(VK_SHIFT) < 0) {
        SendMessageW(message.hwnd, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(message.hwnd), -1);
        return true;
    }
    if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
    if (Current()->HandleKey(message)) return true;
    if (message.message != WM_KEYDOWN) return false;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (message.wParam == VK_F5 && !control) return GoTo(idRefresh);
    if (message.wParam == VK_RETURN && !control && PressDefault(message)) return true;
    if (control && message.wParam > L'0' && message.wParam <= L'0' + pages.size())
        return GoTo(idShowFirst + static_cast<int>(message.wParam - L'1'));
    if (control && (message.wParam == VK_TAB || message.wParam == VK_NEXT || message.wParam == VK_PRIOR)) {
        const bool back = message.wParam == VK_PRIOR || (message.wParam == VK_TAB && GetKeyState(VK_SHIFT) < 0);
        return GoTo(back ? idPreviousPage : idNextPage);
    }
    if (control && message.wParam == 'T' && GetKeyState(VK_SHIFT) < 0) return GoTo(idSelfTest);
    return control && message.wParam == 'C' && message.hwnd == log.Window() && GoTo(idCopyEvents);
}

// The system would look for the button by its number on all pages, and stop at one of another page that is disabled.
bool Frame::PressDefault(const MSG& message) {
    const HWND page = Current()->Window();
    const int id = DefaultButton();
    if (id == 0 || !IsChild(page, message.hwnd)) return false;
    const LRESULT requested = SendMessageW(message.hwnd, WM_GETDLGCODE, VK_RETURN, reinterpret_cast<LPARAM>(&message));
    if (requested & DLGC_WANTALLKEYS) return false; // as of a list that is open
    if (const HWND button = GetDlgItem(page, id); button && IsWindowEnabled(button)) Command(id, BN_CLICKED);
    return true;
}

bool Frame::GoTo(int id) {
    if (id >= idShowFirst && id < idShowFirst + static_cast<int>(pages.size())) {
        if (!context.busy) Show(static_cast<size_t>(id - idShowFirst));
        return true;
    }
    switch (id) {
    case idNextPage:
    case idPreviousPage:
        Step(id == idNextPage ? 1 : -1);
        return true;
    case idPageList:
    case IDCANCEL: // Esc
        SetFocus(list);
        return true;
    case idRefresh:
        Current()->Apply();
        Current()->Refresh();
        return true;
    case idCopyEvents:
        log.Copy();
        return true;
    case idEventsClear:
        log.Clear();
        return true;
    case idSelfTest:
        SelfTest();
        return true;
    case idExit:
        PostMessageW(Handle(), WM_CLOSE, 0, 0);
        return true;
    default:
        return false;
    }
}

void Frame::SelfTest() {
    const Question question{L"Run the self-test?",
                            L"It checks whether the controls work on this machine, in windows of its own, and then "
                            L"shows a report. It works with the mouse and the keyboard: leave both alone until then, "
                            L"which takes about a minute.",
                            {{IDOK, L"&Run the self-test"}, {IDCANCEL, L"&Cancel"}},
                            IDOK,
                            IDCANCEL};
    if (context.busy || Ask(question) != IDOK) return;
    try {
        selftest::StartSelfTest(options);
        ShowStatus(L"The self-test is running; its report is shown when it has ended.");
    } catch (const HostError& error) {
        ShowStatus(L"The self-test cannot be started: " + error.Text());
    }
}

void Frame::Command(int id, int notification) {
    if (id == idPages && notification == LBN_SELCHANGE) {
        const LRESULT selected = SendMessageW(list, LB_GETCURSEL, 0, 0);
        if (context.busy)
            SendMessageW(list, LB_SETCURSEL, current, 0);
        else if (selected >= 0)
            Show(static_cast<size_t>(selected));
    } else if (!GoTo(id) && Current()) {
        SendMessageW(Current()->Window(), WM_COMMAND, MAKEWPARAM(id, notification), 0);
    }
}

// The push button that has the focus, else the page's own.
int Frame::DefaultButton() const {
    const HWND focus = GetFocus();
    if (focus && (SendMessageW(focus, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)))
        return GetDlgCtrlID(focus);
    return Current() ? Current()->DefaultButton() : 0;
}

LRESULT Frame::Notify(const NMHDR& header) {
    if (header.hwndFrom == log.Window() && header.code == static_cast<UINT>(LVN_KEYDOWN)) {
        const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
        if (key == VK_DELETE) log.Clear();
    }
    return 0;
}

void Frame::DrawItem(const DRAWITEMSTRUCT& item) const {
    if (item.CtlID != idPages || item.itemID >= pages.size()) return;
    const bool selected = item.itemState & ODS_SELECTED;
    FillRect(item.hDC, &item.rcItem, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
    RECT text = item.rcItem;
    text.left += style.Margin();
    DrawTextW(item.hDC, pages[item.itemID].entry->title, -1, &text,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    if (item.itemState & ODS_FOCUS) DrawFocusRect(item.hDC, &item.rcItem);
}

void Frame::ShowStatus(const std::wstring& text) {
    if (status) SendMessageW(status, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

bool Frame::OverSplitter(int y) const { return y >= splitterTop && y < splitterTop + style.Scale(splitterHeight); }

void Frame::MoveSplitter(int y) {
    RECT bar;
    GetWindowRect(status, &bar);
    MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&bar), 2);
    const int height = bar.top - y - style.ButtonHeight() - style.Scale(splitterHeight);
    logShare = std::max(MulDiv(height, 96, style.Dpi()), minLog);
    Arrange();
}

LRESULT Frame::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_SIZE:
        Arrange();
        return 0;
    case WM_GETMINMAXINFO: {
        auto* limits = reinterpret_cast<MINMAXINFO*>(lParam);
        limits->ptMinTrackSize = {style.Scale(760), style.Scale(600)};
        return 0;
    }
    case 0x02E0: // WM_DPICHANGED, which older headers lack
        ChangeStyle(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
        ChangeStyle(style.Dpi(), {});
        SendToChildren(Handle(), message, wParam, lParam);
        break;
    case WM_COMMAND:
        Command(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY:
        return Notify(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_DRAWITEM:
        DrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_INITMENUPOPUP:
        if (reinterpret_cast<HMENU>(wParam) == pageMenu) FillPageMenu();
        break;
    case WM_CONTEXTMENU:
        if (reinterpret_cast<HWND>(wParam) != log.Window()) break;
        ShowContextMenu(Handle(), {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, LogMenu());
        return 0;
    case WM_NEXTDLGCTL: { // a label's underlined letter, as in a dialog
        const HWND next =
            LOWORD(lParam) ? reinterpret_cast<HWND>(wParam) : GetNextDlgTabItem(Handle(), GetFocus(), wParam != 0);
        if (!next) return 0;
        SetFocus(next);
        if (SendMessageW(next, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) SendMessageW(next, EM_SETSEL, 0, -1);
        return 0;
    }
    case DM_GETDEFID:
        return MAKELRESULT(DefaultButton(), DC_HASDEFID);
    case WM_ACTIVATE:
        // A window that is no dialog has to keep the place of the focus by itself.
        if (LOWORD(wParam) == WA_INACTIVE)
            lastFocus = GetFocus();
        else if (lastFocus && IsChild(Handle(), lastFocus))
            SetFocus(lastFocus);
        return 0;
    case WM_SETFOCUS:
        if (lastFocus && IsChild(Handle(), lastFocus) && IsWindowVisible(lastFocus))
            SetFocus(lastFocus);
        else if (Current())
            Current()->TakeFocus();
        return 0;
    case WM_SETCURSOR: {
        POINT at;
        GetCursorPos(&at);
        ScreenToClient(Handle(), &at);
        if (LOWORD(lParam) != HTCLIENT || reinterpret_cast<HWND>(wParam) != Handle() || !OverSplitter(at.y)) break;
        SetCursor(LoadCursorW(nullptr, IDC_SIZENS));
        return TRUE;
    }
    case WM_LBUTTONDOWN:
        dragging = OverSplitter(GET_Y_LPARAM(lParam));
        if (dragging) SetCapture(Handle());
        return 0;
    case WM_MOUSEMOVE:
        if (dragging) MoveSplitter(GET_Y_LPARAM(lParam));
        return 0;
    case WM_LBUTTONUP:
        if (dragging) ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        dragging = false;
        return 0;
    case WM_CLOSE:
        if (context.busy || !MayClose()) return 0; // busy: a call to a control is on the stack
        DestroyWindow(Handle());
        return 0;
    case WM_DESTROY:
        pages.clear();
        status = nullptr;
        PostQuitMessage(0);
        return 0;
    }
    return Window::OnMessage(message, wParam, lParam);
}

} // namespace dax::workbench
