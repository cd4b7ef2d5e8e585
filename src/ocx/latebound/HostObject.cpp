#include "ocx/latebound/HostObject.h"

#include "base/Error.h"
#include "com/ComError.h"

#include <dispex.h>

#include <algorithm>
#include <iterator>

namespace dax {

namespace {

// IDispatchEx; not every system library has it.
constexpr IID scriptedID{0xa6ef9860, 0xc720, 0x11d0, {0x93, 0x37, 0x00, 0xa0, 0xc9, 0x0d, 0xca, 0xa9}};
constexpr int32_t itemNotFound = 3265; // of a collection of a database
// Of managed collections: no such key, index out of range, argument out of range.
constexpr uint32_t managedCodes[] = {0x80131577, 0x80131508, 0x80131502};

// How collections report that they have no such element.
bool IsNotFound(HRESULT code) {
    for (const int32_t number :
         {ErrorNumbers::InvalidCall, ErrorNumbers::OutOfRange, ErrorNumbers::ElementNotFound, itemNotFound})
        if (code == HResultOf(number)) return true;
    return code == E_INVALIDARG || code == DISP_E_BADINDEX || code == HRESULT_FROM_WIN32(ERROR_NOT_FOUND) ||
           std::ranges::find(managedCodes, static_cast<uint32_t>(code)) != std::end(managedCodes);
}

[[noreturn]] void ThrowWrongType() {
    throw Error(ErrorNumbers::TypeMismatch, u"A host object returned a value of the wrong type.");
}

// `description` may be empty.
[[noreturn]] void Fail(const wchar_t* member, HRESULT code, const Text& description = {}) {
    if (!description.empty()) throw Error(code, description);
    throw Error(code, u"'" + FromWide(member) + u"' of a host object failed (" +
                          Hexadecimal(static_cast<uint32_t>(code)) + u").");
}

Variant Checked(const wchar_t* member, DispatchResult result) {
    if (FAILED(result.code)) Fail(member, result.code, result.description);
    return std::move(result.value);
}

void RequireCountable(int32_t count) {
    if (count > HostObject::MaxElements)
        throw Error(ErrorNumbers::Automation, u"The collection has more than 1,000,000 elements.");
}

} // namespace

const void* HostObject::ObjectIdentity() const { return Query<IUnknown>(object.Get(), IID_IUnknown).Get(); }

std::optional<DISPID> HostObject::Seek(const wchar_t* member) const {
    const ComPtr<IDispatch> kept = object;
    DISPID dispid = 0;
    if (SUCCEEDED(FindMember(kept.Get(), member, dispid))) return dispid;
    // Objects of some script engines give their names in this way only.
    const auto scripted = Query<IDispatchEx>(kept.Get(), scriptedID);
    if (!scripted) return {};
    const Bstr name(FromWide(member));
    const HRESULT code = scripted->GetDispID(name.Get(), fdexNameCaseInsensitive, &dispid);
    return code == S_OK ? std::optional(dispid) : std::nullopt;
}

DISPID HostObject::Find(const wchar_t* member) const {
    const auto dispid = Seek(member);
    if (!dispid) throw Error(ErrorNumbers::NoSuchMember, u"A host object has no member '" + FromWide(member) + u"'.");
    return *dispid;
}

DispatchResult HostObject::Invoke(DISPID dispid, WORD kind, std::initializer_list<Variant> arguments) const {
    return InvokeMember(object.Get(), dispid, kind, {arguments.begin(), arguments.size()});
}

Variant HostObject::Call(const wchar_t* member, std::initializer_list<Variant> arguments) const {
    constexpr WORD either = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    const DISPID dispid = Find(member);
    // Whatever takes no argument is a property; some script engines would call its value if both flags were given.
    DispatchResult result = Invoke(dispid, arguments.size() == 0 ? DISPATCH_PROPERTYGET : either, arguments);
    if (result.code == DISP_E_MEMBERNOTFOUND && arguments.size() == 0) result = Invoke(dispid, DISPATCH_METHOD);
    return Checked(member, std::move(result));
}

Variant HostObject::Get(const wchar_t* property) const {
    return Checked(property, Invoke(Find(property), DISPATCH_PROPERTYGET));
}

Variant HostObject::TryGetItem(const wchar_t* member, const Variant& index) const {
    DispatchResult result = Invoke(Find(member), DISPATCH_METHOD | DISPATCH_PROPERTYGET, {index});
    if (IsNotFound(result.code)) return {};
    return Checked(member, std::move(result));
}

void HostObject::Put(const wchar_t* member, const Variant& value) const {
    Checked(member, Invoke(Find(member), DISPATCH_PROPERTYPUT, {value}));
}

void HostObject::PutObject(const wchar_t* member, IDispatch* value) const {
    const DISPID dispid = Find(member);
    DispatchResult result = Invoke(dispid, DISPATCH_PROPERTYPUTREF, {value});
    // Not every object distinguishes setting a reference from setting a value.
    if (result.code == DISP_E_MEMBERNOTFOUND) result = Invoke(dispid, DISPATCH_PROPERTYPUT, {value});
    Checked(member, std::move(result));
}

bool HostObject::ForEach(const std::function<void(const Variant&)>& action) const {
    DispatchResult call = Invoke(DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    if (call.code == DISP_E_MEMBERNOTFOUND) return false;
    const Variant returned = Checked(L"_NewEnum", std::move(call));
    ComPtr<IEnumVARIANT> enumerator;
    if (returned.vt == VT_UNKNOWN || returned.vt == VT_DISPATCH)
        enumerator = Query<IEnumVARIANT>(returned.punkVal, IID_IEnumVARIANT);
    if (!enumerator) return false;
    for (int32_t count = 1;; ++count) {
        Variant element;
        ULONG fetched = 1; // not every host sets it
        const HRESULT result = enumerator->Next(1, &element, &fetched);
        if (FAILED(result)) Fail(L"_NewEnum", result);
        if (result != S_OK || fetched == 0) return true;
        RequireCountable(count);
        action(element);
    }
}

std::vector<ComPtr<IDispatch>> HostObject::Elements() const {
    std::vector<ComPtr<IDispatch>> elements;
    if (ForEach([&elements](const Variant& element) { elements.push_back(ObjectFrom(element)); })) return elements;
    const int32_t count = NumberFrom(Call(L"Count"));
    RequireCountable(count);
    for (int32_t i = 0; i < count; ++i) elements.push_back(ObjectFrom(Call(L"Item", {Variant(i)})));
    return elements;
}

bool IsLeftOut(const VARIANT& argument) {
    return argument.vt == VT_EMPTY || argument.vt == VT_NULL || IsMissing(argument);
}

Variant PlainOf(const VARIANT& argument) {
    Variant plain;
    if (FAILED(VariantCopyInd(&plain, const_cast<VARIANT*>(&argument)))) ThrowWrongType();
    return plain;
}

Text TextFrom(const Variant& value) {
    if (IsLeftOut(value)) return {};
    Variant text;
    if (FAILED(VariantChangeType(&text, const_cast<Variant*>(&value), 0, VT_BSTR))) ThrowWrongType();
    return FromBstr(text.bstrVal);
}

int32_t NumberFrom(const Variant& value) {
    Variant number;
    if (FAILED(VariantChangeType(&number, const_cast<Variant*>(&value), 0, VT_I4))) ThrowWrongType();
    return number.lVal;
}

ComPtr<IDispatch> ObjectFrom(const Variant& value) {
    const Variant plain = PlainOf(value);
    if (plain.vt == VT_EMPTY || plain.vt == VT_NULL) return {};
    if (plain.vt != VT_DISPATCH && plain.vt != VT_UNKNOWN) ThrowWrongType();
    if (!plain.punkVal) return {};
    auto object = Query<IDispatch>(plain.punkVal, IID_IDispatch);
    if (!object) ThrowWrongType();
    return object;
}

} // namespace dax
