// A counted reference to a COM object.
#pragma once

#include <ole2.h>

#include <utility>

namespace dax {

template <typename Interface>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(Interface* object) : object(object) {
        if (object) object->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.object) {}
    ComPtr(ComPtr&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~ComPtr() { Reset(); }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    // The pointer is emptied before the object is released: the release may come back here.
    void Reset() {
        if (Interface* old = std::exchange(object, nullptr)) old->Release();
    }
    Interface* Get() const { return object; }
    Interface* operator->() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Where a function puts a reference that we then own.
    Interface** Out() {
        Reset();
        return &object;
    }
    void** OutVoid() { return reinterpret_cast<void**>(Out()); }

private:
    Interface* object = nullptr;
};

// Null when the object does not have the interface, or is null itself.
template <typename Interface>
ComPtr<Interface> Query(IUnknown* object, REFIID iid) {
    ComPtr<Interface> result;
    if (object && FAILED(object->QueryInterface(iid, result.OutVoid()))) return {};
    return result;
}

} // namespace dax
