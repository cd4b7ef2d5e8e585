// The control as an object that a host places: IOleObject and IOleControl.
#include "com/Enumerator.h"
#include "ocx/hosting/Control.h"

#include <olectl.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace dax {

HRESULT Control::SetClientSite(IOleClientSite* client) {
    return Guard([&] {
        if (client == site.Client()) return;
        InPlaceDeactivate(); // the former site is notified; the window moves to the new one when it is shown there
        site.Set(client);
        if (client && isReady) ReadAmbient();
    });
}

HRESULT Control::GetClientSite(IOleClientSite** client) {
    if (!client) return E_POINTER;
    *client = site.Client();
    if (*client) (*client)->AddRef();
    return S_OK;
}

HRESULT Control::Close(DWORD saveOption) {
    return Guard([&] {
        if (isDirty && saveOption != OLECLOSE_NOSAVE && site) site.Client()->SaveObject();
        InPlaceDeactivate();
        const ComPtr<IOleAdviseHolder> holder = adviseHolder;
        if (holder) holder->SendOnClose();
    });
}

HRESULT Control::DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND, LPCRECT requested) {
    const SelfReference self(*this);
    if (requested && !isInPlaceActive && !IsRectEmpty(requested)) place = *requested;
    switch (verb) {
    case OLEIVERB_SHOW:
    case OLEIVERB_INPLACEACTIVATE:
        return ActivateInPlace();
    case OLEIVERB_PRIMARY:
    case OLEIVERB_OPEN:
    case OLEIVERB_UIACTIVATE:
        return ActivateUI();
    case OLEIVERB_HIDE:
        UIDeactivate();
        if (isInPlaceActive) HideWindow();
        return S_OK;
    case OLEIVERB_DISCARDUNDOSTATE:
        return S_OK;
    default:
        if (verb < 0) return E_NOTIMPL;
        const HRESULT result = ActivateUI(); // an unknown verb acts as the first one, with a result of its own
        return FAILED(result) ? result : OLEOBJ_S_INVALIDVERB;
    }
}

namespace {

// A copy that the caller frees.
LPOLESTR CopyToTaskMemory(const wchar_t* text) {
    const size_t size = (std::wcslen(text) + 1) * sizeof(wchar_t);
    const auto copy = static_cast<LPOLESTR>(CoTaskMemAlloc(size));
    if (!copy) throw ComError(E_OUTOFMEMORY);
    std::memcpy(copy, text, size);
    return copy;
}

OLEVERB CopyVerb(const ControlVerb& verb) {
    return {verb.number, CopyToTaskMemory(verb.name), verb.menuFlags, verb.attributes};
}

using VerbEnumerator = Enumerator<IEnumOLEVERB, IID_IEnumOLEVERB, OLEVERB, ControlVerb, CopyVerb>;

} // namespace

// Those of the registry, which there need not be.
HRESULT Control::EnumVerbs(IEnumOLEVERB** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Guard([&] { Check(VerbEnumerator::Create({std::begin(ControlVerbs), std::end(ControlVerbs)}, result)); });
}

HRESULT Control::GetUserClassID(CLSID* clsid) { return GetClassID(clsid); }

HRESULT Control::GetUserType(DWORD form, LPOLESTR* name) {
    if (!name) return E_POINTER;
    *name = nullptr;
    const wchar_t* const text = form == USERCLASSTYPE_SHORT     ? Entry().name
                                : form == USERCLASSTYPE_APPNAME ? ThisLibrary().name
                                                                : Entry().description;
    return Guard([&] { *name = CopyToTaskMemory(text); });
}

HRESULT Control::SetExtent(DWORD aspect, SIZEL* size) {
    if (!size) return E_POINTER;
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (size->cx < 0 || size->cy < 0) return E_INVALIDARG;
    extent = *size; // only returned again: the host gives the place to draw in pixels
    return S_OK;
}

HRESULT Control::GetExtent(DWORD aspect, SIZEL* size) {
    if (aspect != DVASPECT_CONTENT) return ReturnNone(size, DV_E_DVASPECT);
    if (!size) return E_POINTER;
    return Guard([&] {
        const bool isSet = extent.cx > 0 && extent.cy > 0;
        *size = isSet ? extent : PixelsToHimetric(window->PreferredSize(dpi), dpi);
    });
}

HRESULT Control::Advise(IAdviseSink* sink, DWORD* cookie) {
    if (cookie) *cookie = 0;
    if (!sink || !cookie) return E_POINTER;
    if (!adviseHolder) {
        const HRESULT result = CreateOleAdviseHolder(adviseHolder.Out());
        if (FAILED(result)) return result;
    }
    return adviseHolder->Advise(sink, cookie);
}

HRESULT Control::Unadvise(DWORD cookie) { return adviseHolder ? adviseHolder->Unadvise(cookie) : OLE_E_NOCONNECTION; }

HRESULT Control::EnumAdvise(IEnumSTATDATA** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return adviseHolder ? adviseHolder->EnumAdvise(result) : S_OK;
}

HRESULT Control::GetMiscStatus(DWORD aspect, DWORD* status) {
    if (!status) return E_POINTER;
    *status = aspect == DVASPECT_CONTENT ? ControlStatus : 0;
    return S_OK;
}

HRESULT Control::GetControlInfo(CONTROLINFO* info) {
    if (!info) return E_POINTER;
    info->hAccel = nullptr;
    info->cAccel = 0;
    info->dwFlags = 0;
    return S_OK;
}

HRESULT Control::OnAmbientPropertyChange(DISPID) {
    return Guard([&] {
        if (!isReady) return; // read when the control is placed
        ReadAmbient();
        ViewChanged();
    });
}

HRESULT Control::FreezeEvents(BOOL isFrozen) {
    frozen = std::max(0, frozen + (isFrozen ? 1 : -1));
    return S_OK;
}

} // namespace dax
