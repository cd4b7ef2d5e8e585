#include "Frame.h"

#include "Automation.h"
#include "ControlHost.h"
#include "Ids.h"
#include "Input.h"
#include "Picture.h"

#include <algorithm>
#include <commctrl.h>
#include <map>
#include <windowsx.h>

namespace dax::workbench {

namespace {

constexpr int splitterHeight = 6;
constexpr int leastLog = 70;
constexpr int leastPage = 400;

HWND AddChild(HWND parent, const wchar_t* className, const wchar_t* text, DWORD windowStyle, DWORD extended, int id) {
    return CreateWindowExW(extended, className, text, WS_CHILD | WS_VISIBLE | windowStyle, 0, 0, 10, 10, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
}

void MakeFolder(const std::wstring& folder) {
    if (!CreateDirectoryW(folder.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        throw HostError(E_FAIL, folder + L": " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
}

} // namespace

Frame::Frame(const Options& given, const ControlLibrary& controls)
    : options(given), library(controls),
      style(DpiOf(nullptr)), bench{options, library, style, log,
                                   [this](const std::wstring& text) { ShowStatus(text); }} {
    options.file = HidePassword(options.file);
    options.connector = HidePassword(options.connector);
    bench.openLesson = [this] { OpenLesson(); };
    bench.openCatalog = [this](const Catalog& catalog) { OpenCatalog(catalog); };
    bench.ask = [this](const std::wstring& text, UINT flags) { return Ask(text, flags); };
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
    style.SetDpi(DpiOf(Handle()));
    SetWindowPos(Handle(), nullptr, 0, 0, style.Scale(1120), style.Scale(800),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    if (!Build() || !Show(0)) return false;
    if (visible) {
        ShowWindow(Handle(), SW_SHOW);
        UpdateWindow(Handle());
    }
    return true;
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
                     SWP_NOZORDER | SWP_NOACTIVATE);
    };
    place(list, 0, 0, listWidth, bottom);
    const int logHeight = std::clamp(style.Scale(logShare), style.Scale(leastLog),
                                     std::max(bottom - style.Scale(leastPage), style.Scale(leastLog)));
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
    InvalidateRect(Handle(), nullptr, TRUE);
}

bool Frame::Show(size_t index) {
    Shown& shown = pages[index];
    const bool first = !shown.page;
    if (first) {
        shown.page = shown.entry->make(bench);
        if (!shown.page->Create(Handle(), idPageFirst + static_cast<int>(index))) return false;
        // Behind the list of pages in the tab order.
        SetWindowPos(shown.page->Window(), list, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
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
    bench.catalog = catalog;
    options.file = catalog.source;
    const bool isNew = !pages[0].page; // then it begins with the file
    Show(0);
    if (!isNew) Current()->CatalogChanged();
    if (!Current()->Failure().empty()) return;
    for (size_t i = 1; i < pages.size(); ++i)
        if (pages[i].page) pages[i].page->CatalogChanged();
}

int Frame::Ask(const std::wstring& text, UINT flags) const {
    if (!options.start.empty()) return (flags & MB_TYPEMASK) == MB_ABORTRETRYIGNORE ? IDABORT : IDYES;
    if (options.shots.empty()) return MessageBoxW(Handle(), text.c_str(), L"DAXWorkbench", flags);
    const UINT kind = flags & MB_TYPEMASK;
    return kind == MB_ABORTRETRYIGNORE ? IDABORT : kind == MB_YESNO ? IDNO : kind == MB_OK ? IDOK : IDCANCEL;
}

bool Frame::MayClose() {
    for (size_t i = 0; i < pages.size(); ++i) {
        if (!pages[i].page) continue;
        if (!pages[i].page->MayClose()) return false;
    }
    return true;
}

void Frame::Step(int direction) {
    const size_t count = pages.size();
    if (!bench.busy) Show((current + count + static_cast<size_t>(direction + static_cast<int>(count))) % count);
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
    if (Handle() && IsChild(Handle(), message.hwnd) && (ControlHost::OfferKey(Handle(), message) || HandleKey(message)))
        return;
    if (Handle() && IsDialogMessageW(Handle(), &message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

bool Frame::HandleKey(const MSG& message) {
    if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
    if (Current()->HandleKey(message)) return true;
    if (message.message != WM_KEYDOWN) return false;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (message.wParam == VK_F5 && !control) {
        Current()->Refresh();
        return true;
    }
    if (control && (message.wParam == VK_TAB || message.wParam == VK_NEXT || message.wParam == VK_PRIOR)) {
        const bool back = message.wParam == VK_PRIOR || (message.wParam == VK_TAB && GetKeyState(VK_SHIFT) < 0);
        Step(back ? -1 : 1);
        return true;
    }
    if (control && message.wParam == 'C' && message.hwnd == log.Window()) {
        log.Copy();
        return true;
    }
    return false;
}

void Frame::DispatchPending() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) HandleMessage(message);
}

int Frame::TakeStart(const std::wstring& folder) {
    try {
        MakeFolder(folder);
        std::map<int, std::pair<size_t, StartStep>> steps;
        for (size_t i = 0; i < pages.size(); ++i) {
            if (!Show(i) || !Current()->Problem().empty())
                throw HostError(E_FAIL, L"A page cannot be shown. " + Current()->Problem());
            for (const StartStep& step : Current()->Steps()) steps[step.place] = {i, step};
        }
        for (const auto& [place, one] : steps) {
            const auto& [page, step] = one;
            Show(page);
            Current()->TakeFocus();
            step.enter();
            DispatchPending();
            const std::wstring name = L"start-" + std::to_wstring(place + 100).substr(1) + L"-" + step.name + L".png";
            SavePicture(Handle(), folder + L"\\" + name);
            if (!Current()->Failure().empty()) throw HostError(E_FAIL, step.name + L": " + Current()->Failure());
            Say(name + L"  " + step.text + L"\n", false);
        }
    } catch (const HostError& error) {
        Say(L"DAXWorkbench: " + error.Text() + L"\n", true);
        return 1;
    }
    return 0;
}

int Frame::TakePictures(const std::wstring& folder) {
    int code = 0;
    try {
        MakeFolder(folder);
        for (size_t i = 0; i < pages.size(); ++i) {
            if (!Show(i)) throw HostError(E_FAIL, L"A page's window cannot be created.");
            const std::wstring path = folder + L"\\" + pages[i].entry->fileName + L"-";
            if (!Current()->Problem().empty()) {
                DispatchPending();
                SavePicture(Handle(), path + L"problem.png");
                Say(L"DAXWorkbench: " + Current()->Problem() + L"\n", true);
                code = 1;
                continue;
            }
            Current()->TakeFocus();
            for (const PageState& state : Current()->States()) {
                state.enter();
                DispatchPending();
                SavePicture(Handle(), path + state.name + L".png");
            }
        }
    } catch (const HostError& error) {
        Say(L"DAXWorkbench: " + error.Text() + L"\n", true);
        return 1;
    }
    return code;
}

void Frame::Command(int id, int notification) {
    if (id == idPages && notification == LBN_SELCHANGE) {
        const LRESULT selected = SendMessageW(list, LB_GETCURSEL, 0, 0);
        if (bench.busy)
            SendMessageW(list, LB_SETCURSEL, current, 0);
        else if (selected >= 0)
            Show(static_cast<size_t>(selected));
    } else if (id == idEventsClear) {
        log.Clear();
    } else if (id == IDCANCEL) {
        SetFocus(list); // Esc
    } else if (Current()) {
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
    logShare = std::max(MulDiv(height, 96, style.Dpi()), leastLog);
    Arrange();
}

LRESULT Frame::On(UINT message, WPARAM wParam, LPARAM lParam) {
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
        break;
    case WM_COMMAND:
        Command(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY:
        return Notify(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_DRAWITEM:
        DrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
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
        if (bench.busy || !MayClose()) return 0; // busy: a control is at work further up the stack
        DestroyWindow(Handle());
        return 0;
    case WM_DESTROY:
        pages.clear();
        status = nullptr;
        PostQuitMessage(0);
        return 0;
    }
    return Window::On(message, wParam, lParam);
}

} // namespace dax::workbench
