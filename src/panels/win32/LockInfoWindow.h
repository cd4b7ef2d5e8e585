// The locks on the selected entry in a real window.
#pragma once

#include "controls/win32/WindowBase.h"
#include "panels/LockInfo.h"

namespace dax {

class LockInfoWindow : public WindowBase {
public:
    LockInfoWindow();
    ~LockInfoWindow() override;

    // Whoever calls it holds this pointer while doing so: a listener may release the window.
    const std::shared_ptr<LockInfo>& Info() const { return info; }

    SIZE PreferredSize(int dpi) const override;

private:
    void OnAmbient() override;
    void Paint(HDC dc, SIZE size, bool isView) override;

    std::shared_ptr<LockInfo> info = std::make_shared<LockInfo>();
    bool wasPlaced = false, isDesignMode = false;
};

} // namespace dax
