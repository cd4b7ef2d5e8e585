// A host's object, called late bound by the names of its members.
#pragma once

#include "com/ComPtr.h"
#include "com/Dispatch.h"

#include <functional>
#include <initializer_list>
#include <optional>
#include <vector>

namespace dax {

// Every fault in such a call is an Error: a member that is missing, that fails, that returns a value of
// another type.
class HostObject {
public:
    // A host could enumerate for ever.
    static constexpr int32_t MaxElements = 1'000'000;

    explicit HostObject(IDispatch* object) : object(object) {}
    virtual ~HostObject() = default;

    IDispatch* Object() const { return object.Get(); }
    // The same for two references to one object.
    const void* ObjectIdentity() const;

    bool Has(const wchar_t* member) const { return Seek(member).has_value(); }
    // Arguments in their written order. Without any, a property or else a method; with some, either.
    Variant Call(const wchar_t* member, std::initializer_list<Variant> arguments = {}) const;
    // A property that is no method, not even for engines that do not distinguish them: an element of a script's array.
    Variant Get(const wchar_t* property) const;
    // As Call, but nothing when the object reports that it has no such element.
    Variant TryGetItem(const wchar_t* member, const Variant& index) const;
    void Put(const wchar_t* member, const Variant& value) const;
    void PutObject(const wchar_t* member, IDispatch* value) const;
    // What For Each would give; false when the object cannot enumerate.
    bool ForEach(const std::function<void(const Variant&)>& action) const;
    // The same as objects. Without an enumerator Count and Item are used, from 0.
    std::vector<ComPtr<IDispatch>> Elements() const;

private:
    std::optional<DISPID> Seek(const wchar_t* member) const;
    DISPID Find(const wchar_t* member) const;
    DispatchResult Invoke(DISPID dispid, WORD kind, std::initializer_list<Variant> arguments = {}) const;

    ComPtr<IDispatch> object;
};

// Of an argument: nothing was given; and the value itself, where a reference may have been given. Throws Error.
bool IsLeftOut(const VARIANT& argument);
Variant PlainOf(const VARIANT& argument);

// What a call has returned. Empty is the empty text and no object.
Text TextFrom(const Variant& value);
int32_t NumberFrom(const Variant& value);
ComPtr<IDispatch> ObjectFrom(const Variant& value);

} // namespace dax
