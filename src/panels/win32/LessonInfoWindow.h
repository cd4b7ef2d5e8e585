// The summary of the selected entry in a real window.
#pragma once

#include "panels/LessonInfo.h"
#include "panels/win32/PanelWindow.h"

namespace dax {

inline PanelLayout AllLines(const LessonInfo& panel) { return panel.Layout(1); }

class LessonInfoWindow : public PanelWindow<LessonInfo> {
public:
    LessonInfoWindow() : PanelWindow(L"DAXLessonInfo", 150) {}
};

} // namespace dax
