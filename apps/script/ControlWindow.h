// A window that shows a control, so that a script can use what only a user can: the keyboard.
#pragma once

#include "com/ComPtr.h"

#include <ocidl.h>

#include <string>

namespace dax {

class ControlWindow {
public:
    // Throws ComError when the object is no control or the system's container cannot be used.
    ControlWindow(IUnknown* object, const std::wstring& title);
    ~ControlWindow();
    ControlWindow(const ControlWindow&) = delete;
    ControlWindow& operator=(const ControlWindow&) = delete;

    IUnknown* Control() const { return control.Get(); }
    // A key such as "Down" or "Shift+End", given to what has the focus in the control, and all that follows from it.
    // Throws ComError when there is no such key.
    void Press(const std::wstring& key);

private:
    void Offer(UINT message, WORD key);

    ComPtr<IUnknown> control;
    HWND window = nullptr;
};

void PumpMessages();

} // namespace dax
