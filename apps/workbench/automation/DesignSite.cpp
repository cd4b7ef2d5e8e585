#include "automation/DesignSite.h"

#include "com/DispatchObject.h"

#include <ocidl.h>
#include <olectl.h>

namespace dax::workbench {

namespace {

// The form's site: its only ambient property is that the control is in design mode.
class Form final : public DispatchObject<Implements<IOleClientSite, IID_IOleClientSite>> {
public:
    STDMETHODIMP SaveObject() override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer** container) override {
        *container = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP ShowObject() override { return S_OK; }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value, EXCEPINFO*, UINT*) override {
        if (member != DISPID_AMBIENT_USERMODE || !value) return DISP_E_MEMBERNOTFOUND;
        Variant(false).MoveTo(value);
        return S_OK;
    }
};

SIZEL Himetric(HDC dc, const RECT& place) {
    constexpr int perInch = 2540;
    return {MulDiv(place.right - place.left, perInch, GetDeviceCaps(dc, LOGPIXELSX)),
            MulDiv(place.bottom - place.top, perInch, GetDeviceCaps(dc, LOGPIXELSY))};
}

} // namespace

DesignSite::DesignSite(const ControlLibrary& library, const std::wstring& name) {
    control = library.CreateObject(name).Object().As<IOleObject>(IID_IOleObject);
    if (!control) throw HostError(E_NOINTERFACE, library.Advice(name, E_NOINTERFACE));
    const auto form = MakeCom<Form>();
    control->SetClientSite(form.Get());
    if (const auto fresh = control.As<IPersistStreamInit>(IID_IPersistStreamInit)) fresh->InitNew();
}

DesignSite::~DesignSite() {
    if (!control) return;
    control->Close(OLECLOSE_NOSAVE);
    control->SetClientSite(nullptr);
}

void DesignSite::Draw(HDC dc, const RECT& place) const {
    SIZEL size = Himetric(dc, place);
    control->SetExtent(DVASPECT_CONTENT, &size);
    const auto view = control.As<IViewObject>(IID_IViewObject);
    const RECTL bounds{place.left, place.top, place.right, place.bottom};
    const HRESULT result =
        view ? view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0)
             : E_NOINTERFACE;
    if (FAILED(result)) throw HostError(result, DescribeResult(result));
}

} // namespace dax::workbench
