// The control as a picture: IViewObject2.
#include "ocx/hosting/Control.h"

namespace dax {

HRESULT Control::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc, LPCRECTL bounds, LPCRECTL,
                      BOOL(CALLBACK*)(ULONG_PTR), ULONG_PTR) {
    if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (!bounds || !dc) return E_POINTER;
    return Run([&] {
        // Controls are painted in pixels, whatever units the host's surface has.
        RECT pixels{bounds->left, bounds->top, bounds->right, bounds->bottom};
        const int saved = SaveDC(dc);
        if (GetDeviceCaps(dc, TECHNOLOGY) != DT_METAFILE) {
            LPtoDP(dc, reinterpret_cast<POINT*>(&pixels), 2);
            SetMapMode(dc, MM_TEXT);
            SetWindowOrgEx(dc, 0, 0, nullptr);
            SetViewportOrgEx(dc, 0, 0, nullptr);
        }
        try {
            window->Draw(dc, pixels);
        } catch (...) {
            RestoreDC(dc, saved);
            throw;
        }
        RestoreDC(dc, saved);
    });
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
    const ComPtr<IAdviseSink> sink = viewSink;
    if (!sink || !(viewAspects & DVASPECT_CONTENT)) return;
    if (viewFlags & ADVF_ONLYONCE) viewSink.Reset();
    sink->OnViewChange(DVASPECT_CONTENT, -1);
}

HRESULT Control::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) { return GetExtent(aspect, size); }

} // namespace dax
