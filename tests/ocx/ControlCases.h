// The seven controls as one table: what fills each, which keys it takes, what it keeps, and how each of its events
// comes about.
#pragma once

#include "Course.h"
#include "TestSite.h"

namespace dax::test {

// Something for every control to show.
struct SampleData {
    const Connector connector;
    const Course course;
};

struct ControlCase;

// A control on a site, with its events heard. At the end the host releases it in the usual order.
class HostedControl {
public:
    explicit HostedControl(const ControlCase& what, LONG verb = OLEIVERB_UIACTIVATE, const TestSite* beside = nullptr);
    ~HostedControl();

    void Fill();
    void DoVerb(LONG verb);
    // A key as a host's loop hands it on: first offered to the control, then to the window. True: the control used it.
    bool Press(WPARAM key);
    void Do(const wchar_t* member, std::initializer_list<Variant> arguments = {}) const;
    void Set(const wchar_t* property, const Variant& value) const;
    void AmbientChanged(DISPID dispid, const Variant& value);
    RECT Place() const; // of the window, in the host's
    // Closes the control and releases everything the host has of it.
    void Close();
    // After Close: the windows are gone, or go soon, and the control refers to nothing of the host's.
    bool IsGone() const;

    const ControlCase& what;
    const SampleData* data = nullptr; // since Fill
    TestSite site;
    ComPtr<IDispatch> control;
    ComPtr<IOleObject> object;
    ComPtr<IOleInPlaceObject> inPlace;
    HWND window = nullptr, child = nullptr; // the child that has the focus, or else the window
    std::function<void(DISPID)> onEvent;
    std::vector<DISPID> heard;
    Sink sink{[this](const HeardEvent& event) {
        heard.push_back(event.dispid);
        if (const auto listener = onEvent) listener(event.dispid);
    }};
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
