#include "ocx/controls/ControlClasses.h"
#include "ocx/controls/GroupEditorControl.h"
#include "ocx/hosting/Control.h"
#include "panels/win32/LessonInfoWindow.h"

namespace dax {

namespace {

class LessonInfoControl final : public ControlOf<_LessonInfo, LessonInfoWindow, LessonInfo> {
public:
    explicit LessonInfoControl(const ClassEntry& entry) : ControlOf(entry) {}

    STDMETHODIMP get_ShowIdentifier(VARIANT_BOOL* value) override { return Get(value, &Core::ShowIdentifier); }
    STDMETHODIMP put_ShowIdentifier(VARIANT_BOOL value) override { return Change(&Core::SetShowIdentifier, value); }
    STDMETHODIMP UpdateFrom(_GroupEditor* ge) override {
        return Call([&] {
            info->UpdateFrom(EditorOf(ge).get());
            ViewChanged();
        });
    }

private:
    Core& Target() const override { return *info; }
    const std::shared_ptr<LessonInfo> info = View().Info();
};

} // namespace

IUnknown* CreateLessonInfo(const ClassEntry& entry) { return static_cast<_LessonInfo*>(new LessonInfoControl(entry)); }

} // namespace dax
