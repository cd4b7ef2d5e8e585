#include "selftest/TestForm.h"

#include "controls/win32/GdiSurface.h"
#include "selftest/Checks.h"
#include "ui/Picture.h"
#include "ui/Style.h"

#include <algorithm>

namespace dax::workbench::selftest {

namespace {

// A control looks for this on its host's windows; see the manual.
constexpr wchar_t dpiProperty[] = L"DAXControls.DPI";
constexpr UINT dpiChangedAfterParent = 0x02E3; // WM_DPICHANGED_AFTERPARENT, which older headers lack
constexpr DWORD formStyle = WS_POPUP | WS_CAPTION | WS_CLIPCHILDREN;
constexpr DWORD formExtendedStyle = WS_EX_TOPMOST | WS_EX_CONTROLPARENT;
constexpr int timeLimit = 10'000; // milliseconds

struct Search {
    const wchar_t* className;
    HWND found;
};

BOOL CALLBACK FindClass(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    if (CompareStringOrdinal(name, -1, search->className, -1, TRUE) != CSTR_EQUAL) return TRUE;
    search->found = window;
    return FALSE;
}

} // namespace

HWND HostedControl::Inner(const wchar_t* className) const {
    Search search{className, nullptr};
    EnumChildWindows(Window(), FindClass, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

bool HostedControl::Raised(const std::wstring& beginning) const {
    return std::any_of(events.begin(), events.end(),
                       [&](const std::wstring& event) { return event.starts_with(beginning); });
}

std::wstring HostedControl::AllRaised() const {
    std::wstring all;
    for (const std::wstring& event : events) all += (all.empty() ? L"" : L"; ") + event;
    return all.empty() ? L"no event" : all;
}

TestForm::TestForm(const ControlLibrary& controlLibrary, int insideWidth, int insideHeight, int dpi)
    : library(controlLibrary), width(insideWidth), height(insideHeight), resolution(dpi) {
    Require(CreateAs(L"DAXWorkbenchSelfTest", L"DAXControls self-test", formStyle, formExtendedStyle, nullptr, 0,
                     {0, 0, 100, 100}),
            L"A window could not be created: " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    if (dpi > 0)
        SetPropW(Handle(), dpiProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(dpi)));
    else
        resolution = MonitorDpi(Handle());
    Arrange();
    ShowWindow(Handle(), SW_SHOW);
    UpdateWindow(Handle());
}

TestForm::~TestForm() {
    controls.clear();
    Pump();
    if (Handle()) RemovePropW(Handle(), dpiProperty);
    Destroy();
}

RECT TestForm::Scaled(const RECT& place) const {
    const auto scale = [this](LONG measure) { return static_cast<LONG>(MulDiv(measure, resolution, 96)); };
    return {scale(place.left), scale(place.top), scale(place.right), scale(place.bottom)};
}

void TestForm::Arrange() {
    RECT outside = Scaled({0, 0, width, height});
    AdjustWindowRectEx(&outside, formStyle, FALSE, formExtendedStyle);
    SetWindowPos(Handle(), HWND_TOPMOST, 0, 0, outside.right - outside.left, outside.bottom - outside.top,
                 SWP_NOACTIVATE);
    for (const Placed& one : controls) {
        const RECT place = Scaled(one.place);
        MoveWindow(one.control->Window(), place.left, place.top, place.right - place.left, place.bottom - place.top,
                   TRUE);
    }
}

HostedControl& TestForm::Add(const wchar_t* name, const RECT& place) {
    auto control = std::make_unique<HostedControl>();
    HostedControl* added = control.get();
    control->host = std::make_unique<ControlHost>(
        Handle(), static_cast<int>(controls.size()) + 100, true, library, name, [added](const ControlEvent& event) {
            added->events.push_back(event.name + L"(" + DescribeArguments(event) + L")");
            if (added->answer) added->answer(event);
        });
    controls.push_back({std::move(control), place});
    Arrange();
    Pump();
    return *added;
}

void TestForm::Remove(HostedControl& control) {
    std::erase_if(controls, [&](const Placed& one) { return one.control.get() == &control; });
    Pump();
}

void TestForm::ChangeDpi(int dpi) {
    resolution = dpi;
    SetPropW(Handle(), dpiProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(dpi)));
    Arrange(); // as hosts do before the system sends the messages to their windows
    for (const Placed& one : controls)
        if (const HWND inside = GetWindow(one.control->Window(), GW_CHILD))
            SendMessageW(inside, dpiChangedAfterParent, 0, 0);
    Pump();
}

void TestForm::Pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (Handle() && IsChild(Handle(), message.hwnd) && ControlHost::OfferKey(Handle(), message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool TestForm::Until(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + timeLimit;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
        Pump();
    }
    return true;
}

// A program may not always put its window before that of another; a click on it does, where its window can be clicked.
void TestForm::BringToForeground() {
    SetForegroundWindow(Handle());
    Pump();
    if (GetForegroundWindow() == Handle()) return;
    RECT bar;
    GetWindowRect(Handle(), &bar);
    const POINT caption{(bar.left + bar.right) / 2, bar.top + GetSystemMetrics(SM_CYCAPTION) / 2};
    if (WindowFromPoint(caption) == Handle()) {
        SetCursorPos(caption.x, caption.y);
        INPUT click[2] = {};
        for (INPUT& input : click) input.type = INPUT_MOUSE;
        click[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
        click[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
        SendInput(2, click, sizeof(INPUT));
    }
    const ULONGLONG end = GetTickCount64() + 2000;
    while (GetForegroundWindow() != Handle() && GetTickCount64() < end) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
        Pump();
    }
    if (GetForegroundWindow() != Handle())
        throw Skipped(L"The self-test's window cannot come to the foreground: the desktop is locked, nobody is logged "
                      L"on, or another program keeps its window in front.");
}

void TestForm::Play(const std::function<void(UserInput&)>& script) {
    BringToForeground();
    UserInput input(Handle(), [this] { Pump(); });
    const int lost = input.Play(script);
    Require(lost == 0, std::to_wstring(lost) +
                           L" of the injected inputs never came. The mouse and the keyboard have to be left alone, and "
                           L"no other window may come to the front, while the self-test runs.");
}

void TestForm::Save(const std::wstring& path) {
    UpdateWindow(Handle());
    Pump();
    SavePicture(Handle(), path);
}

LRESULT TestForm::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETMINMAXINFO) { // it may be larger than the screen
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMaxTrackSize = {8000, 8000};
        return 0;
    }
    return Window::OnMessage(message, wParam, lParam);
}

} // namespace dax::workbench::selftest
