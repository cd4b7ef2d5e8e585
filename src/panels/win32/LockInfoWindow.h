// The locks on the selected entry in a real window.
#pragma once

#include "panels/LockInfo.h"
#include "panels/win32/PanelWindow.h"

namespace dax {

inline PanelLayout AllLines(const LockInfo& panel) { return panel.Summary().Layout(); }

class LockInfoWindow : public PanelWindow<LockInfo> {
public:
    LockInfoWindow() : PanelWindow(L"DAXLockInfo", 80) {}
};

} // namespace dax
