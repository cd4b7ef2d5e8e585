// What makes a control of ours an ActiveX control: everything between a host and a WindowBase. A class on top of
// it only forwards its own properties and methods.
#pragma once

#include "com/ConnectionPoint.h"
#include "com/Forwarding.h"
#include "controls/win32/WindowBase.h"
#include "ocx/hosting/HostSite.h"
#include "ocx/hosting/Metafile.h"

#include <initializer_list>
#include <memory>

namespace dax {

class Control : public ClassObject,
                public IOleObject,
                public IOleControl,
                public IOleInPlaceObject,
                public IOleInPlaceActiveObject,
                public IViewObject2,
                public IDataObject,
                public IPersistStreamInit,
                public IPersistStorage,
                public IPersistPropertyBag,
                public IConnectionPointContainer {
public:
    // IOleObject
    STDMETHODIMP SetClientSite(IOleClientSite* client) override;
    STDMETHODIMP GetClientSite(IOleClientSite** client) override;
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHODIMP Close(DWORD saveOption) override;
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** moniker) override { return ReturnNone(moniker, E_NOTIMPL); }
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject** data) override;
    STDMETHODIMP DoVerb(LONG verb, LPMSG message, IOleClientSite*, LONG, HWND, LPCRECT place) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** result) override;
    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP IsUpToDate() override { return S_OK; }
    STDMETHODIMP GetUserClassID(CLSID* clsid) override;
    STDMETHODIMP GetUserType(DWORD form, LPOLESTR* name) override;
    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override;
    STDMETHODIMP Advise(IAdviseSink* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumAdvise(IEnumSTATDATA** result) override;
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }
    // IOleControl
    STDMETHODIMP GetControlInfo(CONTROLINFO* info) override;
    STDMETHODIMP OnMnemonic(MSG*) override { return S_OK; }
    STDMETHODIMP OnAmbientPropertyChange(DISPID) override;
    STDMETHODIMP FreezeEvents(BOOL isFrozen) override;
    // IOleWindow, IOleInPlaceObject
    STDMETHODIMP GetWindow(HWND* result) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override;
    STDMETHODIMP SetObjectRects(LPCRECT place, LPCRECT visible) override;
    STDMETHODIMP ReactivateAndUndo() override { return INPLACE_E_NOTUNDOABLE; }
    // IOleInPlaceActiveObject
    STDMETHODIMP TranslateAccelerator(LPMSG message) override;
    STDMETHODIMP OnFrameWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnDocWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }
    // IViewObject2
    STDMETHODIMP Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc, LPCRECTL bounds, LPCRECTL,
                      BOOL(CALLBACK*)(ULONG_PTR), ULONG_PTR) override;
    STDMETHODIMP GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) override {
        return ReturnNone(colors, S_FALSE);
    }
    STDMETHODIMP Freeze(DWORD, LONG, void*, DWORD* key) override { return ReturnNone(key, E_NOTIMPL); }
    STDMETHODIMP Unfreeze(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
    STDMETHODIMP GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) override;
    // IDataObject
    STDMETHODIMP GetData(FORMATETC* requested, STGMEDIUM* medium) override;
    STDMETHODIMP GetDataHere(FORMATETC* requested, STGMEDIUM* medium) override;
    STDMETHODIMP QueryGetData(FORMATETC* requested) override;
    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC* requested, FORMATETC* result) override;
    STDMETHODIMP SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) override;
    STDMETHODIMP DAdvise(FORMATETC* requested, DWORD flags, IAdviseSink* sink, DWORD* cookie) override;
    STDMETHODIMP DUnadvise(DWORD cookie) override;
    STDMETHODIMP EnumDAdvise(IEnumSTATDATA** result) override;
    // IPersist, IPersistStreamInit, IPersistStorage, IPersistPropertyBag
    STDMETHODIMP GetClassID(CLSID* clsid) override;
    STDMETHODIMP IsDirty() override { return isDirty ? S_OK : S_FALSE; }
    STDMETHODIMP InitNew() override;
    STDMETHODIMP Load(IStream* stream) override;
    STDMETHODIMP Save(IStream* stream, BOOL isClearing) override;
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
    STDMETHODIMP InitNew(IStorage*) override { return InitNew(); }
    STDMETHODIMP Load(IStorage* storage) override;
    STDMETHODIMP Save(IStorage* storage, BOOL isSameAsLoad) override;
    STDMETHODIMP SaveCompleted(IStorage*) override;
    STDMETHODIMP HandsOffStorage() override { return S_OK; }
    STDMETHODIMP Load(IPropertyBag* bag, IErrorLog* log) override;
    STDMETHODIMP Save(IPropertyBag* bag, BOOL isClearing, BOOL isSavingAll) override;
    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** result) override;
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** result) override;

protected:
    Control(const ClassEntry& entry, std::unique_ptr<WindowBase> window);
    ~Control() override;

    void* Find(REFIID iid) override;
    void Destroy() override;
    // Places the control with its default properties when no host has loaded others; without a host, its window is
    // created under a hidden one.
    void EnsureReady() override;

    // Does nothing while the host has frozen events. The control may then be destroyed, unless a member is running.
    void Fire(DISPID event, std::initializer_list<Variant> arguments);
    // What the control shows has changed; hosts that draw it themselves are notified.
    void ViewChanged();

private:
    // The result of a member that has nothing to return; the caller's variable is cleared all the same.
    template <typename Result>
    static HRESULT ReturnNone(Result* result, HRESULT code) {
        if (!result) return E_POINTER;
        *result = {};
        return code;
    }

    HRESULT ActivateInPlace();
    HRESULT ActivateUI(); // in place first, if need be
    void HideWindow();
    void FocusMoved(bool isInside);
    void PropertyChanged(const Text& name);
    DISPID DispidOf(const Text& property); // DISPID_UNKNOWN: none of that name
    Metafile Record(SIZE layout);
    ComPtr<IDataObject> Snapshot();
    // The number of pixels in which it is laid out for a place of so many units; 0 dots per inch: unknown. For no
    // place: its own size.
    SIZE LayoutFor(SIZE target, int targetDpi) const;
    void MoveWindowTo(const RECT& place, const RECT& visible);
    void Initialize(PropertyBag* bag); // null: default properties
    void ReadAmbient();

    const std::unique_ptr<WindowBase> window;
    HostSite site;
    ComPtr<IOleInPlaceFrame> frame;
    ComPtr<IOleInPlaceUIWindow> document;
    ComPtr<IOleAdviseHolder> adviseHolder;
    ComPtr<IDataAdviseHolder> dataHolder;
    ComPtr<IAdviseSink> viewSink;
    DWORD viewAspects = 0, viewFlags = 0;
    ConnectionPoint events, propertySinks;
    SIZEL extent{}; // as the host has set it; zero: the control's own
    RECT place{};   // in the host's window
    int dpi = USER_DEFAULT_SCREEN_DPI;
    int frozen = 0; // how often the host has frozen events
    bool isReady = false, isDirty = false, isInPlaceActive = false, isUIActive = false;
};

// A control with the dual interface `Interface` for a window of class `Window`; its members forward to `Core`.
template <typename Interface, typename Window, typename Core>
class ControlOf : public Forwarding<DualObject<Interface, Control>, Core> {
protected:
    explicit ControlOf(const ClassEntry& entry) : ControlOf(entry, std::make_unique<Window>()) {}

    Window& View() const { return view; }

    // As Call and Get, of members that change what the control shows.
    template <typename Member, typename... Arguments>
    HRESULT Change(Member member, const Arguments&... arguments) noexcept {
        return this->Call([&] {
            this->Invoke(member, arguments...);
            this->ViewChanged();
        });
    }
    template <typename Result, typename Member, typename... Arguments>
    HRESULT GetChange(Result* result, Member member, const Arguments&... arguments) noexcept {
        return this->Get(result, [&] {
            auto returned = this->Invoke(member, arguments...);
            this->ViewChanged();
            return returned;
        });
    }

    // Raises an event that comes with a change of what the control shows.
    void FireChange(DISPID event, std::initializer_list<Variant> arguments = {}) {
        const typename Control::SelfReference self(*this);
        this->ViewChanged();
        this->Fire(event, arguments);
    }

private:
    ControlOf(const ClassEntry& entry, std::unique_ptr<Window> created)
        : ControlOf{entry, *created, std::move(created)} {} // braces: in this order
    ControlOf(const ClassEntry& entry, Window& view, std::unique_ptr<WindowBase> owned)
        : Forwarding<DualObject<Interface, Control>, Core>(entry, std::move(owned)), view(view) {}

    Window& view;
};

} // namespace dax
