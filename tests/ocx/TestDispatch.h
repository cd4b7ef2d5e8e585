// What objects of the tests that COM calls have in common: they live on the stack or in another object, and count who
// refers to them.
#pragma once

#include <ocidl.h>

namespace dax::test {

template <typename... Interfaces>
class TestDispatch : public IDispatch, public Interfaces... {
public:
    ULONG references = 1;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : Find(iid);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return DISP_E_MEMBERNOTFOUND;
    }

protected:
    virtual void* Find(REFIID) { return nullptr; } // the other interfaces, not counted
};

} // namespace dax::test
