// Receives the events of an object through its default source interface, whatever that interface is.
#pragma once

#include "com/Dispatch.h"
#include "com/DispatchObject.h"

#include <ocidl.h>

#include <functional>
#include <string>
#include <vector>

namespace dax {

struct ReceivedEvent {
    DISPID dispid;
    std::wstring name;                    // "event 7" where the interface has no name for it
    std::vector<std::wstring> parameters; // their declared names
    DISPPARAMS& call;                     // the arguments in reverse order; a by-reference one may be written to
    ITypeInfo& description;               // of the source interface
};

// What it throws becomes the result of the call: a ComError its code, anything else E_FAIL.
using EventHandler = std::function<void(const ReceivedEvent& event)>;

class EventSink final : public DispatchObject<> {
public:
    // `description` describes the source interface `iid`.
    EventSink(const IID& iid, ComPtr<ITypeInfo> description, EventHandler handler);

    using DispatchObject::References; // 1: only its creator has one
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override;

private:
    void* Find(REFIID requested) override;

    const IID iid;
    const ComPtr<ITypeInfo> description;
    const EventHandler handler;
};

// An EventSink that is connected to an object as long as this exists.
class EventConnection {
public:
    EventConnection() = default;
    // Not connected when the object declares no events. Throws ComError when it refuses the sink.
    EventConnection(IUnknown* object, EventHandler handler);
    EventConnection(EventConnection&&) = default;
    EventConnection& operator=(EventConnection&& other) noexcept;
    ~EventConnection() { Disconnect(); }

    explicit operator bool() const { return static_cast<bool>(point); }
    // A running handler is not interrupted; it is not called again.
    void Disconnect();
    // No other reference to the sink is left.
    bool IsReleased() const { return !sink || sink->References() == 1; }

private:
    ComPtr<EventSink> sink;
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
};

} // namespace dax
