// Where a host's event sink is connected to an object.
#pragma once

#include "com/ComObject.h"
#include "com/Variant.h"

#include <ocidl.h>

#include <span>
#include <vector>

namespace dax {

// A part of its owner: shares the owner's reference count.
class ConnectionPoint final : public ComObject<Implements<IConnectionPoint, IID_IConnectionPoint>> {
public:
    struct Connection {
        DWORD cookie;
        ComPtr<IUnknown> sink; // the pointer that the sink returned for this interface; it may have several
    };
    // Event sinks may implement IDispatch alone, as those of scripts do.
    enum class Kind { Events, Interface };

    ConnectionPoint(IConnectionPointContainer& owner, const IID& sinkInterface, Kind kind)
        : owner(owner), sinkInterface(sinkInterface), kind(kind) {}

    const IID& SinkInterface() const { return sinkInterface; }
    // A copy: sinks may be added and removed while they are called.
    std::vector<Connection> Connections() const { return connections; }
    bool IsConnected(DWORD cookie) const;
    void DisconnectAll();

    STDMETHODIMP_(ULONG) AddRef() override { return owner.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner.Release(); }
    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** result) override;

private:
    IConnectionPointContainer& owner;
    const IID& sinkInterface;
    const Kind kind;
    std::vector<Connection> connections;
    DWORD lastCookie = 0;
};

// Calls an event on every sink of a point of events in turn, arguments in their documented order. A sink that fails is
// passed over.
void FireEvent(const ConnectionPoint& point, DISPID event, std::span<const Variant> arguments);

// For IConnectionPointContainer::EnumConnectionPoints.
HRESULT EnumeratePoints(std::vector<ComPtr<IConnectionPoint>> points, IEnumConnectionPoints** result);

} // namespace dax
