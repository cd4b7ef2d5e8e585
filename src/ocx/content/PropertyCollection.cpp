#include "ocx/content/PropertyCollection.h"

#include "ContentObjects.h"

#include "base/Error.h"
#include "com/ClassObject.h"

namespace dax {

namespace {

const ClassEntry collectionClass{&CLSID_PropertyCollection,
                                 &IID__PropertyCollection,
                                 nullptr,
                                 L"PropertyCollection",
                                 L"DAX property collection",
                                 nullptr,
                                 0};

bool IsMissing(const VARIANT& argument) { return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND; }

class PropertyCollectionObject final : public Automation<_PropertyCollection> {
public:
    explicit PropertyCollectionObject(std::shared_ptr<PropertyCollection> properties)
        : Automation(collectionClass), properties(std::move(properties)) {}

    STDMETHODIMP get_Name(BSTR* value) override {
        return Answer(value, [this] { return properties->Name(); });
    }
    STDMETHODIMP put_Name(BSTR value) override {
        return Run([&] { properties->SetName(FromBstr(value)); });
    }
    STDMETHODIMP GetValue(BSTR name, VARIANT defaultValue, VARIANT* value) override {
        if (!value) return E_POINTER;
        VariantInit(value);
        return Run([&] {
            const Value found = properties->GetValue(FromBstr(name), {});
            if (!IsNull(found)) {
                Variant result = Variant::FromValue(found);
                std::swap(*value, static_cast<VARIANT&>(result));
            } else if (!IsMissing(defaultValue)) { // whatever it is: it goes back as it came
                Check(VariantCopyInd(value, &defaultValue));
            }
        });
    }
    STDMETHODIMP SetValue(BSTR name, VARIANT value) override {
        return Run([&] {
            Variant plain;
            Check(VariantCopyInd(&plain, &value));
            const Value kept = ToValue(plain);
            if (IsNull(kept) && plain.vt != VT_EMPTY && plain.vt != VT_NULL)
                throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch");
            properties->SetValue(FromBstr(name), kept);
        });
    }
    STDMETHODIMP Load(BSTR text) override {
        return Run([&] { properties->Load(FromBstr(text)); });
    }
    STDMETHODIMP Save(BSTR* text) override {
        return Answer(text, [this] { return properties->Save(); });
    }

private:
    const std::shared_ptr<PropertyCollection> properties;
};

} // namespace

IDispatch* NewPropertyCollectionObject(std::shared_ptr<PropertyCollection> properties) {
    return properties ? new PropertyCollectionObject(std::move(properties)) : nullptr;
}

} // namespace dax
