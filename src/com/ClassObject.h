// Bases of the library's COM objects: reference count, interfaces, class and error information, IDispatch through the
// type library.
#pragma once

#include "com/ComError.h"
#include "com/ComObject.h"
#include "com/Library.h"
#include "com/Variant.h"

#include <ocidl.h>

#include <concepts>
#include <type_traits>

namespace dax {

template <typename Interface>
Interface* ToInterface(ComPtr<Interface> object) {
    return object.Detach();
}

// An object of one of the library's classes. Runs on one thread, as its apartment promises.
class ClassObject : public IProvideClassInfo2, public ISupportErrorInfo {
public:
    // IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;
    // ISupportErrorInfo
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override;

protected:
    explicit ClassObject(const ClassEntry& entry);
    virtual ~ClassObject();
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;

    const ClassEntry& Entry() const { return entry; }

    // The interface inside this object, not counted; null when there is none.
    virtual void* Find(REFIID iid);
    // No reference is left.
    virtual void Destroy() { delete this; }
    // Before a member is used for the first time.
    virtual void EnsureReady() {}

    HRESULT FindInterface(REFIID iid, void** object);
    ULONG AddReference() { return references.Add(); }
    ULONG RemoveReference();

    // No exception leaves, and the object exists until the action is done, even when a listener releases the last
    // reference.
    template <typename Action>
    HRESULT Guard(Action&& action) noexcept {
        const SelfReference self(*this);
        try {
            action();
            return S_OK;
        } catch (...) {
            return Report();
        }
    }

    // What every documented member runs inside.
    template <std::invocable Action>
    HRESULT Call(Action&& action) noexcept {
        return Guard([&] {
            EnsureReady();
            action();
        });
    }

    // The same for a member with a result. A result that is not an interface pointer is converted by an overload of
    // ToInterface.
    template <typename Result, std::invocable Action>
    HRESULT Get(Result* result, Action&& action) noexcept {
        if (!result) return E_POINTER;
        *result = {};
        return Call([&] {
            if constexpr (std::is_same_v<Result, BSTR>)
                *result = ToBstr(action());
            else if constexpr (std::is_same_v<Result, VARIANT>)
                Variant(action()).MoveTo(result);
            else if constexpr (std::is_same_v<Result, VARIANT_BOOL>)
                *result = action() ? VARIANT_TRUE : VARIANT_FALSE;
            else if constexpr (std::is_pointer_v<Result> && !std::is_pointer_v<decltype(action())>)
                *result = ToInterface(action());
            else
                *result = static_cast<Result>(action());
        });
    }

    class SelfReference {
    public:
        explicit SelfReference(ClassObject& object) : object(object) { object.AddReference(); }
        ~SelfReference() { object.RemoveReference(); }
        SelfReference(const SelfReference&) = delete;
        SelfReference& operator=(const SelfReference&) = delete;

    private:
        ClassObject& object;
    };

private:
    HRESULT Report() noexcept;

    const ModuleLock lock;
    const ClassEntry& entry;
    ReferenceCount references;
};

// An object with the dual interface `Interface`; `Base` is ClassObject or a class derived from it.
template <typename Interface, typename Base = ClassObject>
class DualObject : public Interface, public Base {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return this->FindInterface(iid, object); }
    STDMETHODIMP_(ULONG) AddRef() override { return this->AddReference(); }
    STDMETHODIMP_(ULONG) Release() override { return this->RemoveReference(); }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        *info = ComPtr(typeInfo).Detach();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* dispids) override {
        if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        return typeInfo->GetIDsOfNames(names, count, dispids);
    }
    STDMETHODIMP Invoke(DISPID dispid, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* argument) override {
        if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        const typename Base::SelfReference self(*this);
        SetErrorInfo(0, nullptr);
        // Some script engines call the enumeration as a method.
        if (dispid == DISPID_NEWENUM) flags |= DISPATCH_PROPERTYGET;
        return typeInfo->Invoke(static_cast<Interface*>(this), dispid, flags, parameters, result, exception, argument);
    }

protected:
    template <typename... Arguments>
    explicit DualObject(const ClassEntry& entry, Arguments&&... arguments)
        : Base(entry, std::forward<Arguments>(arguments)...), typeInfo(Module::TypeInfo(*entry.defaultInterface)) {}

    void* Find(REFIID iid) override {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == *this->Entry().defaultInterface)
            return static_cast<Interface*>(this);
        return Base::Find(iid);
    }

private:
    ComPtr<ITypeInfo> typeInfo;
};

} // namespace dax
