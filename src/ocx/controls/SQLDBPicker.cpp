#include "DAXControls.h"

#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "validation/win32/SQLDBPickerWindow.h"

namespace dax {

namespace {

constexpr DISPID CatalogChangedEvent = 1;

class SQLDBPickerControl final : public ControlOf<_SQLDBPicker, SQLDBPickerWindow> {
public:
    explicit SQLDBPickerControl(const ClassEntry& entry) : ControlOf(entry) {
        changedListener =
            picker->CatalogChanged.Add([this](const Text& catalog, const Text& login, const Text& password,
                                              const Text& title, const Text& description) {
                const SelfReference self(*this);
                ViewChanged();
                Fire(CatalogChangedEvent,
                     {Variant(catalog), Variant(login), Variant(password), Variant(title), Variant(description)});
            });
    }

    STDMETHODIMP get_ConnectionString(BSTR* value) override {
        return Answer(value, [this] { return picker->ConnectionString(); });
    }
    STDMETHODIMP get_DBCatalog(BSTR* value) override {
        return Answer(value, [this] { return picker->DBCatalog(); });
    }
    STDMETHODIMP get_DBUsername(BSTR* value) override {
        return Answer(value, [this] { return picker->DBUsername(); });
    }
    STDMETHODIMP get_DBPassword(BSTR* value) override {
        return Answer(value, [this] { return picker->DBPassword(); });
    }
    STDMETHODIMP get_Title(BSTR* value) override {
        return Answer(value, [this] { return picker->Title(); });
    }
    STDMETHODIMP get_DefaultCatalog(BSTR* value) override {
        return Answer(value, [this] { return picker->DefaultCatalog(); });
    }
    STDMETHODIMP get_Username(BSTR* value) override {
        return Answer(value, [this] { return picker->Username(); });
    }
    STDMETHODIMP get_IsAdmin(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return picker->IsAdmin(); });
    }
    STDMETHODIMP get_IsReadOnly(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return picker->IsReadOnly(); });
    }
    STDMETHODIMP get_IsSuperuser(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return picker->IsSuperuser(); });
    }
    STDMETHODIMP get_Enabled(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return picker->Enabled(); });
    }
    STDMETHODIMP put_Enabled(VARIANT_BOOL value) override {
        return Run([&] {
            picker->SetEnabled(value != VARIANT_FALSE);
            ViewChanged();
        });
    }

    STDMETHODIMP LoadPicker(BSTR connectionString, BSTR username, BSTR defaultCatalog,
                            VARIANT_BOOL* isLoaded) override {
        return Answer(isLoaded, [&] {
            return picker->LoadPicker(FromBstr(connectionString), FromBstr(username), FromBstr(defaultCatalog));
        });
    }
    STDMETHODIMP Clear() override {
        return Run([this] {
            picker->Clear();
            ViewChanged();
        });
    }
    STDMETHODIMP UpdateConnectionHistory(BSTR machineName, BSTR machineIP, BSTR osVersion, BSTR appVersion) override {
        return Run([&] {
            picker->UpdateConnectionHistory(FromBstr(machineName), FromBstr(machineIP), FromBstr(osVersion),
                                            FromBstr(appVersion));
        });
    }

private:
    ~SQLDBPickerControl() override = default;

    const std::shared_ptr<dax::SQLDBPicker> picker = View().Picker();
    Subscription changedListener;
};

} // namespace

IUnknown* CreateSQLDBPicker(const ClassEntry& entry) {
    return static_cast<_SQLDBPicker*>(new SQLDBPickerControl(entry));
}

} // namespace dax
