#include "EventSink.h"

#include "com/Variant.h"

namespace dax {

namespace {

// The description of the object's default events; null when there is none.
ComPtr<ITypeInfo> EventsOf(IUnknown* object) {
    const auto provider = Query<IProvideClassInfo>(object, IID_IProvideClassInfo);
    ComPtr<ITypeInfo> coclass;
    if (!provider || FAILED(provider->GetClassInfo(coclass.Out()))) return {};
    TYPEATTR* attributes = nullptr;
    if (FAILED(coclass->GetTypeAttr(&attributes))) return {};
    const UINT count = attributes->cImplTypes;
    coclass->ReleaseTypeAttr(attributes);
    for (UINT i = 0; i < count; ++i) {
        INT flags = 0;
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> events;
        constexpr INT wanted = IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE;
        if (SUCCEEDED(coclass->GetImplTypeFlags(i, &flags)) && (flags & wanted) == wanted &&
            SUCCEEDED(coclass->GetRefTypeOfImplType(i, &reference)) &&
            SUCCEEDED(coclass->GetRefTypeInfo(reference, events.Out())))
            return events;
    }
    return {};
}

} // namespace

EventSink* EventSink::Connect(Engine& engine, IUnknown* object, const std::wstring& prefix) {
    const ComPtr<ITypeInfo> events = EventsOf(object);
    const auto container = Query<IConnectionPointContainer>(object, IID_IConnectionPointContainer);
    TYPEATTR* attributes = nullptr;
    if (!events || !container || FAILED(events->GetTypeAttr(&attributes))) return nullptr;

    auto* sink = new EventSink(engine);
    sink->events = attributes->guid;
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(events->GetFuncDesc(i, &function))) continue;
        // The event's own name, then those of its parameters.
        std::vector<BSTR> names(static_cast<size_t>(function->cParams) + 1);
        UINT known = 0;
        if (SUCCEEDED(events->GetNames(function->memid, names.data(), static_cast<UINT>(names.size()), &known)) &&
            known > 0) {
            Procedure& procedure = sink->procedures[function->memid];
            procedure.name = prefix + ToWide(FromBstr(names[0]));
            for (size_t k = 1; k < names.size(); ++k) procedure.parameters.push_back(ToWide(FromBstr(names[k])));
        }
        for (const BSTR name : names) SysFreeString(name);
        events->ReleaseFuncDesc(function);
    }
    events->ReleaseTypeAttr(attributes);
    if (FAILED(container->FindConnectionPoint(sink->events, sink->point.Out())) ||
        FAILED(sink->point->Advise(sink, &sink->cookie))) {
        sink->point.Reset();
        sink->Release();
        return nullptr;
    }
    return sink;
}

void EventSink::Disconnect() {
    if (!point) return;
    const ComPtr<IConnectionPoint> former = std::move(point);
    former->Unadvise(cookie);
}

HRESULT EventSink::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IDispatch || iid == events ? static_cast<IDispatch*>(this) : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG EventSink::Release() {
    const ULONG left = --references;
    if (left == 0) delete this;
    return left;
}

HRESULT EventSink::GetTypeInfoCount(UINT* count) {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT EventSink::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
    const auto found = procedures.find(dispid);
    if (found == procedures.end()) return DISP_E_MEMBERNOTFOUND;
    try {
        const Procedure procedure = found->second;
        engine.Call(procedure.name, procedure.parameters, *parameters);
        return S_OK;
    } catch (...) {
        return E_FAIL;
    }
}

} // namespace dax
