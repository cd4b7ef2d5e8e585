// The base of COM objects: reference counting, and QueryInterface by a table of interfaces and their IIDs.
#pragma once

#include <ole2.h>

#include <atomic>

namespace dax {

// The reference count of one object, 1 at first.
class ReferenceCount {
public:
    ULONG Add() { return ++count; }
    // 0 exactly once: the object is to be destroyed then. While its destructor runs it may be counted up and down
    // again, which must not destroy it twice.
    ULONG Remove() {
        const ULONG left = --count;
        if (left == 0) count = BeingDestroyed;
        return left;
    }
    ULONG Current() const { return count; }

private:
    static constexpr ULONG BeingDestroyed = 0x40000000;
    std::atomic<ULONG> count = 1;
};

// A row of the table: the base class `Type` implements the IIDs.
template <typename Type, const IID&... ids>
struct Implements {
    using Interface = Type;
    static bool Has(REFIID iid) { return ((iid == ids) || ...); }
};

// The base that implements an IID, not counted; null when none of the rows does.
template <typename... Rows, typename Object>
void* FindInterface(Object* object, REFIID iid) {
    void* found = nullptr;
    const auto visit = [&]<typename Row>(Row) {
        if (!found && Row::Has(iid)) found = static_cast<typename Row::Interface*>(object);
    };
    (visit(Rows()), ...);
    return found;
}

// An object with the interfaces of the rows, of which the first one also serves as IUnknown. Created with one
// reference; deletes itself with the last one.
template <typename First, typename... Rows>
class ComObject : public First::Interface, public Rows::Interface... {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = Find(iid);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return references.Add(); }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = references.Remove();
        if (left == 0) Destroy();
        return left;
    }

protected:
    ComObject() = default;
    virtual ~ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    // The interface inside this object, not counted; null when there is none.
    virtual void* Find(REFIID iid) {
        if (iid == IID_IUnknown) return static_cast<typename First::Interface*>(this);
        return FindInterface<First, Rows...>(this, iid);
    }
    // No reference is left.
    virtual void Destroy() { delete this; }
    ULONG References() const { return references.Current(); }

private:
    ReferenceCount references;
};

} // namespace dax
