// The catalog picker in a real window: one drop-down list as wide as the control.
#pragma once

#include "controls/win32/ComboBoxWindow.h"
#include "controls/win32/WindowBase.h"
#include "validation/SQLDBPicker.h"

namespace dax {

class SQLDBPickerWindow : public WindowBase {
public:
    SQLDBPickerWindow();

    // Callers must hold this pointer during the call: a listener may release the window.
    const std::shared_ptr<SQLDBPicker>& Picker() const { return picker; }

    bool TranslateKey(const MSG& message) override;
    SIZE PreferredSize(int dpi) const override;

private:
    void OnCreate() override;
    void OnSize(int width, int height) override;
    void OnAmbient() override;
    void OnFont() override { cboCatalogs->SetFont(Font()); }
    void OnDestroyed() override { cboCatalogs->OnHandleDestroyed(); }
    void OnCommand(HWND child, int code) override;
    HWND FocusTarget() const override { return cboCatalogs->Handle(); }
    void Paint(HDC dc, SIZE size, bool isView) override;

    std::shared_ptr<ComboBoxWindow> cboCatalogs = std::make_shared<ComboBoxWindow>();
    std::shared_ptr<SQLDBPicker> picker = std::make_shared<SQLDBPicker>(cboCatalogs);
};

} // namespace dax
