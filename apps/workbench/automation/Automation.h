// Late-bound calls to an automation object, as a script or a form designer makes them.
#pragma once

#include "automation/Com.h"

#include <exception>
#include <string>
#include <vector>

namespace dax::workbench {

// What the host has to tell its user: a control that cannot be created, or a call that failed.
class HostError : public std::exception {
public:
    HostError(HRESULT failure, std::wstring description) : code(failure), text(std::move(description)) {}
    HRESULT Code() const { return code; }
    const std::wstring& Text() const { return text; }
    const char* what() const noexcept override { return "host error"; }

private:
    HRESULT code;
    std::wstring text;
};

// The system's words for a result, with its number.
std::wstring DescribeResult(HRESULT result);

class Variant {
public:
    Variant() { VariantInit(&value); }
    Variant(const std::wstring& text);
    Variant(const wchar_t* text) : Variant(std::wstring(text)) {}
    Variant(bool flag);
    Variant(long number);
    Variant(const Com<IDispatch>& object);
    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(&value); }

    // The nearest value of that type; the empty text, 0 and false when there is none.
    std::wstring Text() const;
    long Long() const;
    bool Bool() const;
    // Empty when the value is no object or nothing.
    Com<IDispatch> Object() const;

    VARIANT* Raw() { return &value; }
    const VARIANT* Raw() const { return &value; }

private:
    VARIANT value;
};

// Follows a reference; any value as text, an object as its kind in brackets.
std::wstring TextOf(const VARIANT& value);

// The name of that member of an enumeration; empty when there is none.
std::wstring EnumMember(ITypeInfo* enumeration, long number);

class Automation {
public:
    Automation() = default;
    explicit Automation(Com<IDispatch> dispatch) : object(std::move(dispatch)) {}
    explicit operator bool() const { return static_cast<bool>(object); }

    // An object is set as a reference. All throw HostError with the description that the object gave, the member named.
    Variant Get(const wchar_t* name) const;
    void Set(const wchar_t* name, const Variant& value) const;
    // A method, or a property that takes arguments.
    Variant Call(const wchar_t* name, const std::vector<Variant>& arguments = {}) const;

    // The member of an enumeration of the object's type library; the bare number when there is none.
    std::wstring EnumName(const wchar_t* enumeration, long number) const;

    const Com<IDispatch>& Object() const { return object; }

private:
    Variant Invoke(const wchar_t* name, WORD kind, const std::vector<Variant>& arguments) const;

    Com<IDispatch> object;
};

} // namespace dax::workbench
