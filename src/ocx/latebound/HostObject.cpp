#include "ocx/latebound/HostObject.h"

#include "base/Error.h"
#include "com/ComError.h"
#include "com/Enumerator.h"

#include <dispex.h>

#include <array>

namespace dax {

namespace {

// IDispatchEx; not every system library has it.
constexpr IID scriptedID{0xa6ef9860, 0xc720, 0x11d0, {0x93, 0x37, 0x00, 0xa0, 0xc9, 0x0d, 0xca, 0xa9}};
// A host could enumerate for ever.
constexpr size_t maxElements = 1'000'000;
// How collections report that they have no such element: invalid call, subscript out of range, invalid argument, bad
// index, element not found, no such element in a tree, no such item of a database, and errors of managed collections.
constexpr std::array<uint32_t, 10> notFoundCodes{0x800A0005, 0x800A0009, 0x80070057, 0x8002000B, 0x80070490,
                                                 0x800A8B11, 0x800A0CC1, 0x80131577, 0x80131508, 0x80131502};

[[noreturn]] void ThrowWrongType() {
    throw Error(ErrorNumbers::TypeMismatch, u"A host object returned a value of the wrong type.");
}

Text Hexadecimal(HRESULT code) {
    constexpr char16_t digits[] = u"0123456789ABCDEF";
    Text text;
    for (int shift = 28; shift >= 0; shift -= 4) text += digits[(static_cast<uint32_t>(code) >> shift) & 15];
    return text;
}

// `description` may be empty.
[[noreturn]] void Fail(const wchar_t* member, HRESULT code, const Text& description = {}) {
    if (!description.empty()) throw Error(code, description);
    throw Error(code, u"'" + FromWide(member) + u"' of a host object failed (" + Hexadecimal(code) + u").");
}

Variant Checked(const wchar_t* member, DispatchResult result) {
    if (FAILED(result.code)) Fail(member, result.code, result.description);
    return std::move(result.value);
}

VARIANT CopyObject(const ComPtr<IDispatch>& held) {
    VARIANT element;
    VariantInit(&element);
    element.vt = VT_DISPATCH;
    element.pdispVal = ComPtr(held).Detach();
    return element;
}

using ObjectEnumerator = Enumerator<IEnumVARIANT, IID_IEnumVARIANT, VARIANT, ComPtr<IDispatch>, CopyObject>;

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
    for (const uint32_t each : notFoundCodes) {
        if (static_cast<uint32_t>(result.code) == each) return {};
    }
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

bool HostObject::Enumerate(std::vector<ComPtr<IDispatch>>& elements) const {
    DispatchResult call = Invoke(DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    if (call.code == DISP_E_MEMBERNOTFOUND) return false;
    const Variant returned = Checked(L"_NewEnum", std::move(call));
    ComPtr<IEnumVARIANT> enumerator;
    if (returned.vt == VT_UNKNOWN || returned.vt == VT_DISPATCH)
        enumerator = Query<IEnumVARIANT>(returned.punkVal, IID_IEnumVARIANT);
    if (!enumerator) return false;
    for (;;) {
        Variant element;
        ULONG fetched = 0;
        const HRESULT result = enumerator->Next(1, &element, &fetched);
        if (FAILED(result)) Fail(L"_NewEnum", result);
        if (result != S_OK || fetched == 0) return true;
        if (elements.size() == maxElements)
            throw Error(ErrorNumbers::Automation, u"The collection has more than 1,000,000 elements.");
        elements.push_back(ObjectFrom(element));
    }
}

std::vector<ComPtr<IDispatch>> HostObject::Elements() const {
    std::vector<ComPtr<IDispatch>> elements;
    if (Enumerate(elements)) return elements;
    const int32_t count = NumberFrom(Call(L"Count"));
    if (count > 0 && static_cast<size_t>(count) > maxElements)
        throw Error(ErrorNumbers::Automation, u"The collection has more than 1,000,000 elements.");
    for (int32_t i = 0; i < count; ++i) elements.push_back(ObjectFrom(Call(L"Item", {Variant(i)})));
    return elements;
}

bool IsLeftOut(const VARIANT& argument) {
    return argument.vt == VT_EMPTY || argument.vt == VT_NULL ||
           (argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND);
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

IUnknown* EnumerateObjects(std::vector<ComPtr<IDispatch>> objects) {
    IEnumVARIANT* result = nullptr;
    Check(ObjectEnumerator::Create(std::move(objects), &result));
    return result;
}

} // namespace dax
