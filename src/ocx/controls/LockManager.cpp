#include "locks/win32/LockManagerWindow.h"
#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/IDCollection.h"
#include "ocx/hosting/Control.h"

namespace dax {

namespace {

constexpr DISPID SelectionChangedEvent = 1, DeleteRequestEvent = 2, LockErrorEvent = 3;

class LockManagerControl final : public ControlOf<_LockManager, LockManagerWindow> {
public:
    explicit LockManagerControl(const ClassEntry& entry) : ControlOf(entry) {
        selectionListener = manager->SelectionChanged.Add(
            [this](dax::LockDeleteTypes deletable) { Raise(SelectionChangedEvent, {Variant(int32_t{deletable})}); });
        deleteListener = manager->DeleteRequest.Add(
            [this](dax::LockDeleteTypes deletable) { Raise(DeleteRequestEvent, {Variant(int32_t{deletable})}); });
        errorListener = manager->Error.Add([this](int32_t number, const Text& description, const Text& occuredWhen,
                                                  const Text& routine, int32_t& action) {
            long answer = action;
            Raise(LockErrorEvent, {Variant(number), Variant(description), Variant(occuredWhen), Variant(routine),
                                   Variant::ByReference(answer)});
            action = answer;
        });
    }

    STDMETHODIMP get_ConnectionString(BSTR* value) override {
        return Answer(value, [this] { return manager->connectionString; });
    }
    STDMETHODIMP put_ConnectionString(BSTR value) override {
        return Run([&] { manager->connectionString = FromBstr(value); });
    }
    STDMETHODIMP get_MDBMode(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return manager->mdbMode; });
    }
    STDMETHODIMP put_MDBMode(VARIANT_BOOL value) override {
        return Run([&] { manager->mdbMode = value != VARIANT_FALSE; });
    }
    STDMETHODIMP get_Username(BSTR* value) override {
        return Answer(value, [this] { return manager->username; });
    }
    STDMETHODIMP put_Username(BSTR value) override {
        return Run([&] { manager->username = FromBstr(value); });
    }
    STDMETHODIMP get_IsAdministrator(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return manager->isAdministrator; });
    }
    STDMETHODIMP put_IsAdministrator(VARIANT_BOOL value) override {
        return Run([&] { manager->isAdministrator = value != VARIANT_FALSE; });
    }
    STDMETHODIMP get_SessionID(BSTR* value) override {
        return Answer(value, [this] { return manager->sessionID; });
    }
    STDMETHODIMP put_SessionID(BSTR value) override {
        return Run([&] { manager->sessionID = FromBstr(value); });
    }
    STDMETHODIMP get_LessonID(BSTR* value) override {
        return Answer(value, [this] { return manager->lessonID; });
    }
    STDMETHODIMP put_LessonID(BSTR value) override {
        return Run([&] { manager->lessonID = FromBstr(value); });
    }
    STDMETHODIMP get_GroupIDCollection(IDispatch** value) override {
        return Answer(value, [this] {
            if (groupObject) groupObject->AddRef();
            return groupObject.Get();
        });
    }
    STDMETHODIMP put_GroupIDCollection(IDispatch* value) override { return putref_GroupIDCollection(value); }
    STDMETHODIMP putref_GroupIDCollection(IDispatch* value) override {
        return Run([&] {
            manager->groupIDCollection = KeysOf(value);
            groupObject = ComPtr<IDispatch>(value);
        });
    }
    STDMETHODIMP get_LockDisplayType(::LockDisplayTypes* value) override {
        return Answer(value, [this] { return manager->lockDisplayType; });
    }
    STDMETHODIMP put_LockDisplayType(::LockDisplayTypes value) override {
        return Run([&] { manager->lockDisplayType = static_cast<dax::LockDisplayTypes>(value); });
    }
    STDMETHODIMP get_ShowIdentifier(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return manager->showIdentifier; });
    }
    STDMETHODIMP put_ShowIdentifier(VARIANT_BOOL value) override {
        return Run([&] { manager->showIdentifier = value != VARIANT_FALSE; });
    }
    STDMETHODIMP get_ExpectNoSessionIDRecords(VARIANT_BOOL* value) override {
        return Answer(value, [this] { return manager->expectNoSessionIDRecords; });
    }
    STDMETHODIMP put_ExpectNoSessionIDRecords(VARIANT_BOOL value) override {
        return Run([&] { manager->expectNoSessionIDRecords = value != VARIANT_FALSE; });
    }

    STDMETHODIMP get_LockCount(LONG* value) override {
        return Answer(value, [this] { return manager->LockCount(); });
    }
    STDMETHODIMP get_DeletableLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->DeletableLockCount(); });
    }
    STDMETHODIMP get_SelectedLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->SelectedLockCount(); });
    }
    STDMETHODIMP get_SelectedDeletableLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->SelectedDeletableLockCount(); });
    }
    STDMETHODIMP get_InvalidLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->InvalidLockCount(); });
    }
    STDMETHODIMP get_ValidLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->ValidLockCount(); });
    }
    STDMETHODIMP get_SelectedInvalidLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->SelectedInvalidLockCount(); });
    }
    STDMETHODIMP get_SelectedValidLockCount(LONG* value) override {
        return Answer(value, [this] { return manager->SelectedValidLockCount(); });
    }
    STDMETHODIMP get_SelectedLockDeleteType(::LockDeleteTypes* value) override {
        return Answer(value, [this] { return manager->SelectedLockDeleteType(); });
    }

    STDMETHODIMP Refresh() override {
        return Run([&] {
            manager->Refresh();
            ViewChanged();
        });
    }
    STDMETHODIMP RebuildDisplay(VARIANT_BOOL autosizeColumns) override {
        return Run([&] {
            manager->RebuildDisplay(autosizeColumns != VARIANT_FALSE);
            ViewChanged();
        });
    }
    STDMETHODIMP AutosizeColumns() override {
        return Run([&] {
            manager->AutosizeColumns();
            ViewChanged();
        });
    }
    STDMETHODIMP DeleteSelected() override {
        return Run([&] {
            manager->DeleteSelected();
            ViewChanged();
        });
    }

private:
    ~LockManagerControl() override = default;

    void Raise(DISPID event, std::initializer_list<Variant> arguments) {
        const SelfReference self(*this);
        ViewChanged();
        Fire(event, arguments);
    }

    const std::shared_ptr<LockManager> manager = View().Manager();
    ComPtr<IDispatch> groupObject;
    Subscription selectionListener, deleteListener, errorListener;
};

} // namespace

IUnknown* CreateLockManager(const ClassEntry& entry) {
    return static_cast<_LockManager*>(new LockManagerControl(entry));
}

} // namespace dax
