// Texts and values on their way to automation and back: the only place where they are converted.
#pragma once

#include "base/Value.h"

#include <ole2.h>

#include <concepts>
#include <string>

namespace dax {

// Null is the empty text.
Text FromBstr(BSTR text);
Text FromWide(std::wstring_view text);
std::wstring ToWide(TextView text);
// The caller owns the result; never null.
BSTR ToBstr(TextView text);

// An automation value that frees what it holds.
class Variant : public VARIANT {
public:
    Variant() { VariantInit(this); }
    explicit Variant(TextView text);
    explicit Variant(const char16_t* text) : Variant(TextView(text)) {}
    // Only a real truth value: pointers would become one too.
    explicit Variant(std::same_as<bool> auto isTrue) : Variant() {
        boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
        vt = VT_BOOL;
    }
    explicit Variant(int32_t number);
    explicit Variant(IDispatch* object);
    // The receiver may change `number`.
    static Variant ByReference(long& number);
    static Variant FromValue(const Value& value);

    Variant(const Variant& other);
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(this); }
};

// The value as the kind that `like` has; NULL for what cannot be converted. With `like` NULL the kind stays.
Value ToValue(const VARIANT& variant, const Value& like = {});

} // namespace dax
