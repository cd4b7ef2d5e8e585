#include "ControlWindow.h"

#include "com/ComError.h"

#include <algorithm>
#include <iterator>

namespace dax {

namespace {

constexpr int width = 480, height = 360;

struct KeyName {
    const wchar_t* name;
    BYTE key;
};
constexpr KeyName keys[] = {
    {L"Home", VK_HOME},   {L"End", VK_END},     {L"Up", VK_UP},         {L"Down", VK_DOWN},  {L"Left", VK_LEFT},
    {L"Right", VK_RIGHT}, {L"Space", VK_SPACE}, {L"Delete", VK_DELETE}, {L"Tab", VK_TAB},    {L"F5", VK_F5},
    {L"Prior", VK_PRIOR}, {L"Next", VK_NEXT},   {L"Enter", VK_RETURN},  {L"Esc", VK_ESCAPE},
};
constexpr KeyName modifiers[] = {{L"Shift+", VK_SHIFT}, {L"Ctrl+", VK_CONTROL}};

// Loaded by hand: its import library differs between compilers.
HRESULT Attach(IUnknown* control, HWND window) {
    using AttachControl = HRESULT(WINAPI*)(IUnknown*, HWND, IUnknown**);
    const HMODULE library = LoadLibraryW(L"atl.dll");
    const auto attach = reinterpret_cast<AttachControl>(
        reinterpret_cast<void*>(library ? GetProcAddress(library, "AtlAxAttachControl") : nullptr));
    if (!attach) return E_NOTIMPL;
    ComPtr<IUnknown> container; // kept by the window
    return attach(control, window, container.Out());
}

} // namespace

ControlWindow::ControlWindow(IUnknown* object, const std::wstring& title) : control(object) {
    if (!Query<IOleObject>(object, IID_IOleObject)) throw ComError(E_INVALIDARG);
    const WNDCLASSW shape = {.style = 0,
                             .lpfnWndProc = DefWindowProcW,
                             .cbClsExtra = 0,
                             .cbWndExtra = 0,
                             .hInstance = GetModuleHandleW(nullptr),
                             .hIcon = nullptr,
                             .hCursor = LoadCursorW(nullptr, IDC_ARROW),
                             .hbrBackground = GetSysColorBrush(COLOR_BTNFACE),
                             .lpszMenuName = nullptr,
                             .lpszClassName = L"daxscript control"};
    RegisterClassW(&shape); // fails when it is registered already
    window = CreateWindowExW(0, shape.lpszClassName, title.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT,
                             CW_USEDEFAULT, width, height, nullptr, nullptr, shape.hInstance, nullptr);
    const HRESULT result = window ? Attach(object, window) : HRESULT_FROM_WIN32(GetLastError());
    if (SUCCEEDED(result)) return;
    DestroyWindow(window);
    throw ComError(result);
}

ControlWindow::~ControlWindow() { DestroyWindow(window); }

void ControlWindow::Press(const std::wstring& key) {
    BYTE former[256] = {}, held[256] = {};
    size_t at = 0;
    for (const KeyName& modifier : modifiers) {
        const size_t length = std::wstring_view(modifier.name).size();
        if (key.compare(at, length, modifier.name) != 0) continue;
        held[modifier.key] = 0x80;
        at += length;
    }
    const auto found =
        std::find_if(std::begin(keys), std::end(keys), [&](const KeyName& one) { return key.substr(at) == one.name; });
    if (found == std::end(keys)) throw ComError(E_INVALIDARG);
    const auto place = Query<IOleInPlaceObject>(control.Get(), IID_IOleInPlaceObject);
    HWND inner = nullptr;
    if (!place || FAILED(place->GetWindow(&inner))) throw ComError(E_UNEXPECTED);
    if (GetFocus() != inner && !IsChild(inner, GetFocus())) SetFocus(inner);
    GetKeyboardState(former);
    SetKeyboardState(held);
    Offer(WM_KEYDOWN, found->key);
    Offer(WM_KEYUP, found->key);
    SetKeyboardState(former);
    PumpMessages();
}

// To the control first, as every container does, then to its window.
void ControlWindow::Offer(UINT message, WORD key) {
    MSG one{};
    one.hwnd = GetFocus();
    one.message = message;
    one.wParam = key;
    one.lParam = message == WM_KEYUP ? static_cast<LPARAM>(0xC0000001u) : 1;
    const auto active = Query<IOleInPlaceActiveObject>(control.Get(), IID_IOleInPlaceActiveObject);
    if (active && active->TranslateAccelerator(&one) == S_OK) return;
    TranslateMessage(&one);
    DispatchMessageW(&one);
}

void PumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

} // namespace dax
