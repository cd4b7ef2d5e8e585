// A small host of our own: what the system's container lacks (ambient properties, keys, focus) and counts of its calls.
#pragma once

#include "OcxHost.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace dax::test {

class TestSite final : public StackObject<Implements<IOleClientSite, IID_IOleClientSite>,
                                          Implements<IOleInPlaceSite, IID_IOleInPlaceSite, IID_IOleWindow>,
                                          Implements<IOleControlSite, IID_IOleControlSite>,
                                          Implements<IOleInPlaceFrame, IID_IOleInPlaceFrame, IID_IOleInPlaceUIWindow>> {
public:
    // With a window of its own, 400 by 300 pixels inside, or in that of another site.
    explicit TestSite(const TestSite* beside = nullptr);
    ~TestSite();

    HWND window = nullptr;
    RECT place{10, 10, 210, 110};
    std::map<DISPID, Variant> ambients; // run time, and a name
    int activations = 0, deactivations = 0, uiActivations = 0, uiDeactivations = 0, keysOffered = 0, saves = 0;
    bool hasFocus = false;
    ComPtr<IOleInPlaceActiveObject> activeObject;
    std::function<void(const std::string& call)> called; // by the control, in the middle of what it does

    // IOleClientSite
    STDMETHODIMP SaveObject() override { return Count(saves, "SaveObject"); }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer**) override { return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return Tell("ShowObject"); }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }
    // IOleWindow, IOleInPlaceSite
    STDMETHODIMP GetWindow(HWND* result) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
    STDMETHODIMP CanInPlaceActivate() override { return Tell("CanInPlaceActivate"); }
    STDMETHODIMP OnInPlaceActivate() override { return Count(activations, "OnInPlaceActivate"); }
    STDMETHODIMP OnUIActivate() override { return Count(uiActivations, "OnUIActivate"); }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT visible, LPOLEINPLACEFRAMEINFO info) override;
    STDMETHODIMP Scroll(SIZE) override { return S_OK; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return Count(uiDeactivations, "OnUIDeactivate"); }
    STDMETHODIMP OnInPlaceDeactivate() override { return Count(deactivations, "OnInPlaceDeactivate"); }
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; }
    // IOleControlSite
    STDMETHODIMP OnControlInfoChanged() override { return S_OK; }
    STDMETHODIMP LockInPlaceActive(BOOL) override { return S_OK; }
    STDMETHODIMP GetExtendedControl(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*, DWORD) override;
    STDMETHODIMP OnFocus(BOOL isInside) override;
    STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }
    // IOleInPlaceFrame
    STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return Tell("SetBorderSpace"); }
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override;
    STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveMenus(HMENU) override { return E_NOTIMPL; }
    STDMETHODIMP SetStatusText(LPCOLESTR) override { return S_OK; }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }
    STDMETHODIMP TranslateAccelerator(MSG*, WORD) override { return S_FALSE; }
    // IDispatch: the ambient properties
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) override;

private:
    HRESULT Tell(const char* call);
    HRESULT Count(int& calls, const char* call) { return ++calls, Tell(call); }
    const bool hasOwnWindow;
};

// A host's bag, which keeps what is written.
class TestBag final : public StackObject<Implements<IPropertyBag, IID_IPropertyBag>> {
public:
    std::vector<std::wstring> names; // in the order of writing
    std::map<std::wstring, Variant> values;

    STDMETHODIMP Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        const auto found = values.find(name);
        return found == values.end() ? E_INVALIDARG : VariantCopy(value, &found->second);
    }
    STDMETHODIMP Write(LPCOLESTR name, VARIANT* value) override {
        names.emplace_back(name);
        return VariantCopy(&values[name], value);
    }
};

// A control placed on a site, in the order that most hosts use.
ComPtr<IOleObject> Place(IDispatch* control, TestSite& site, LONG verb = OLEIVERB_INPLACEACTIVATE);

// Null while the control is not active.
HWND WindowOf(IUnknown* control);
// What the control draws, as rows of pixels.
std::vector<DWORD> Picture(IUnknown* control, int width, int height);

} // namespace dax::test
