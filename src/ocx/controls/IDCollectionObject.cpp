#include "ocx/controls/IDCollectionObject.h"

#include "base/Error.h"
#include "com/ClassObject.h"
#include "com/Enumerator.h"
#include "ocx/latebound/HostObject.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace dax {

namespace {

// The private IID of an IDCollectionObject; it leads to its default interface.
constexpr IID PrivateCollectionID{0x7d1e5d0b, 0x3c0f, 0x4c59, {0xa6, 0x0d, 0x61, 0x0f, 0x53, 0x2d, 0x8e, 0x17}};

const ClassEntry idCollectionClass{
    &CLSID_IDCollection, &IID__IDCollection, nullptr, L"IDCollection", L"DAX identifiers", nullptr, 0};

class IDCollectionObject final : public DualObject<_IDCollection> {
public:
    explicit IDCollectionObject(IDCollection collected)
        : DualObject(idCollectionClass), identifiers(std::move(collected)) {
        for (const Text& id : identifiers) places.push_back(&id);
    }

    bool Contains(const Text& id) const { return identifiers.Contains(id); }

    STDMETHODIMP get_Count(LONG* value) override {
        return Get(value, [this] { return places.size(); });
    }
    STDMETHODIMP get_Item(VARIANT index, BSTR* value) override {
        return Get(value, [&] {
            const Variant plain = PlainOf(index);
            return plain.vt == VT_BSTR ? KeyFrom(plain) : *places[PlaceFrom(plain)];
        });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Get(value, [this] { return EnumerateVariants<Text>({identifiers.begin(), identifiers.end()}); });
    }
    STDMETHODIMP Add(BSTR identifier, VARIANT key) override {
        return Call([&] {
            const Text id = FromBstr(identifier);
            if (!IsLeftOut(key) && TextFrom(PlainOf(key)) != id)
                throw Error(ErrorNumbers::InvalidCall, u"The key of an identifier must be the identifier itself.");
            places.reserve(places.size() + 1);
            if (!identifiers.Add(id))
                throw Error(ErrorNumbers::KeyExists, u"'" + id + u"' is already an element of this collection.");
            places.push_back(&*std::prev(identifiers.end()));
        });
    }
    STDMETHODIMP Remove(VARIANT index) override {
        return Call([&] {
            const Variant plain = PlainOf(index);
            const Text id = plain.vt == VT_BSTR ? KeyFrom(plain) : *places[PlaceFrom(plain)];
            places.erase(std::find_if(places.begin(), places.end(), [&](const Text* each) { return *each == id; }));
            identifiers.Remove(id);
        });
    }

private:
    void* Find(REFIID iid) override {
        return iid == PrivateCollectionID ? static_cast<_IDCollection*>(this) : DualObject::Find(iid);
    }

    Text KeyFrom(const Variant& index) const {
        Text key = FromBstr(index.bstrVal);
        if (!identifiers.Contains(key)) throw Error(ErrorNumbers::InvalidCall, u"Invalid procedure call or argument");
        return key;
    }
    size_t PlaceFrom(const Variant& index) const {
        const int32_t place = NumberFrom(index);
        if (place < 1 || static_cast<size_t>(place) > places.size())
            throw Error(ErrorNumbers::OutOfRange, u"Subscript out of range");
        return static_cast<size_t>(place) - 1;
    }

    IDCollection identifiers;
    std::vector<const Text*> places; // in their order
};

// The number by which a host counts a failure.
int32_t NumberForHost(int32_t code) {
    switch (static_cast<HRESULT>(code)) {
    case E_OUTOFMEMORY:
        return ErrorNumbers::OutOfMemory;
    case DISP_E_TYPEMISMATCH:
        return ErrorNumbers::TypeMismatch;
    case DISP_E_MEMBERNOTFOUND:
    case DISP_E_UNKNOWNNAME:
        return ErrorNumbers::NoSuchMember;
    default:
        return HRESULT_FACILITY(code) == FACILITY_CONTROL && code < 0 ? HRESULT_CODE(code) : code;
    }
}

bool IsNothing(const Variant& item) {
    return IsLeftOut(item) || ((item.vt == VT_DISPATCH || item.vt == VT_UNKNOWN) && !item.punkVal);
}

class HostKeys final : public KeyedCollection {
public:
    explicit HostKeys(IDispatch* collection) : host(collection) {}

    bool HasKey(const Text& key) override {
        try {
            if (way == Way::Unknown) FindWay();
            return Contains(key);
        } catch (const Error& error) {
            BeginReading(); // another attempt starts again
            throw Error(NumberForHost(error.Number()), error.Description());
        }
    }
    void BeginReading() override {
        way = Way::Unknown;
        own = {};
        elements.clear();
    }

private:
    enum class Way { Unknown, Own, Exists, Item, Elements };

    void FindWay() {
        own = Query<_IDCollection>(host.Object(), PrivateCollectionID);
        if (own)
            way = Way::Own;
        else if (host.Has(L"Exists"))
            way = Way::Exists;
        else if (host.Has(L"Item"))
            way = Way::Item;
        else if (!ReadElements())
            throw Error(ErrorNumbers::NoSuchMember, u"The collection has neither Exists nor Item nor an enumerator.");
    }

    bool Contains(const Text& key) {
        switch (way) {
        case Way::Own:
            return static_cast<IDCollectionObject*>(own.Get())->Contains(key);
        case Way::Exists:
            return NumberFrom(host.Call(L"Exists", {Variant(key)})) != 0;
        case Way::Item:
            return FindItem(key);
        default:
            return elements.contains(key);
        }
    }

    bool FindItem(const Text& key) {
        try {
            return !IsNothing(host.TryGetItem(L"Item", Variant(key)));
        } catch (const Error& error) {
            // A list whose Item takes only a number.
            if (NumberForHost(error.Number()) != ErrorNumbers::TypeMismatch || !ReadElements()) throw;
        }
        return elements.contains(key);
    }

    // False when the collection is neither a script's array nor has an enumerator.
    bool ReadElements() {
        std::unordered_set<Text> read;
        const auto add = [&read](const Variant& element) { read.insert(TextFrom(PlainOf(element))); };
        if (host.Has(L"length")) {
            const int32_t length = NumberFrom(host.Get(L"length"));
            if (length > HostObject::MaxElements)
                throw Error(ErrorNumbers::Automation, u"The array has more than 1,000,000 elements.");
            for (int32_t i = 0; i < length; ++i) {
                const std::wstring name = std::to_wstring(i);
                if (host.Has(name.c_str())) add(host.Get(name.c_str()));
            }
        } else if (!host.ForEach(add)) {
            return false;
        }
        elements.swap(read);
        way = Way::Elements;
        return true;
    }

    const HostObject host;
    Way way = Way::Unknown;
    ComPtr<_IDCollection> own;
    std::unordered_set<Text> elements;
};

} // namespace

_IDCollection* ToInterface(IDCollection identifiers) { return new IDCollectionObject(std::move(identifiers)); }

std::shared_ptr<KeyedCollection> KeysOf(IDispatch* collection) {
    return collection ? std::make_shared<HostKeys>(collection) : nullptr;
}

} // namespace dax
