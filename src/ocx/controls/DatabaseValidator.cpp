#include "DAXControls.h"

#include "ocx/controls/ControlClasses.h"
#include "ocx/hosting/Control.h"
#include "validation/win32/DatabaseValidatorWindow.h"

namespace dax {

namespace {

class DatabaseValidatorControl final : public ControlOf<_DatabaseValidator, DatabaseValidatorWindow> {
public:
    explicit DatabaseValidatorControl(const ClassEntry& entry) : ControlOf(entry) {
        changedListener = validator->Changed.Add([this] { ViewChanged(); });
    }

    STDMETHODIMP get_CommonConnectionString(BSTR* value) override {
        return Answer(value, [this] { return validator->CommonConnectionString(); });
    }
    STDMETHODIMP get_DataConnectionString(BSTR* value) override {
        return Answer(value, [this] { return validator->DataConnectionString(); });
    }
    STDMETHODIMP get_CatalogName(BSTR* value) override {
        return Answer(value, [this] { return validator->CatalogName(); });
    }
    STDMETHODIMP get_MDBMode(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return validator->MDBMode(); });
    }
    STDMETHODIMP get_ErrorType(::ValidationErrorTypes* value) override {
        return Answer(value, [this] { return validator->ErrorType(); });
    }
    STDMETHODIMP get_ErrorNumber(LONG* value) override {
        return Answer(value, [this] { return validator->ErrorNumber(); });
    }
    STDMETHODIMP get_ErrorDescription(BSTR* value) override {
        return Answer(value, [this] { return validator->ErrorDescription(); });
    }

    STDMETHODIMP ValidateDataConnection(BSTR connection, BSTR catalog, VARIANT_BOOL isMDB,
                                        VARIANT_BOOL* isValid) override {
        return Answer(isValid, [&] {
            return validator->ValidateDataConnection(FromBstr(connection), FromBstr(catalog), isMDB != VARIANT_FALSE);
        });
    }
    STDMETHODIMP ValidateSupportsTalk(BSTR connection, VARIANT_BOOL* isSupported) override {
        return Answer(isSupported, [&] { return validator->ValidateSupportsTalk(FromBstr(connection)); });
    }
    STDMETHODIMP ValidateCommonConnection(BSTR connection, BSTR dataSource, BSTR catalog, BSTR user,
                                          VARIANT_BOOL* isValid) override {
        return Answer(isValid, [&] {
            return validator->ValidateCommonConnection(FromBstr(connection), FromBstr(dataSource), FromBstr(catalog),
                                                       FromBstr(user));
        });
    }

private:
    ~DatabaseValidatorControl() override = default;

    const std::shared_ptr<dax::DatabaseValidator> validator = View().Validator();
    Subscription changedListener;
};

} // namespace

IUnknown* CreateDatabaseValidator(const ClassEntry& entry) {
    return static_cast<_DatabaseValidator*>(new DatabaseValidatorControl(entry));
}

} // namespace dax
