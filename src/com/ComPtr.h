// A counted reference to a COM object.
#pragma once

#include <ole2.h>

#include <concepts>
#include <utility>

namespace dax {

template <typename Interface>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(Interface* object) : object(object) {
        if (object) object->AddRef();
    }
    template <typename Other>
    requires std::convertible_to<Other*, Interface*> ComPtr(const ComPtr<Other>& other) : ComPtr(other.Get()) {}
    ComPtr(const ComPtr& other) : ComPtr(other.object) {}
    ComPtr(ComPtr&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~ComPtr() { Reset(); }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    // Takes over a reference that is counted already.
    static ComPtr Adopt(Interface* counted) {
        ComPtr result;
        result.object = counted;
        return result;
    }

    // The pointer is emptied before the object is released: the release may come back here.
    void Reset() {
        if (Interface* old = std::exchange(object, nullptr)) old->Release();
    }
    Interface* Get() const { return object; }
    Interface* operator->() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Where a function stores a reference that this pointer then owns.
    Interface** Out() {
        Reset();
        return &object;
    }
    void** OutVoid() { return reinterpret_cast<void**>(Out()); }
    // Passes the reference to the caller, who releases it.
    [[nodiscard]] Interface* Detach() { return std::exchange(object, nullptr); }

    // Null when the object does not have the interface, or is null itself.
    template <typename Other>
    ComPtr<Other> As(REFIID iid) const {
        ComPtr<Other> result;
        if (object && FAILED(object->QueryInterface(iid, result.OutVoid()))) return {};
        return result;
    }

private:
    Interface* object = nullptr;
};

// A new object, whose first reference the result owns.
template <typename Object, typename... Arguments>
ComPtr<Object> MakeCom(Arguments&&... arguments) {
    return ComPtr<Object>::Adopt(new Object(std::forward<Arguments>(arguments)...));
}

// As ComPtr::As, of a pointer that is not counted here.
template <typename Interface>
ComPtr<Interface> Query(IUnknown* object, REFIID iid) {
    ComPtr<Interface> result;
    if (object && FAILED(object->QueryInterface(iid, result.OutVoid()))) return {};
    return result;
}

} // namespace dax
