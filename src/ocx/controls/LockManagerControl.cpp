#include "locks/win32/LockManagerWindow.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/IDCollectionObject.h"
#include "ocx/hosting/Control.h"

namespace dax {

namespace {

class LockManagerControl final : public ControlOf<_LockManager, LockManagerWindow, dax::LockManager> {
public:
    explicit LockManagerControl(const ClassEntry& entry) : ControlOf(entry) {
        selectionListener = manager->SelectionChanged.Add(
            [this](dax::LockDeleteTypes deletable) { FireChange(SelectionChangedEvent, {deletable}); });
        deleteListener = manager->DeleteRequest.Add(
            [this](dax::LockDeleteTypes deletable) { FireChange(DeleteRequestEvent, {deletable}); });
        errorListener = manager->Error.Add([this](int32_t number, const Text& description, const Text& occuredWhen,
                                                  const Text& routine, int32_t& action) {
            long answer = action;
            FireChange(LockErrorEvent, {number, description, occuredWhen, routine, Variant::ByReference(answer)});
            action = answer;
        });
    }

    STDMETHODIMP get_ConnectionString(BSTR* value) override { return Get(value, &Core::connectionString); }
    STDMETHODIMP put_ConnectionString(BSTR value) override { return Put(&Core::connectionString, value); }
    STDMETHODIMP get_MDBMode(VARIANT_BOOL* value) override { return Get(value, &Core::mdbMode); }
    STDMETHODIMP put_MDBMode(VARIANT_BOOL value) override { return Put(&Core::mdbMode, value); }
    STDMETHODIMP get_Username(BSTR* value) override { return Get(value, &Core::username); }
    STDMETHODIMP put_Username(BSTR value) override { return Put(&Core::username, value); }
    STDMETHODIMP get_IsAdministrator(VARIANT_BOOL* value) override { return Get(value, &Core::isAdministrator); }
    STDMETHODIMP put_IsAdministrator(VARIANT_BOOL value) override { return Put(&Core::isAdministrator, value); }
    STDMETHODIMP get_SessionID(BSTR* value) override { return Get(value, &Core::sessionID); }
    STDMETHODIMP put_SessionID(BSTR value) override { return Put(&Core::sessionID, value); }
    STDMETHODIMP get_LessonID(BSTR* value) override { return Get(value, &Core::lessonID); }
    STDMETHODIMP put_LessonID(BSTR value) override { return Put(&Core::lessonID, value); }
    STDMETHODIMP get_GroupIDCollection(IDispatch** value) override {
        return Get(value, [this] { return groupObject; });
    }
    STDMETHODIMP put_GroupIDCollection(IDispatch* value) override { return putref_GroupIDCollection(value); }
    STDMETHODIMP putref_GroupIDCollection(IDispatch* value) override {
        return Call([&] {
            manager->groupIDCollection = KeysOf(value);
            groupObject = ComPtr<IDispatch>(value);
        });
    }
    STDMETHODIMP get_LockDisplayType(::LockDisplayTypes* value) override { return Get(value, &Core::lockDisplayType); }
    STDMETHODIMP put_LockDisplayType(::LockDisplayTypes value) override { return Put(&Core::lockDisplayType, value); }
    STDMETHODIMP get_ShowIdentifier(VARIANT_BOOL* value) override { return Get(value, &Core::showIdentifier); }
    STDMETHODIMP put_ShowIdentifier(VARIANT_BOOL value) override { return Put(&Core::showIdentifier, value); }
    STDMETHODIMP get_ExpectNoSessionIDRecords(VARIANT_BOOL* value) override {
        return Get(value, &Core::expectNoSessionIDRecords);
    }
    STDMETHODIMP put_ExpectNoSessionIDRecords(VARIANT_BOOL value) override {
        return Put(&Core::expectNoSessionIDRecords, value);
    }

    STDMETHODIMP get_LockCount(LONG* value) override { return Get(value, &Core::LockCount); }
    STDMETHODIMP get_DeletableLockCount(LONG* value) override { return Get(value, &Core::DeletableLockCount); }
    STDMETHODIMP get_SelectedLockCount(LONG* value) override { return Get(value, &Core::SelectedLockCount); }
    STDMETHODIMP get_SelectedDeletableLockCount(LONG* value) override {
        return Get(value, &Core::SelectedDeletableLockCount);
    }
    STDMETHODIMP get_InvalidLockCount(LONG* value) override { return Get(value, &Core::InvalidLockCount); }
    STDMETHODIMP get_ValidLockCount(LONG* value) override { return Get(value, &Core::ValidLockCount); }
    STDMETHODIMP get_SelectedInvalidLockCount(LONG* value) override {
        return Get(value, &Core::SelectedInvalidLockCount);
    }
    STDMETHODIMP get_SelectedValidLockCount(LONG* value) override { return Get(value, &Core::SelectedValidLockCount); }
    STDMETHODIMP get_SelectedLockDeleteType(::LockDeleteTypes* value) override {
        return Get(value, &Core::SelectedLockDeleteType);
    }

    STDMETHODIMP Refresh() override { return Change(&Core::Refresh); }
    STDMETHODIMP RebuildDisplay(VARIANT_BOOL autosizeColumns) override {
        return Change(&Core::RebuildDisplay, autosizeColumns);
    }
    STDMETHODIMP AutosizeColumns() override { return Change(&Core::AutosizeColumns); }
    STDMETHODIMP DeleteSelected() override { return Change(&Core::DeleteSelected); }

private:
    static constexpr DISPID SelectionChangedEvent = 1, DeleteRequestEvent = 2, LockErrorEvent = 3;

    Core& Target() const override { return *manager; }
    ~LockManagerControl() override = default;

    const std::shared_ptr<LockManager> manager = View().Manager();
    ComPtr<IDispatch> groupObject;
    Subscription selectionListener, deleteListener, errorListener;
};

} // namespace

IUnknown* CreateLockManager(const ClassEntry& entry) {
    return static_cast<_LockManager*>(new LockManagerControl(entry));
}

} // namespace dax
