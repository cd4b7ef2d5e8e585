// One control in the system's own ActiveX container.
#pragma once

#include "automation/Automation.h"
#include "automation/ControlEvent.h"
#include "automation/ControlLibrary.h"

namespace dax::workbench {

class ControlHost {
public:
    // Creates the container's window inside `parent` and the control in it.
    // Throws HostError with advice for users when the control cannot be created.
    // `tabStop`: whether the control is one to type in or click at, not only to look at.
    ControlHost(HWND parent, int id, bool tabStop, const ControlLibrary& library, const std::wstring& control,
                ControlEventHandler handler);
    ControlHost(const ControlHost&) = delete;
    ControlHost& operator=(const ControlHost&) = delete;
    ~ControlHost();

    HWND Window() const { return window; }
    const Automation& Control() const { return control; }

    // Offers a keyboard message to the control that has the focus, as the container does not do it by itself;
    // Tab leaves the control when it does not use the key. True when the message was handled.
    static bool OfferKey(HWND frame, MSG& message);
    // Whether the window is the container of a control.
    static bool IsHost(HWND window) { return Of(window) != nullptr; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);
    static ControlHost* Of(HWND window);
    void Activate();

    HWND window = nullptr;
    Automation control;
    EventConnection events;
};

} // namespace dax::workbench
