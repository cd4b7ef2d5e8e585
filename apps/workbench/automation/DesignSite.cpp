#include "automation/DesignSite.h"

#include <ocidl.h>
#include <olectl.h>

namespace dax::workbench {

namespace {

// The form's side: it answers that the control is being designed, and leaves all else to the control.
class Form final : public IOleClientSite, public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** out) override {
        if (!out) return E_POINTER;
        *out = wanted == IID_IUnknown || wanted == IID_IOleClientSite ? static_cast<IOleClientSite*>(this)
               : wanted == IID_IDispatch ? static_cast<void*>(static_cast<IDispatch*>(this))
                                         : nullptr;
        if (!*out) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE SaveObject() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** container) override {
        *container = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE ShowObject() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value, EXCEPINFO*,
                                     UINT*) override {
        if (member != DISPID_AMBIENT_USERMODE || !value) return DISP_E_MEMBERNOTFOUND;
        value->vt = VT_BOOL;
        value->boolVal = VARIANT_FALSE;
        return S_OK;
    }

private:
    ~Form() = default;

    ULONG references = 0;
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
    const auto form = Com<IOleClientSite>::Share(new Form);
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
