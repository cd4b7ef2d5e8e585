#include "com/Variant.h"

#include "com/ComError.h"

#include <algorithm>
#include <new>
#include <utility>

namespace dax {

Text FromWide(std::wstring_view text) { return Text(text.begin(), text.end()); }

Text FromBstr(BSTR text) { return text ? FromWide({text, SysStringLen(text)}) : Text(); }

std::wstring ToWide(TextView text) { return std::wstring(text.begin(), text.end()); }

BSTR ToBstr(TextView text) {
    const BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
    if (!result) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), result);
    return result;
}

namespace {

// Some headers declare the source of a copy without const; it is only read.
VARIANT* Mutable(const VARIANT& value) { return const_cast<VARIANT*>(&value); }

} // namespace

Variant::Variant(TextView text) : Variant() {
    bstrVal = ToBstr(text);
    vt = VT_BSTR;
}

Variant::Variant(std::wstring_view text) : Variant() {
    bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!bstrVal) throw std::bad_alloc();
    vt = VT_BSTR;
}

Variant::Variant(IDispatch* object) : Variant() {
    if (object) object->AddRef();
    pdispVal = object;
    vt = VT_DISPATCH;
}

Variant Variant::ByReference(long& number) {
    Variant result;
    result.plVal = &number;
    result.vt = VT_I4 | VT_BYREF;
    return result;
}

Variant::Variant(const Variant& other) : Variant() {
    if (FAILED(VariantCopy(this, Mutable(other)))) throw std::bad_alloc();
}

Variant::Variant(Variant&& other) noexcept : Variant() {
    std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
}

Variant& Variant::operator=(Variant other) noexcept {
    std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
    return *this;
}

std::wstring Variant::Text() const {
    const bool isObject = vt == VT_DISPATCH || vt == VT_UNKNOWN;
    Variant text;
    if (isObject || vt == VT_NULL || FAILED(VariantChangeType(&text, Mutable(*this), VARIANT_ALPHABOOL, VT_BSTR)))
        return {};
    return {text.bstrVal ? text.bstrVal : L"", SysStringLen(text.bstrVal)};
}

long Variant::Long() const {
    Variant number;
    return SUCCEEDED(VariantChangeType(&number, Mutable(*this), 0, VT_I4)) ? number.lVal : 0;
}

bool Variant::Bool() const {
    Variant flag;
    return SUCCEEDED(VariantChangeType(&flag, Mutable(*this), 0, VT_BOOL)) && flag.boolVal != VARIANT_FALSE;
}

ComPtr<IDispatch> Variant::Object() const {
    Variant plain;
    if (FAILED(VariantCopyInd(&plain, Mutable(*this))) || (plain.vt != VT_DISPATCH && plain.vt != VT_UNKNOWN))
        return {};
    return Query<IDispatch>(plain.punkVal, IID_IDispatch);
}

void Variant::MoveTo(VARIANT* result) {
    if (result) std::swap(*result, static_cast<VARIANT&>(*this));
}

Variant Dereferenced(const VARIANT& variant) {
    Variant plain;
    Check(VariantCopyInd(&plain, Mutable(variant)));
    return plain;
}

bool IsMissing(const VARIANT& argument) { return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND; }

std::wstring DescribeValue(const VARIANT& value) {
    Variant plain;
    if (FAILED(VariantCopyInd(&plain, Mutable(value)))) return L"?";
    if (plain.vt == VT_EMPTY || plain.vt == VT_NULL) return {};
    if (plain.vt == VT_DISPATCH || plain.vt == VT_UNKNOWN) return plain.punkVal ? L"[object]" : L"[nothing]";
    Variant text;
    if (FAILED(VariantChangeType(&text, &plain, VARIANT_ALPHABOOL, VT_BSTR))) return L"?";
    return text.Text();
}

Variant Variant::FromValue(const Value& value) {
    if (const auto* isTrue = std::get_if<bool>(&value)) return Variant(*isTrue);
    if (const auto* text = std::get_if<dax::Text>(&value)) return Variant(TextView(*text));
    Variant result;
    if (const auto* number = std::get_if<int64_t>(&value)) {
        if (*number == static_cast<int32_t>(*number)) return Variant(static_cast<int32_t>(*number));
        result.vt = VT_R8;
        result.dblVal = static_cast<double>(*number);
    } else if (const auto* real = std::get_if<double>(&value)) {
        result.vt = VT_R8;
        result.dblVal = *real;
    } else if (const auto* date = std::get_if<DateTime>(&value)) {
        SYSTEMTIME time{};
        time.wYear = static_cast<WORD>(date->year);
        time.wMonth = static_cast<WORD>(date->month);
        time.wDay = static_cast<WORD>(date->day);
        time.wHour = static_cast<WORD>(date->hour);
        time.wMinute = static_cast<WORD>(date->minute);
        time.wSecond = static_cast<WORD>(date->second);
        if (SystemTimeToVariantTime(&time, &result.date)) result.vt = VT_DATE;
    }
    return result;
}

namespace {

// The automation kind of a value; VT_EMPTY for NULL.
VARTYPE KindOf(const Value& value) {
    switch (value.index()) {
    case 1:
        return VT_BOOL;
    case 2:
        return VT_I4;
    case 3:
        return VT_R8;
    case 4:
        return VT_BSTR;
    case 5:
        return VT_DATE;
    default:
        return VT_EMPTY;
    }
}

// Of the many kinds of numbers, the two that a value can have.
VARTYPE WiderKind(VARTYPE kind) {
    switch (kind) {
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_UI8:
        return VT_I8;
    case VT_R4:
    case VT_CY:
    case VT_DECIMAL:
        return VT_R8;
    default:
        return kind;
    }
}

} // namespace

Value ToValue(const VARIANT& variant, const Value& like) {
    Variant plain;
    if (FAILED(VariantCopyInd(&plain, Mutable(variant)))) return {};
    const VARTYPE kind = KindOf(like);
    const bool isNothing = plain.vt == VT_EMPTY || plain.vt == VT_NULL;
    if (!isNothing && kind != VT_EMPTY && FAILED(VariantChangeType(&plain, &plain, 0, kind))) return {};
    if (const VARTYPE wider = WiderKind(plain.vt); wider != plain.vt)
        if (FAILED(VariantChangeType(&plain, &plain, 0, wider))) return {};
    switch (plain.vt) {
    case VT_BOOL:
        return plain.boolVal != VARIANT_FALSE;
    case VT_BSTR:
        return FromBstr(plain.bstrVal);
    case VT_I8:
        return static_cast<int64_t>(plain.llVal);
    case VT_R8:
        return plain.dblVal;
    case VT_DATE: {
        SYSTEMTIME time{};
        if (!VariantTimeToSystemTime(plain.date, &time)) return {};
        return DateTime{time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    }
    default:
        return {};
    }
}

} // namespace dax
