// The status panel of the validator in a real window.
#pragma once

#include "controls/win32/TextAccessible.h"
#include "controls/win32/WindowBase.h"
#include "validation/DatabaseValidator.h"
#include "validation/win32/StatusPictures.h"

namespace dax {

class DatabaseValidatorWindow : public WindowBase {
public:
    DatabaseValidatorWindow();
    ~DatabaseValidatorWindow() override;

    // Callers must hold this pointer during a validation: the yield inside may release the window.
    const std::shared_ptr<DatabaseValidator>& Validator() const { return validator; }

    SIZE PreferredSize(int dpi) const override;

private:
    void OnCreate() override;
    void OnDestroyed() override { accessible.Disconnect(); }
    Accessible* AccessibleOf(HWND) override { return &accessible; }
    void OnAmbient() override;
    void Paint(HDC dc, SIZE size, bool isView) override;
    std::vector<Text> Paragraphs() const;
    void ShowTexts();

    std::shared_ptr<DatabaseValidator> validator = std::make_shared<DatabaseValidator>();
    Subscription changedListener;
    TextAccessible accessible{[this] { return Paragraphs(); }};
    StatusPictures pictures;
    bool isDesignMode = false;
    bool wasPlaced = false;
};

} // namespace dax
