#include "panels/win32/LockInfoWindow.h"

#include "controls/win32/GdiSurface.h"

namespace dax {

LockInfoWindow::LockInfoWindow() : WindowBase(L"DAXLockInfo") {
    info->Changed = [this] { Repaint(); };
}

LockInfoWindow::~LockInfoWindow() { info->Changed = nullptr; }

SIZE LockInfoWindow::PreferredSize(int dpi) const { return {MulDiv(220, dpi, 96), MulDiv(80, dpi, 96)}; }

// The sample, or the empty panel, once the control is placed and whenever the host turns from one to the other.
void LockInfoWindow::OnAmbient() {
    const bool isDesign = !CurrentAmbient().userMode;
    if (wasPlaced && isDesign == isDesignMode) return;
    wasPlaced = true;
    isDesignMode = isDesign;
    if (isDesign)
        info->ShowDesignSample(Now());
    else
        info->Clear();
}

void LockInfoWindow::Paint(HDC dc, SIZE size, bool) {
    const Ambient& ambient = CurrentAmbient();
    GdiSurface surface(dc, size, Font(), BoldFont(), ambient.foreColor, ambient.backColor, ambient.dpi);
    info->Paint(surface);
}

} // namespace dax
