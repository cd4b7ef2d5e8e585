// What a screen reader finds in a window of ours: the whole and its elements, through the system's accessibility
// interface. The object may exist longer than the window: its members then return CO_E_OBJNOTCONNECTED.
#pragma once

#include "com/ComPtr.h"
#include "controls/win32/Windows.h"

#include <vector>

namespace dax {

class AccessibleObject;

class Accessible {
public:
    using Element = LONG;              // the child id of the interface; lasts as long as the element
    static constexpr Element Self = 0; // CHILDID_SELF

    Accessible();
    virtual ~Accessible();
    Accessible(const Accessible&) = delete;
    Accessible& operator=(const Accessible&) = delete;

    void Connect(HWND window);
    void Disconnect(); // the window is being destroyed
    // Whether WM_GETOBJECT requests this object and not another one, and the result of the message then.
    static bool IsRequested(LPARAM lParam);
    LRESULT AnswerGetObject(WPARAM wParam);

    // Objects with references left; their code must not be unloaded.
    static long LiveCount();

    virtual std::vector<Element> Elements() = 0; // in their order
    virtual LONG Count() const = 0;
    virtual bool Has(Element element) const = 0;

    // Of an element or of the whole, with the system's own numbers. For the whole, the system supplies name and place.
    virtual LONG Role(Element element) const = 0;
    virtual LONG State(Element element) const = 0;
    virtual Text Name(Element element) const = 0;
    virtual Text Value(Element) const { return {}; }
    virtual Text Description(Element) const { return {}; }
    virtual RECT Place(Element element) const = 0; // of the client area; empty while it is hidden

    virtual Element ElementAt(POINT point) = 0; // of the client area
    virtual Element Focused() { return Self; }
    virtual std::vector<Element> Selected() { return {}; }
    virtual Element Navigate(Element from, LONG direction); // Self: there is none

    // What the user can do; the host's event handlers run and may do anything.
    virtual bool Select(Element, LONG /*flags*/) { return false; }
    virtual Text Action(Element) const { return {}; }
    virtual void DoDefaultAction(Element) {}

protected:
    HWND Window() const { return window; } // null while not connected
    bool HasFocus() const { return window && GetFocus() == window; }
    bool HasListener(DWORD event) const; // otherwise no event is needed
    void RaiseEvent(DWORD event, Element element) const;

private:
    HWND window = nullptr;
    ComPtr<AccessibleObject> object;
};

} // namespace dax
