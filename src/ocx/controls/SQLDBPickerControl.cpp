#include "DAXControls.h"

#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "validation/win32/SQLDBPickerWindow.h"

namespace dax {

namespace {

class SQLDBPickerControl final : public ControlOf<_SQLDBPicker, SQLDBPickerWindow, dax::SQLDBPicker> {
public:
    explicit SQLDBPickerControl(const ClassEntry& entry) : ControlOf(entry) {
        changedListener =
            picker->CatalogChanged.Add([this](const Text& catalog, const Text& login, const Text& password,
                                              const Text& title, const Text& description) {
                FireChange(CatalogChangedEvent, {catalog, login, password, title, description});
            });
    }

    STDMETHODIMP get_ConnectionString(BSTR* value) override { return Get(value, &Core::ConnectionString); }
    STDMETHODIMP get_DBCatalog(BSTR* value) override { return Get(value, &Core::DBCatalog); }
    STDMETHODIMP get_DBUsername(BSTR* value) override { return Get(value, &Core::DBUsername); }
    STDMETHODIMP get_DBPassword(BSTR* value) override { return Get(value, &Core::DBPassword); }
    STDMETHODIMP get_Title(BSTR* value) override { return Get(value, &Core::Title); }
    STDMETHODIMP get_DefaultCatalog(BSTR* value) override { return Get(value, &Core::DefaultCatalog); }
    STDMETHODIMP get_Username(BSTR* value) override { return Get(value, &Core::Username); }
    STDMETHODIMP get_IsAdmin(VARIANT_BOOL* value) override { return Get(value, &Core::IsAdmin); }
    STDMETHODIMP get_IsReadOnly(VARIANT_BOOL* value) override { return Get(value, &Core::IsReadOnly); }
    STDMETHODIMP get_IsSuperuser(VARIANT_BOOL* value) override { return Get(value, &Core::IsSuperuser); }
    STDMETHODIMP get_Enabled(VARIANT_BOOL* value) override { return Get(value, &Core::Enabled); }
    STDMETHODIMP put_Enabled(VARIANT_BOOL value) override { return Change(&Core::SetEnabled, value); }

    STDMETHODIMP LoadPicker(BSTR connectionString, BSTR username, BSTR defaultCatalog,
                            VARIANT_BOOL* isLoaded) override {
        return Get(isLoaded, &Core::LoadPicker, connectionString, username, defaultCatalog);
    }
    STDMETHODIMP Clear() override { return Change(&Core::Clear); }
    STDMETHODIMP UpdateConnectionHistory(BSTR machineName, BSTR machineIP, BSTR osVersion, BSTR appVersion) override {
        return Call(&Core::UpdateConnectionHistory, machineName, machineIP, osVersion, appVersion);
    }

private:
    static constexpr DISPID CatalogChangedEvent = 1;

    Core& Target() const override { return *picker; }
    ~SQLDBPickerControl() override = default;

    const std::shared_ptr<dax::SQLDBPicker> picker = View().Picker();
    Subscription changedListener;
};

} // namespace

IUnknown* CreateSQLDBPicker(const ClassEntry& entry) {
    return static_cast<_SQLDBPicker*>(new SQLDBPickerControl(entry));
}

} // namespace dax
