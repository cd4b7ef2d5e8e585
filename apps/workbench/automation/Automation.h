// Late-bound calls to an automation object, as a script or a form designer makes them.
#pragma once

#include "com/ComError.h"
#include "com/Variant.h"

#include <ocidl.h>

#include <span>
#include <string>
#include <vector>

namespace dax::workbench {

// What the host has to show its user: a control that cannot be created, or a call that failed.
class HostError : public ComError {
public:
    HostError(HRESULT code, std::wstring description) : ComError(code), text(std::move(description)) {}
    const std::wstring& Text() const { return text; }

private:
    std::wstring text;
};

// The system's message for a result, with its number.
std::wstring DescribeResult(HRESULT result);

// The name of that member of an enumeration; empty when there is none.
std::wstring EnumMember(ITypeInfo* enumeration, long number);

class Automation {
public:
    Automation() = default;
    explicit Automation(ComPtr<IDispatch> dispatch) : object(std::move(dispatch)) {}
    explicit operator bool() const { return static_cast<bool>(object); }

    // An object is set as a reference. All throw HostError with the description that the object gave, the member named.
    Variant Get(const wchar_t* name) const;
    void Set(const wchar_t* name, const Variant& value) const;
    // A method, or a property that takes arguments.
    Variant Call(const wchar_t* name, const std::vector<Variant>& arguments = {}) const;

    // The member of an enumeration of the object's type library; the bare number when there is none.
    std::wstring EnumName(const wchar_t* enumeration, long number) const;

    const ComPtr<IDispatch>& Object() const { return object; }

private:
    Variant Invoke(const wchar_t* name, WORD kind, std::span<const Variant> arguments = {}) const;

    ComPtr<IDispatch> object;
};

} // namespace dax::workbench
