#include "com/EventSink.h"

#include "com/ComError.h"

namespace dax {

namespace {

constexpr size_t MaxNames = 32; // of an event and its parameters

// The object's default source interface; null when it declares none.
ComPtr<ITypeInfo> DefaultSource(IUnknown* object) {
    const auto provider = Query<IProvideClassInfo>(object, IID_IProvideClassInfo);
    ComPtr<ITypeInfo> coclass;
    TYPEATTR* attributes = nullptr;
    if (!provider || FAILED(provider->GetClassInfo(coclass.Out())) || FAILED(coclass->GetTypeAttr(&attributes)))
        return {};
    const UINT count = attributes->cImplTypes;
    coclass->ReleaseTypeAttr(attributes);
    constexpr INT requested = IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE;
    for (UINT i = 0; i < count; ++i) {
        INT flags = 0;
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> source;
        if (SUCCEEDED(coclass->GetImplTypeFlags(i, &flags)) && (flags & requested) == requested &&
            SUCCEEDED(coclass->GetRefTypeOfImplType(i, &reference)) &&
            SUCCEEDED(coclass->GetRefTypeInfo(reference, source.Out())))
            return source;
    }
    return {};
}

} // namespace

EventSink::EventSink(const IID& iid, ComPtr<ITypeInfo> description, EventHandler handler)
    : iid(iid), description(std::move(description)), handler(std::move(handler)) {}

void* EventSink::Find(REFIID requested) { return DispatchObject::Find(requested == iid ? IID_IDispatch : requested); }

HRESULT EventSink::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
    if (!parameters) return E_POINTER;
    const ComPtr<IDispatch> self(this); // the handler may end the connection
    try {
        ReceivedEvent event{dispid, {}, {}, *parameters, *description.Get()};
        BSTR names[MaxNames] = {};
        UINT known = 0;
        if (FAILED(description->GetNames(dispid, names, MaxNames, &known))) known = 0;
        event.name = known > 0 ? ToWide(FromBstr(names[0])) : L"event " + std::to_wstring(dispid);
        for (UINT i = 1; i < known; ++i) event.parameters.push_back(ToWide(FromBstr(names[i])));
        for (UINT i = 0; i < known; ++i) SysFreeString(names[i]);
        handler(event);
        return S_OK;
    } catch (const ComError& error) {
        return error.Code();
    } catch (...) {
        return E_FAIL;
    }
}

EventConnection::EventConnection(IUnknown* object, EventHandler handler) {
    const ComPtr<ITypeInfo> source = DefaultSource(object);
    TYPEATTR* attributes = nullptr;
    if (!source || FAILED(source->GetTypeAttr(&attributes))) return;
    const IID iid = attributes->guid;
    source->ReleaseTypeAttr(attributes);
    sink = MakeCom<EventSink>(iid, source, std::move(handler));
    const auto container = Query<IConnectionPointContainer>(object, IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> found;
    Check(container ? container->FindConnectionPoint(iid, found.Out()) : E_NOINTERFACE);
    Check(found->Advise(sink.Get(), &cookie));
    point = std::move(found);
}

EventConnection& EventConnection::operator=(EventConnection&& other) noexcept {
    if (this == &other) return *this;
    Disconnect();
    sink = std::move(other.sink);
    point = std::move(other.point);
    cookie = other.cookie;
    return *this;
}

void EventConnection::Disconnect() {
    const ComPtr<IConnectionPoint> former = std::move(point);
    if (former) former->Unadvise(cookie);
}

} // namespace dax
