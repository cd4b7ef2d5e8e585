// The base of automation objects without a type library, such as those of hosts.
#pragma once

#include "com/ComObject.h"

namespace dax {

// A ComObject with an IDispatch that has no type information; members are added by overriding GetIDsOfNames and Invoke.
template <typename... Rows>
class DispatchObject : public ComObject<Implements<IDispatch, IID_IDispatch>, Rows...> {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info) *info = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return DISP_E_MEMBERNOTFOUND;
    }
};

} // namespace dax
