// The seven controls as one table, and a small host of our own, with what the system's container lacks: ambient
// properties, keys, focus, and counts of its calls.
#pragma once

#include "Course.h"
#include "OcxHost.h"

#include <map>
#include <optional>

namespace dax::test {

class TestSite final : public StackObject<Implements<IOleClientSite, IID_IOleClientSite>,
                                          Implements<IOleInPlaceSite, IID_IOleInPlaceSite, IID_IOleWindow>,
                                          Implements<IOleControlSite, IID_IOleControlSite>,
                                          Implements<IOleInPlaceFrame, IID_IOleInPlaceFrame, IID_IOleInPlaceUIWindow>,
                                          Implements<IPropertyNotifySink, IID_IPropertyNotifySink>> {
public:
    TestSite(); // with a window, about 400 by 300 pixels inside
    ~TestSite();

    HWND window = nullptr;
    RECT place{10, 10, 210, 110};
    std::map<DISPID, Variant> ambients;             // run time, and a name
    std::map<std::string, int> calls;               // how often the control has called what
    std::function<void(const std::string&)> onCall; // in the middle of what the control does
    ComPtr<IOleInPlaceActiveObject> activeObject;
    bool hasFocus = false;

    // IOleClientSite
    STDMETHODIMP SaveObject() override { return Count("SaveObject"); }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer**) override { return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return Count("ShowObject"); }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }
    // IOleWindow, IOleInPlaceSite
    STDMETHODIMP GetWindow(HWND* result) override { return *result = window, S_OK; }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
    STDMETHODIMP CanInPlaceActivate() override { return Count("CanInPlaceActivate"); }
    STDMETHODIMP OnInPlaceActivate() override { return Count("OnInPlaceActivate"); }
    STDMETHODIMP OnUIActivate() override { return Count("OnUIActivate"); }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT visible, LPOLEINPLACEFRAMEINFO info) override;
    STDMETHODIMP Scroll(SIZE) override { return S_OK; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return Count("OnUIDeactivate"); }
    STDMETHODIMP OnInPlaceDeactivate() override { return Count("OnInPlaceDeactivate"); }
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; }
    // IOleControlSite
    STDMETHODIMP OnControlInfoChanged() override { return S_OK; }
    STDMETHODIMP LockInPlaceActive(BOOL) override { return S_OK; }
    STDMETHODIMP GetExtendedControl(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*, DWORD) override { return Count("TranslateAccelerator"), S_FALSE; }
    STDMETHODIMP OnFocus(BOOL isInside) override {
        hasFocus = isInside != FALSE;
        return Count(isInside ? "OnFocus" : "OnFocus lost");
    }
    STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }
    // IOleInPlaceFrame
    STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return Count("SetBorderSpace"); }
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override {
        activeObject = ComPtr<IOleInPlaceActiveObject>(object);
        return Count(object ? "SetActiveObject" : "SetActiveObject none");
    }
    STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveMenus(HMENU) override { return E_NOTIMPL; }
    STDMETHODIMP SetStatusText(LPCOLESTR) override { return S_OK; }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }
    STDMETHODIMP TranslateAccelerator(MSG*, WORD) override { return S_FALSE; }
    // IPropertyNotifySink
    STDMETHODIMP OnChanged(DISPID dispid) override { return Count("OnChanged " + std::to_string(dispid)); }
    STDMETHODIMP OnRequestEdit(DISPID) override { return S_OK; }
    // IDispatch: the ambient properties
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override;

private:
    HRESULT Count(const std::string& call);
};

// Something for every control to show.
struct SampleData {
    const Connector connector;
    const Course course;
};

struct ControlCase;

// A control on a site, with its events received. At the end the host releases it in the usual order.
class HostedControl {
public:
    // Without a verb it is not placed yet.
    explicit HostedControl(const ControlCase& what, std::optional<LONG> verb = OLEIVERB_UIACTIVATE);
    ~HostedControl();

    void Fill();
    // The site may close the control during these.
    void Place(LONG verb);
    void DoVerb(LONG verb);
    // A key as a host's loop hands it on: first offered to the control, then to the window. True: the control used it.
    bool Press(WPARAM key);
    void SetAmbient(DISPID dispid, const Variant& value);
    // What the control draws, as rows of pixels.
    std::vector<DWORD> Picture(int width, int height) const;
    // Closes the control and releases everything the host has of it.
    void Close();
    // After Close: the windows are destroyed, or will be soon, and the control refers to nothing of the host's.
    bool IsGone() const;

    const ControlCase& what;
    const SampleData* data = nullptr; // since Fill
    TestSite site;
    ComPtr<IDispatch> control;
    ComPtr<IOleObject> object;
    ComPtr<IOleInPlaceObject> inPlace;
    HWND window = nullptr, child = nullptr; // the child that has the focus, or else the window
    std::function<void(DISPID)> onEvent;
    std::vector<DISPID> received;
    Sink sink{[this](const RecordedEvent& event) {
        received.push_back(event.dispid);
        if (const auto listener = onEvent) listener(event.dispid);
    }};
};

using Action = std::function<void(HostedControl&)>;

struct EventCase {
    DISPID event;
    Action cause;
    Action arrange = nullptr; // what comes before
    long answer = 0;          // value for the event's by-reference argument
};

// How to fill a control, which keys it takes, what it stores, and how each of its events is raised.
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
