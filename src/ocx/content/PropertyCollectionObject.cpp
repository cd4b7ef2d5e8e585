#include "ocx/content/PropertyCollectionObject.h"

#include "ContentObjects.h"

#include "base/Error.h"
#include "com/Forwarding.h"

namespace dax {

namespace {

const ClassEntry propertiesClass{&CLSID_PropertyCollection,
                                 &IID__PropertyCollection,
                                 nullptr,
                                 L"PropertyCollection",
                                 L"DAX property collection",
                                 nullptr,
                                 0};

class PropertyCollectionObject final : public Forwarding<DualObject<_PropertyCollection>, PropertyCollection> {
public:
    explicit PropertyCollectionObject(std::shared_ptr<PropertyCollection> properties)
        : Forwarding(propertiesClass), properties(std::move(properties)) {}

    STDMETHODIMP get_Name(BSTR* value) override { return Get(value, &Core::Name); }
    STDMETHODIMP put_Name(BSTR value) override { return Put(&Core::SetName, value); }
    STDMETHODIMP GetValue(BSTR name, VARIANT defaultValue, VARIANT* value) override {
        return Get(value, [&] {
            const Value found = properties->GetValue(FromBstr(name), {});
            if (!IsNull(found)) return Variant::FromValue(found);
            return IsMissing(defaultValue) ? Variant() : Dereferenced(defaultValue); // returned unchanged
        });
    }
    STDMETHODIMP SetValue(BSTR name, VARIANT value) override {
        return Call([&] {
            const Variant plain = Dereferenced(value);
            const Value kept = ToValue(plain);
            if (IsNull(kept) && plain.vt != VT_EMPTY && plain.vt != VT_NULL)
                throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch");
            properties->SetValue(FromBstr(name), kept);
        });
    }
    STDMETHODIMP Load(BSTR text) override { return Call(&Core::Load, text); }
    STDMETHODIMP Save(BSTR* text) override { return Get(text, &Core::Save); }

private:
    Core& Target() const override { return *properties; }

    const std::shared_ptr<PropertyCollection> properties;
};

} // namespace

IDispatch* ToInterface(std::shared_ptr<PropertyCollection> properties) {
    return properties ? new PropertyCollectionObject(std::move(properties)) : nullptr;
}

} // namespace dax
