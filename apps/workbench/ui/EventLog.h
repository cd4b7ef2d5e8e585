// What passes between the host and its controls, newest last.
#pragma once

#include "automation/ControlEvent.h"
#include "ui/Style.h"

namespace dax::workbench {

class EventLog {
public:
    bool Create(HWND parent, int id, const Style& style);
    HWND Window() const { return window; }
    void StyleChanged(const Style& style);
    void Resized();

    void AddEvent(const std::wstring& control, const ControlEvent& event);
    // A member that the host called, and what came of it.
    void AddCall(const std::wstring& control, const std::wstring& member, const std::wstring& outcome);
    void Clear();
    // The selected lines as text, tabs between the columns; all when none is selected.
    void Copy() const;

private:
    void Add(const wchar_t* kind, const std::wstring& control, const std::wstring& member,
             const std::wstring& arguments);

    int least = 0;  // width of the column of arguments, in pixels
    int widest = 0; // of its texts
    HWND window = nullptr;
};

} // namespace dax::workbench
