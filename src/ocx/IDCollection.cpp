#include "ocx/IDCollection.h"

#include "base/Error.h"
#include "ocx/com/Enumerator.h"
#include "ocx/com/Object.h"

#include <vector>

namespace dax {

namespace {

// As hosts know it.
constexpr int32_t NoSuchMember = 438;

// Only a collection of ours has this interface: it is then the default one of an IDCollectionObject.
constexpr IID OwnCollection{0x7d1e5d0b, 0x3c0f, 0x4c59, {0xa6, 0x0d, 0x61, 0x0f, 0x53, 0x2d, 0x8e, 0x17}};

const ClassEntry collectionClass{
    &CLSID_IDCollection, &IID__IDCollection, nullptr, L"IDCollection", L"DAX identifiers", nullptr, 0};

VARIANT GiveText(const Text& text) {
    VARIANT result;
    VariantInit(&result);
    result.bstrVal = ToBstr(text);
    result.vt = VT_BSTR;
    return result;
}

using TextEnumerator = Enumerator<IEnumVARIANT, IID_IEnumVARIANT, VARIANT, Text, GiveText>;

class IDCollectionObject final : public Automation<_IDCollection> {
public:
    explicit IDCollectionObject(IDCollection collected)
        : Automation(collectionClass), identifiers(std::make_shared<const IDCollection>(std::move(collected))) {
        for (const Text& id : *identifiers) places.push_back(&id);
    }

    const std::shared_ptr<const IDCollection>& Identifiers() const { return identifiers; }

    STDMETHODIMP get_Count(LONG* value) override {
        return Answer(value, [this] { return places.size(); });
    }
    STDMETHODIMP get_Item(VARIANT index, BSTR* value) override {
        return Answer(value, [&] {
            Variant plain;
            Check(VariantCopyInd(&plain, &index));
            if (plain.vt == VT_BSTR) {
                const Text key = FromBstr(plain.bstrVal);
                if (!identifiers->Contains(key))
                    throw Error(ErrorNumbers::InvalidCall, u"Invalid procedure call or argument");
                return key;
            }
            if (FAILED(VariantChangeType(&plain, &plain, 0, VT_I4)))
                throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch");
            const LONG place = plain.lVal;
            if (place < 1 || static_cast<size_t>(place) > places.size())
                throw Error(ErrorNumbers::OutOfRange, u"Subscript out of range");
            return *places[static_cast<size_t>(place) - 1];
        });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Answer(value, [this] {
            IEnumVARIANT* result = nullptr;
            Check(TextEnumerator::Create({identifiers->begin(), identifiers->end()}, &result));
            return result;
        });
    }

private:
    void* Find(REFIID iid) override {
        return iid == OwnCollection ? static_cast<_IDCollection*>(this) : Automation::Find(iid);
    }

    const std::shared_ptr<const IDCollection> identifiers;
    std::vector<const Text*> places; // in their order
};

ComPtr<IEnumVARIANT> EnumeratorOf(IDispatch& collection) {
    DISPPARAMS none{};
    Variant result;
    if (FAILED(collection.Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                 &none, &result, nullptr, nullptr)) ||
        (result.vt != VT_UNKNOWN && result.vt != VT_DISPATCH))
        return {};
    return Query<IEnumVARIANT>(result.punkVal, IID_IEnumVARIANT);
}

} // namespace

_IDCollection* NewIDCollectionObject(IDCollection identifiers) {
    return new IDCollectionObject(std::move(identifiers));
}

std::shared_ptr<const IDCollection> ReadIDCollection(IDispatch* collection) {
    if (!collection) return nullptr;
    if (const auto own = Query<_IDCollection>(collection, OwnCollection))
        return static_cast<IDCollectionObject*>(own.Get())->Identifiers();
    const auto elements = EnumeratorOf(*collection);
    if (!elements) throw Error(NoSuchMember, u"Object doesn't support this property or method");
    const auto result = std::make_shared<IDCollection>();
    for (;;) {
        Variant element;
        if (elements->Next(1, &element, nullptr) != S_OK) return result;
        if (FAILED(VariantChangeType(&element, &element, 0, VT_BSTR)))
            throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch");
        result->Add(FromBstr(element.bstrVal));
    }
}

} // namespace dax
