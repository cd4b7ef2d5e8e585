#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/GroupEditorControl.h"
#include "ocx/hosting/Control.h"
#include "panels/win32/LockInfoWindow.h"

namespace dax {

namespace {

class LockInfoControl final : public ControlOf<_LockInfo, LockInfoWindow, LockInfo> {
public:
    explicit LockInfoControl(const ClassEntry& entry) : ControlOf(entry) {
        errorListener = info->Error.Add([this](int32_t number, const Text& description) {
            Fire(PanelErrorEvent, {number, description});
        });
    }

    STDMETHODIMP UpdateFrom(_GroupEditor* ge) override {
        return Call([&] {
            const auto editor = EditorOf(ge); // a listener of Error may release its control
            info->UpdateFrom(editor.get());
            ViewChanged();
        });
    }
    STDMETHODIMP get_LockCount(LONG* value) override { return Get(value, &Core::LockCount); }
    STDMETHODIMP get_ConnectionString(BSTR* value) override { return Get(value, &Core::ConnectionString); }

private:
    static constexpr DISPID PanelErrorEvent = 1;

    Core& Target() const override { return *info; }
    ~LockInfoControl() override = default;

    const std::shared_ptr<LockInfo> info = View().Info();
    Subscription errorListener;
};

} // namespace

IUnknown* CreateLockInfo(const ClassEntry& entry) { return static_cast<_LockInfo*>(new LockInfoControl(entry)); }

} // namespace dax
