#include "ocx/lessonmap/HostPictures.h"

#include "base/Error.h"
#include "ocx/latebound/HostObject.h"

namespace dax {

namespace {

[[noreturn]] void Refuse(const Text& description) { throw Error(ErrorNumbers::TypeMismatch, description); }

HIMAGELIST HandleFrom(const Variant& value) {
    if (IsLeftOut(value)) return nullptr;
    Variant number;
    if (FAILED(VariantChangeType(&number, const_cast<Variant*>(&value), 0, VT_I8)))
        Refuse(u"The handle of the image list is not a number.");
    return reinterpret_cast<HIMAGELIST>(static_cast<INT_PTR>(number.llVal));
}

std::vector<Text> Split(const Text& text) {
    std::vector<Text> keys;
    for (size_t start = 0, end = 0; end != Text::npos; start = end + 1) {
        end = text.find(u',', start);
        keys.push_back(text.substr(start, end == Text::npos ? end : end - start));
    }
    return keys;
}

std::vector<Text> KeysFrom(const Variant& value) {
    if (value.vt == VT_BSTR) return Split(TextFrom(value));
    SAFEARRAY* const array = (value.vt & VT_ARRAY) ? value.parray : nullptr;
    VARTYPE kind = VT_EMPTY;
    LONG first = 0, last = -1;
    if (!array || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetVartype(array, &kind)) ||
        (kind != VT_VARIANT && kind != VT_BSTR) || FAILED(SafeArrayGetLBound(array, 1, &first)) ||
        FAILED(SafeArrayGetUBound(array, 1, &last)))
        Refuse(u"The keys of the pictures must be an array of texts, or a text with commas.");
    std::vector<Text> keys;
    for (LONG i = first; i <= last; ++i) {
        Variant element;
        if (kind == VT_BSTR) element.vt = VT_BSTR;
        void* const place = kind == VT_BSTR ? static_cast<void*>(&element.bstrVal) : static_cast<VARIANT*>(&element);
        if (FAILED(SafeArrayGetElement(array, &i, place))) Refuse(u"The keys of the pictures cannot be read.");
        keys.push_back(TextFrom(element));
    }
    return keys;
}

std::vector<Text> KeysOf(const HostObject& imageList) {
    const auto pictures = ObjectFrom(imageList.Call(L"ListImages"));
    if (!pictures) Refuse(u"The image list has no pictures.");
    const HostObject list(pictures.Get());
    const int32_t count = NumberFrom(list.Call(L"Count"));
    constexpr int32_t maxPictures = 100'000;
    if (count > maxPictures) Refuse(u"The image list has too many pictures.");
    std::vector<Text> keys;
    for (int32_t i = 1; i <= count; ++i) {
        const auto picture = ObjectFrom(list.Call(L"Item", {Variant(i)}));
        keys.push_back(picture ? TextFrom(HostObject(picture.Get()).Call(L"Key")) : Text());
    }
    return keys;
}

} // namespace

HostPictures ReadPictures(const VARIANT& imageList, const VARIANT& keys) {
    const Variant list = PlainOf(imageList), names = PlainOf(keys);
    HostPictures pictures;
    if (list.vt == VT_DISPATCH || list.vt == VT_UNKNOWN) {
        const auto object = ObjectFrom(list);
        if (!object) return pictures;
        const HostObject host(object.Get());
        pictures.images = HandleFrom(host.Call(L"hImageList"));
        pictures.keys = PictureKeys(IsLeftOut(names) ? KeysOf(host) : KeysFrom(names));
    } else {
        pictures.images = HandleFrom(list);
        if (pictures.images) pictures.keys = PictureKeys(KeysFrom(names));
    }
    return pictures;
}

} // namespace dax
