#include "ocx/com/ConnectionPoint.h"

#include "ocx/com/Enumerator.h"

#include <olectl.h>

#include <algorithm>

namespace dax {

namespace {

struct HeldConnection {
    ComPtr<IUnknown> sink;
    DWORD cookie;
};

CONNECTDATA GiveConnection(const HeldConnection& held) {
    held.sink->AddRef();
    return {held.sink.Get(), held.cookie};
}

IConnectionPoint* GivePoint(const ComPtr<IConnectionPoint>& held) {
    held->AddRef();
    return held.Get();
}

using ConnectionEnumerator =
    Enumerator<IEnumConnections, IID_IEnumConnections, CONNECTDATA, HeldConnection, GiveConnection>;
using PointEnumerator = Enumerator<IEnumConnectionPoints, IID_IEnumConnectionPoints, IConnectionPoint*,
                                   ComPtr<IConnectionPoint>, GivePoint>;

} // namespace

std::vector<ComPtr<IUnknown>> ConnectionPoint::Sinks() const {
    std::vector<ComPtr<IUnknown>> result;
    for (const Connection& connection : connections) result.push_back(connection.sink);
    return result;
}

bool ConnectionPoint::IsConnected(const IUnknown* sink) const {
    return std::any_of(connections.begin(), connections.end(),
                       [sink](const Connection& connection) { return connection.sink.Get() == sink; });
}

void ConnectionPoint::DisconnectAll() {
    std::vector<Connection> released;
    released.swap(connections);
}

HRESULT ConnectionPoint::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IConnectionPoint ? static_cast<IConnectionPoint*>(this) : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (!iid) return E_POINTER;
    *iid = sinkInterface;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    *container = &owner;
    owner.AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (!sink || !cookie) return E_POINTER;
    *cookie = 0;
    ComPtr<IUnknown> wanted = Query<IUnknown>(sink, sinkInterface);
    if (!wanted) wanted = Query<IUnknown>(sink, IID_IDispatch); // scripts' sinks know only this one
    if (!wanted) return CONNECT_E_CANNOTCONNECT;
    try {
        connections.push_back({++lastCookie, std::move(wanted)});
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    *cookie = lastCookie;
    return S_OK;
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) {
    const auto found = std::find_if(connections.begin(), connections.end(),
                                    [cookie](const Connection& connection) { return connection.cookie == cookie; });
    if (found == connections.end()) return CONNECT_E_NOCONNECTION;
    const Connection released = std::move(*found);
    connections.erase(found);
    return S_OK;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** result) {
    try {
        std::vector<HeldConnection> held;
        for (const Connection& connection : connections) held.push_back({connection.sink, connection.cookie});
        return ConnectionEnumerator::Create(std::move(held), result);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

void FireEvent(const ConnectionPoint& point, DISPID event, std::span<Variant> arguments) {
    std::vector<Variant> reversed(arguments.rbegin(), arguments.rend());
    for (const ComPtr<IUnknown>& sink : point.Sinks()) {
        if (!point.IsConnected(sink.Get())) continue; // an earlier sink has disconnected it
        // Query answers the events' own interface or IDispatch: both are an IDispatch.
        const auto dispatch = Query<IDispatch>(sink.Get(), IID_IDispatch);
        if (!dispatch) continue;
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        Variant result;
        dispatch->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
    }
}

HRESULT EnumeratePoints(std::vector<ComPtr<IConnectionPoint>> points, IEnumConnectionPoints** result) {
    return PointEnumerator::Create(std::move(points), result);
}

} // namespace dax
