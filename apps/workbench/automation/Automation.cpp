#include "automation/Automation.h"

#include <algorithm>
#include <cwchar>

namespace dax::workbench {

namespace {

std::wstring TakeText(BSTR text) {
    std::wstring result = text ? std::wstring(text, SysStringLen(text)) : std::wstring();
    SysFreeString(text);
    return result;
}

// Some headers declare the source of a copy without const; it is only read.
VARIANT* Mutable(const VARIANT& value) { return const_cast<VARIANT*>(&value); }

// What went wrong, in the object's own words where it gave any.
[[noreturn]] void ThrowFailure(const wchar_t* name, HRESULT result, EXCEPINFO& info) {
    if (result == DISP_E_EXCEPTION && info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    const std::wstring description = TakeText(info.bstrDescription);
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrHelpFile);
    const HRESULT code = result == DISP_E_EXCEPTION && info.scode ? info.scode : result;
    throw HostError(code, std::wstring(name) + L": " + (description.empty() ? DescribeResult(code) : description));
}

} // namespace

std::wstring DescribeResult(HRESULT result) {
    wchar_t number[16];
    std::swprintf(number, std::size(number), L"%08lX", static_cast<unsigned long>(result));
    wchar_t* words = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                           FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, static_cast<DWORD>(result), 0, reinterpret_cast<LPWSTR>(&words), 0, nullptr);
    const std::wstring text = length ? std::wstring(words, length) : L"error ";
    LocalFree(words);
    return length ? text + L"(&H" + number + L")" : text + L"&H" + number;
}

Variant::Variant(const std::wstring& text) : Variant() {
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

Variant::Variant(bool flag) : Variant() {
    value.vt = VT_BOOL;
    value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(long number) : Variant() {
    value.vt = VT_I4;
    value.lVal = number;
}

Variant::Variant(const Com<IDispatch>& object) : Variant() {
    value.vt = VT_DISPATCH;
    value.pdispVal = Com<IDispatch>(object).Detach();
}

Variant::Variant(const Variant& other) : Variant() { VariantCopy(&value, Mutable(other.value)); }

Variant::Variant(Variant&& other) noexcept : value(other.value) { VariantInit(&other.value); }

Variant& Variant::operator=(Variant other) noexcept {
    std::swap(value, other.value);
    return *this;
}

std::wstring Variant::Text() const { return TextOf(value); }

long Variant::Long() const {
    Variant number;
    if (FAILED(VariantChangeType(&number.value, Mutable(value), 0, VT_I4))) return 0;
    return number.value.lVal;
}

bool Variant::Bool() const {
    Variant flag;
    if (FAILED(VariantChangeType(&flag.value, Mutable(value), 0, VT_BOOL))) return false;
    return flag.value.boolVal != VARIANT_FALSE;
}

Com<IDispatch> Variant::Object() const {
    Variant plain;
    if (FAILED(VariantCopyInd(plain.Raw(), Mutable(value)))) return {};
    if (plain.value.vt == VT_DISPATCH) return Com<IDispatch>::Share(plain.value.pdispVal);
    if (plain.value.vt != VT_UNKNOWN) return {};
    return Com<IUnknown>::Share(plain.value.punkVal).As<IDispatch>(IID_IDispatch);
}

std::wstring TextOf(const VARIANT& value) {
    Variant plain;
    if (FAILED(VariantCopyInd(plain.Raw(), Mutable(value)))) return L"?";
    const VARTYPE type = plain.Raw()->vt;
    if (type == VT_EMPTY || type == VT_NULL) return {};
    if (type == VT_DISPATCH || type == VT_UNKNOWN) return plain.Raw()->punkVal ? L"[object]" : L"[nothing]";
    if (FAILED(VariantChangeType(plain.Raw(), plain.Raw(), VARIANT_ALPHABOOL, VT_BSTR))) return L"?";
    const BSTR text = plain.Raw()->bstrVal;
    return text ? std::wstring(text, SysStringLen(text)) : std::wstring();
}

std::wstring EnumMember(ITypeInfo* enumeration, long number) {
    for (UINT i = 0;; ++i) {
        VARDESC* description = nullptr;
        if (FAILED(enumeration->GetVarDesc(i, &description))) return {};
        const bool hit = description->varkind == VAR_CONST && description->lpvarValue &&
                         description->lpvarValue->vt == VT_I4 && description->lpvarValue->lVal == number;
        const MEMBERID member = description->memid;
        enumeration->ReleaseVarDesc(description);
        BSTR text = nullptr;
        if (hit && SUCCEEDED(enumeration->GetDocumentation(member, &text, nullptr, nullptr, nullptr)))
            return TakeText(text);
    }
}

Variant Automation::Get(const wchar_t* name) const { return Invoke(name, DISPATCH_PROPERTYGET, {}); }

void Automation::Set(const wchar_t* name, const Variant& value) const {
    Invoke(name, value.Raw()->vt == VT_DISPATCH ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT, {value});
}

Variant Automation::Call(const wchar_t* name, const std::vector<Variant>& arguments) const {
    return Invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}

Variant Automation::Invoke(const wchar_t* name, WORD kind, const std::vector<Variant>& arguments) const {
    EXCEPINFO info{};
    if (!object) ThrowFailure(name, E_POINTER, info);
    LPOLESTR names[] = {const_cast<wchar_t*>(name)};
    DISPID member = 0;
    HRESULT result = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(result)) ThrowFailure(name, result, info);

    // Arguments go in backwards; the values stay ours, so the array may be a flat copy of them.
    std::vector<VARIANT> backwards;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        backwards.push_back(*argument->Raw());
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = kind == DISPATCH_PROPERTYPUT || kind == DISPATCH_PROPERTYPUTREF;
    DISPPARAMS parameters{backwards.data(), nullptr, static_cast<UINT>(backwards.size()), 0};
    if (puts) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }
    Variant answer;
    result = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, puts ? nullptr : answer.Raw(),
                            &info, nullptr);
    if (FAILED(result)) ThrowFailure(name, result, info);
    return answer;
}

std::wstring Automation::EnumName(const wchar_t* enumeration, long number) const {
    const std::wstring bare = std::to_wstring(number);
    Com<ITypeInfo> own, found;
    Com<ITypeLib> library;
    UINT index = 0;
    if (!object || FAILED(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, own.Out())) ||
        FAILED(own->GetContainingTypeLib(library.Out(), &index)))
        return bare;
    std::wstring name = enumeration;
    MEMBERID member = 0;
    USHORT count = 1;
    if (FAILED(library->FindName(name.data(), 0, found.Out(), &member, &count)) || count == 0) return bare;
    const std::wstring text = EnumMember(found.Get(), number);
    return text.empty() ? bare : text + L" (" + bare + L")";
}

} // namespace dax::workbench
