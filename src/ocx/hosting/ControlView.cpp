// The control as a picture: IViewObject2.
#include "controls/win32/GdiSurface.h"
#include "ocx/hosting/Control.h"
#include "ocx/hosting/Metafile.h"

#include <cstdlib>

namespace dax {

namespace {

// Hosts give origin and extent of the metafile in the place of its edges.
RECT Whole(const RECTL& window) {
    return Drawable({window.left, window.top, window.left + window.right, window.top + window.bottom});
}

} // namespace

HRESULT Control::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc, LPCRECTL bounds, LPCRECTL whole,
                      BOOL(CALLBACK*)(ULONG_PTR), ULONG_PTR) {
    if (aspect != DVASPECT_CONTENT && aspect != DVASPECT_DOCPRINT) return DV_E_DVASPECT;
    if (!bounds || !dc) return E_POINTER;
    return Call([&] {
        const RECT place = Drawable(*bounds);
        if (IsRectEmpty(&place) && (place.left == place.right || place.top == place.bottom)) return;
        if (GetObjectType(dc) == OBJ_METADC) {
            const SIZE size{std::abs(place.right - place.left), std::abs(place.bottom - place.top)};
            const Metafile picture = Record(LayoutFor(size, 0));
            PlayWindowsFormat(dc, picture, place, whole ? Whole(*whole) : place);
            return;
        }
        const DeviceContextState state(dc);
        const RECT pixels = InDeviceUnits(dc, place);
        const SIZE size{pixels.right - pixels.left, pixels.bottom - pixels.top};
        UseDeviceUnits(dc);
        // Controls are painted in pixels, whatever units the host's screen has.
        if (IsRasterDevice(dc))
            window->Draw(dc, pixels);
        else
            Play(dc, Record(LayoutFor(size, GetDeviceCaps(dc, LOGPIXELSX))), pixels);
    });
}

// Laid out as on the screen and recorded, so that every device shows the same at the same places, only finer.
Metafile Control::Record(SIZE layout) {
    return RecordMetafile(layout, [this](HDC dc, SIZE size) { window->DrawScaled(dc, size); });
}

SIZE Control::LayoutFor(SIZE target, int targetDpi) const {
    RECT shown{};
    if (isInPlaceActive && window->Handle()) GetClientRect(window->Handle(), &shown);
    SIZE own{shown.right, shown.bottom};
    if (IsRectEmpty(&shown)) own = HimetricToPixels(extent, dpi);
    if (targetDpi <= 0 && (own.cx <= 0 || own.cy <= 0)) own = window->PreferredSize(dpi);
    return target.cx <= 0 || target.cy <= 0 ? own : LayoutSize(own, target, targetDpi, dpi);
}

HRESULT Control::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    viewSink = ComPtr<IAdviseSink>(sink);
    viewAspects = aspects;
    viewFlags = flags;
    if (sink && (flags & ADVF_PRIMEFIRST)) ViewChanged();
    return S_OK;
}

HRESULT Control::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    if (aspects) *aspects = viewAspects;
    if (flags) *flags = viewFlags;
    if (sink) {
        *sink = viewSink.Get();
        if (*sink) (*sink)->AddRef();
    }
    return S_OK;
}

void Control::ViewChanged() {
    const SelfReference self(*this);
    if (const ComPtr<IDataAdviseHolder> holder = dataHolder) holder->SendOnDataChange(this, 0, 0);
    const ComPtr<IAdviseSink> sink = viewSink;
    if (!sink || !(viewAspects & DVASPECT_CONTENT)) return;
    if (viewFlags & ADVF_ONLYONCE) viewSink.Reset();
    sink->OnViewChange(DVASPECT_CONTENT, -1);
}

HRESULT Control::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) { return GetExtent(aspect, size); }

} // namespace dax
