#include "ui/Window.h"

#include "ui/Ids.h"

namespace dax::workbench {

Window::~Window() { Destroy(); }

void Window::Destroy() {
    if (handle) DestroyWindow(handle);
}

bool Window::CreateAs(const wchar_t* className, const wchar_t* title, DWORD style, DWORD extendedStyle, HWND parent,
                      int id, const RECT& place) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW known{};
    known.cbSize = sizeof known;
    if (!GetClassInfoExW(instance, className, &known)) {
        known.lpfnWndProc = Procedure;
        known.hInstance = instance;
        known.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(idIcon));
        known.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        known.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
        known.lpszClassName = className;
        if (!RegisterClassExW(&known)) return false;
    }
    CreateWindowExW(extendedStyle, className, title, style, place.left, place.top, place.right - place.left,
                    place.bottom - place.top, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance,
                    this);
    return handle != nullptr;
}

LRESULT Window::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(handle, message, wParam, lParam);
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->handle = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self) return DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->handle = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return self->OnMessage(message, wParam, lParam);
}

} // namespace dax::workbench
