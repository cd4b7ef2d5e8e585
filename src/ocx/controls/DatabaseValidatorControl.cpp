#include "DAXControls.h"

#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "validation/win32/DatabaseValidatorWindow.h"

namespace dax {

namespace {

class DatabaseValidatorControl final
    : public ControlOf<_DatabaseValidator, DatabaseValidatorWindow, dax::DatabaseValidator> {
public:
    explicit DatabaseValidatorControl(const ClassEntry& entry) : ControlOf(entry) {
        changedListener = validator->Changed.Add([this] { ViewChanged(); });
    }

    STDMETHODIMP get_CommonConnectionString(BSTR* value) override { return Get(value, &Core::CommonConnectionString); }
    STDMETHODIMP get_DataConnectionString(BSTR* value) override { return Get(value, &Core::DataConnectionString); }
    STDMETHODIMP get_CatalogName(BSTR* value) override { return Get(value, &Core::CatalogName); }
    STDMETHODIMP get_MDBMode(VARIANT_BOOL* value) override { return Get(value, &Core::MDBMode); }
    STDMETHODIMP get_ErrorType(::ValidationErrorTypes* value) override { return Get(value, &Core::ErrorType); }
    STDMETHODIMP get_ErrorNumber(LONG* value) override { return Get(value, &Core::ErrorNumber); }
    STDMETHODIMP get_ErrorDescription(BSTR* value) override { return Get(value, &Core::ErrorDescription); }

    STDMETHODIMP ValidateDataConnection(BSTR connection, BSTR catalog, VARIANT_BOOL isMDB,
                                        VARIANT_BOOL* isValid) override {
        return Get(isValid, &Core::ValidateDataConnection, connection, catalog, isMDB);
    }
    STDMETHODIMP ValidateSupportsTalk(BSTR connection, VARIANT_BOOL* isSupported) override {
        return Get(isSupported, &Core::ValidateSupportsTalk, connection);
    }
    STDMETHODIMP ValidateCommonConnection(BSTR connection, BSTR dataSource, BSTR catalog, BSTR user,
                                          VARIANT_BOOL* isValid) override {
        return Get(isValid, &Core::ValidateCommonConnection, connection, dataSource, catalog, user);
    }

private:
    Core& Target() const override { return *validator; }
    ~DatabaseValidatorControl() override = default;

    const std::shared_ptr<dax::DatabaseValidator> validator = View().Validator();
    Subscription changedListener;
};

} // namespace

IUnknown* CreateDatabaseValidator(const ClassEntry& entry) {
    return static_cast<_DatabaseValidator*>(new DatabaseValidatorControl(entry));
}

} // namespace dax
