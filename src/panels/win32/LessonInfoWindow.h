// The summary of the selected entry in a real window.
#pragma once

#include "controls/win32/WindowBase.h"
#include "panels/LessonInfo.h"

namespace dax {

class LessonInfoWindow : public WindowBase {
public:
    LessonInfoWindow();
    ~LessonInfoWindow() override;

    const std::shared_ptr<LessonInfo>& Info() const { return info; }

    SIZE PreferredSize(int dpi) const override;

private:
    void OnAmbient() override;
    void Paint(HDC dc, SIZE size, bool isView) override;

    std::shared_ptr<LessonInfo> info = std::make_shared<LessonInfo>();
    bool wasPlaced = false, isDesignMode = false;
};

} // namespace dax
