// Hears the events of a control through its default source interface, whatever that interface is.
#pragma once

#include "automation/Com.h"

#include <functional>
#include <string>
#include <vector>

namespace dax::workbench {

struct EventArgument {
    std::wstring name;
    VARIANT* value;         // the control's own; a by-reference one may be written to
    std::wstring meaning{}; // the name of an enumeration's member
};

struct ControlEvent {
    std::wstring name;
    std::vector<EventArgument> arguments; // in declared order

    // The argument's text; empty when there is none of that name.
    std::wstring Argument(const wchar_t* name) const;
    // Writes to the by-reference argument of that name, if there is one.
    void Answer(const wchar_t* name, long value) const;
};

using EventHandler = std::function<void(const ControlEvent&)>;

// Passwords appear as dots, texts in quotes.
std::wstring DescribeArguments(const ControlEvent& event);

class EventConnection {
public:
    EventConnection() = default;
    // Throws HostError when the control declares a source interface but takes no sink for it. A control that
    // declares none simply never calls.
    EventConnection(IUnknown* control, EventHandler handler);
    EventConnection(const EventConnection&) = delete;
    EventConnection& operator=(const EventConnection&) = delete;
    ~EventConnection();

private:
    Com<IConnectionPoint> point;
    DWORD cookie = 0;
};

} // namespace dax::workbench
