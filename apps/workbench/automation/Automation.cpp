#include "automation/Automation.h"

#include "com/Dispatch.h"

#include <cwchar>

namespace dax::workbench {

std::wstring DescribeResult(HRESULT result) {
    wchar_t number[16];
    std::swprintf(number, std::size(number), L"%08lX", static_cast<unsigned long>(result));
    const std::wstring text = SystemMessage(result);
    return text.empty() ? std::wstring(L"error &H") + number : text + L" (&H" + number + L")";
}

namespace {

[[noreturn]] void ThrowFailure(const wchar_t* name, HRESULT code, const dax::Text& description = {}) {
    const std::wstring text = description.empty() ? DescribeResult(code) : ToWide(description);
    throw HostError(code, std::wstring(name) + L": " + text);
}

} // namespace

std::wstring EnumMember(ITypeInfo* enumeration, long number) {
    for (UINT i = 0;; ++i) {
        VARDESC* description = nullptr;
        if (FAILED(enumeration->GetVarDesc(i, &description))) return {};
        const bool hit = description->varkind == VAR_CONST && description->lpvarValue &&
                         description->lpvarValue->vt == VT_I4 && description->lpvarValue->lVal == number;
        const MEMBERID member = description->memid;
        enumeration->ReleaseVarDesc(description);
        Bstr text;
        if (hit && SUCCEEDED(enumeration->GetDocumentation(member, text.Out(), nullptr, nullptr, nullptr)))
            return std::wstring(text.Wide());
    }
}

Variant Automation::Get(const wchar_t* name) const { return Invoke(name, DISPATCH_PROPERTYGET); }

void Automation::Set(const wchar_t* name, const Variant& value) const {
    Invoke(name, value.vt == VT_DISPATCH ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT, {&value, 1});
}

Variant Automation::Call(const wchar_t* name, const std::vector<Variant>& arguments) const {
    return Invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
}

Variant Automation::Invoke(const wchar_t* name, WORD kind, std::span<const Variant> arguments) const {
    DISPID member = 0;
    const HRESULT known = FindMember(object.Get(), name, member);
    if (FAILED(known)) ThrowFailure(name, known);
    DispatchResult result = InvokeMember(object.Get(), member, kind, arguments);
    if (FAILED(result.code)) ThrowFailure(name, result.code, result.description);
    return std::move(result.value);
}

std::wstring Automation::EnumName(const wchar_t* enumeration, long number) const {
    const std::wstring bare = std::to_wstring(number);
    ComPtr<ITypeInfo> own, found;
    ComPtr<ITypeLib> library;
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
