// The seven controls as one table: what fills each, which keys it takes, what it keeps, and how each of its events
// comes about.
#pragma once

#include "Course.h"
#include "HostedControl.h"

namespace dax::test {

// Something for every control to show.
struct SampleData {
    const Connector connector;
    const Course course;
};

using Action = std::function<void(HostedControl&)>;

struct EventCase {
    DISPID event;
    Action cause;
    Action arrange = nullptr; // what comes before
    long answer = 0;          // to what the event asks by reference
};

struct ControlCase {
    const char* name;   // of the class
    std::wstring child; // class of the window inside that has the focus; empty: none
    SIZE natural;       // pixels at 96 dpi
    Action fill;
    std::vector<std::pair<WPARAM, DISPID>> keys{}; // its own, with the event that each raises, in this order; 0: none
    std::vector<std::pair<const wchar_t*, Variant>> kept{}; // what a host keeps, with other values than the defaults
    std::vector<EventCase> events{};
    bool isSampleShown = false;  // in design mode
    bool takesHostColors = true; // else it is in the system's
};

const std::vector<ControlCase>& ControlCases();
void PrintTo(const ControlCase& row, std::ostream* out);
ComPtr<IDispatch> Create(const ControlCase& row);

} // namespace dax::test
