// A window of our own: its procedure as a method.
#pragma once

#include <windows.h>

namespace dax::workbench {

class Window {
public:
    Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window();

    HWND Handle() const { return handle; }

protected:
    // Registers the class at its first use. `id` is the child's number, 0 for a top-level window.
    bool CreateAs(const wchar_t* className, const wchar_t* title, DWORD style, DWORD extendedStyle, HWND parent, int id,
                  const RECT& place);
    // For the destructor of the class that overrides OnMessage: nothing arrives after it.
    void Destroy();
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND handle = nullptr;
};

} // namespace dax::workbench
