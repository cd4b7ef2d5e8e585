// Converts texts and values to and from automation types: the only place that does.
#pragma once

#include "base/Value.h"
#include "com/ComPtr.h"

#include <concepts>
#include <string>

namespace dax {

// Null is the empty text.
Text FromBstr(BSTR text);
Text FromWide(std::wstring_view text);
std::wstring ToWide(TextView text);
// The caller owns the result; never null.
BSTR ToBstr(TextView text);

// A BSTR that frees itself.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(TextView text) : text(ToBstr(text)) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(text); }

    // Where a function stores a text that this object then owns.
    BSTR* Out() {
        SysFreeString(std::exchange(text, nullptr));
        return &text;
    }
    BSTR Get() const { return text; }
    std::wstring_view Wide() const { return {text ? text : L"", SysStringLen(text)}; }

private:
    BSTR text = nullptr;
};

// An automation value that frees what it contains.
class Variant : public VARIANT {
public:
    Variant() { VariantInit(this); }
    // Only a real truth value: pointers would become one too.
    Variant(std::same_as<bool> auto isTrue) : Variant() {
        boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
        vt = VT_BOOL;
    }
    Variant(int number) : Variant(static_cast<long>(number)) {}
    Variant(long number) : Variant() {
        lVal = number;
        vt = VT_I4;
    }
    Variant(TextView text);
    Variant(std::convertible_to<TextView> auto const& text) : Variant(TextView(text)) {}
    Variant(std::wstring_view text);
    Variant(std::convertible_to<std::wstring_view> auto const& text) : Variant(std::wstring_view(text)) {}
    // Counts a reference; null is Nothing.
    Variant(IDispatch* object);
    template <std::convertible_to<IDispatch*> Pointer>
    Variant(Pointer object) : Variant(static_cast<IDispatch*>(object)) {}
    template <typename Interface>
    requires std::convertible_to<Interface*, IDispatch*> Variant(const ComPtr<Interface>& object)
        : Variant(static_cast<IDispatch*>(object.Get())) {}
    static Variant Nothing() { return Variant(static_cast<IDispatch*>(nullptr)); }
    // The receiver may change `number`.
    static Variant ByReference(long& number);
    static Variant FromValue(const Value& value);

    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(this); }

    // The nearest value of that type; the empty text, 0 and false when there is none.
    std::wstring Text() const;
    long Long() const;
    bool Bool() const;
    // Null when the value is not an object with IDispatch.
    ComPtr<IDispatch> Object() const;

    // Passes the value to the caller of a member, whose pointer may be null.
    void MoveTo(VARIANT* result);
};

// The value as the type that `like` has; NULL for what cannot be converted. With `like` NULL the type stays.
Value ToValue(const VARIANT& variant, const Value& like = {});
// The value without references. Throws ComError for what cannot be copied.
Variant Dereferenced(const VARIANT& variant);
// The value of an optional argument that was not given.
bool IsMissing(const VARIANT& argument);
// Any value for people: an object as its kind in brackets.
std::wstring DescribeValue(const VARIANT& value);

} // namespace dax
