// An event of a control as the pages and the event log see it.
#pragma once

#include "com/EventSink.h"

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

using ControlEventHandler = std::function<void(const ControlEvent&)>;

// Passwords appear as dots, texts in quotes.
std::wstring DescribeArguments(const ControlEvent& event);

// Throws HostError when the control declares a source interface but refuses a sink for it. A control that declares
// none never calls the handler.
EventConnection ConnectEvents(IUnknown* control, ControlEventHandler handler);

} // namespace dax::workbench
