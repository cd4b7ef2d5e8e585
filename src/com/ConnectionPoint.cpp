#include "com/ConnectionPoint.h"

#include "com/Dispatch.h"
#include "com/Enumerator.h"

#include <olectl.h>

#include <algorithm>

namespace dax {

namespace {

CONNECTDATA CopyConnection(const ConnectionPoint::Connection& held) {
    return {ComPtr(held.sink).Detach(), held.cookie};
}

IConnectionPoint* CopyPoint(const ComPtr<IConnectionPoint>& held) { return ComPtr(held).Detach(); }

using ConnectionEnumerator =
    Enumerator<IEnumConnections, IID_IEnumConnections, CONNECTDATA, ConnectionPoint::Connection, CopyConnection>;
using PointEnumerator = Enumerator<IEnumConnectionPoints, IID_IEnumConnectionPoints, IConnectionPoint*,
                                   ComPtr<IConnectionPoint>, CopyPoint>;

} // namespace

bool ConnectionPoint::IsConnected(DWORD cookie) const {
    return std::any_of(connections.begin(), connections.end(),
                       [cookie](const Connection& connection) { return connection.cookie == cookie; });
}

void ConnectionPoint::DisconnectAll() {
    std::vector<Connection> released;
    released.swap(connections);
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (!iid) return E_POINTER;
    *iid = sinkInterface;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    *container = ComPtr(&owner).Detach();
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (cookie) *cookie = 0;
    if (!sink || !cookie) return E_POINTER;
    ComPtr<IUnknown> requested = Query<IUnknown>(sink, sinkInterface);
    if (!requested && kind == Kind::Events) requested = Query<IUnknown>(sink, IID_IDispatch);
    if (!requested) return CONNECT_E_CANNOTCONNECT;
    try {
        connections.push_back({++lastCookie, std::move(requested)});
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
    if (!result) return E_POINTER;
    *result = nullptr;
    try {
        return ConnectionEnumerator::Create(connections, result);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

void FireEvent(const ConnectionPoint& point, DISPID event, std::span<const Variant> arguments) {
    for (const auto& connection : point.Connections()) {
        if (!point.IsConnected(connection.cookie)) continue; // an earlier sink has disconnected it
        // Connected as the events' own interface or as IDispatch: both are an IDispatch. Queried again, a sink of
        // several controls would return the one that it was made for first.
        auto* const dispatch = static_cast<IDispatch*>(connection.sink.Get());
        PackedArguments packed(arguments, DISPATCH_METHOD);
        Variant result;
        dispatch->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, packed.Parameters(), &result, nullptr,
                         nullptr);
    }
}

HRESULT EnumeratePoints(std::vector<ComPtr<IConnectionPoint>> points, IEnumConnectionPoints** result) {
    return PointEnumerator::Create(std::move(points), result);
}

} // namespace dax
