// Hands the events of one object to procedures of the script: PREFIX and the event's name.
#pragma once

#include "Engine.h"

#include <ocidl.h>

#include <map>
#include <vector>

namespace dax {

class EventSink final : public IDispatch {
public:
    // Answers a connected sink with one reference; null when the object raises no events.
    static EventSink* Connect(Engine& engine, IUnknown* object, const std::wstring& prefix);
    void Disconnect();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override;

private:
    explicit EventSink(Engine& engine) : engine(engine) {}
    ~EventSink() = default;

    Engine& engine;
    IID events{};
    struct Procedure {
        std::wstring name;
        std::vector<std::wstring> parameters;
    };
    std::map<DISPID, Procedure> procedures;
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    ULONG references = 1;
};

} // namespace dax
