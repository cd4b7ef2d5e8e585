// A counted reference to a COM interface.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>

#include <utility>

namespace dax::workbench {

template <class T>
class Com {
public:
    Com() = default;
    Com(const Com& other) : pointer(other.pointer) {
        if (pointer) pointer->AddRef();
    }
    Com(Com&& other) noexcept : pointer(std::exchange(other.pointer, nullptr)) {}
    Com& operator=(Com other) noexcept {
        std::swap(pointer, other.pointer);
        return *this;
    }
    ~Com() {
        if (pointer) pointer->Release();
    }

    // Counts one more reference; the constructor of an out parameter below takes one over instead.
    static Com Share(T* shared) {
        Com result;
        result.pointer = shared;
        if (shared) shared->AddRef();
        return result;
    }

    T* Get() const { return pointer; }
    // Hands the reference over.
    T* Detach() { return std::exchange(pointer, nullptr); }
    T* operator->() const { return pointer; }
    explicit operator bool() const { return pointer != nullptr; }

    // Both release what was held: for a call that hands a reference over.
    T** Out() {
        *this = Com();
        return &pointer;
    }
    void** OutAny() { return reinterpret_cast<void**>(Out()); }

    // Empty when the object has no such interface.
    template <class U>
    Com<U> As(REFIID iid) const {
        Com<U> other;
        if (pointer && FAILED(pointer->QueryInterface(iid, other.OutAny()))) return {};
        return other;
    }

private:
    T* pointer = nullptr;
};

} // namespace dax::workbench
