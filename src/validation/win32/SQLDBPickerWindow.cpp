#include "validation/win32/SQLDBPickerWindow.h"

#include "controls/win32/GdiSurface.h"

#include <algorithm>
#include <cmath>

namespace dax {

namespace {

// A closed list as the system draws it, for a picture of a control that has no window.
void DrawClosedList(HDC dc, RECT place, const Text& text, bool isEnabled, int arrowWidth) {
    FillRect(dc, &place, GetSysColorBrush(isEnabled ? COLOR_WINDOW : COLOR_BTNFACE));
    DrawEdge(dc, &place, EDGE_SUNKEN, BF_RECT | BF_ADJUST);
    RECT arrow = place;
    arrow.left = std::max(place.left, place.right - arrowWidth);
    DrawFrameControl(dc, &arrow, DFC_SCROLL, DFCS_SCROLLCOMBOBOX | (isEnabled ? 0u : DFCS_INACTIVE));
    RECT inner{place.left + 2, place.top, arrow.left, place.bottom};
    SetTextColor(dc, GetSysColor(isEnabled ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT));
    SetBkMode(dc, TRANSPARENT);
    DrawTextW(dc, Wide(text), static_cast<int>(text.size()), &inner,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

} // namespace

SQLDBPickerWindow::SQLDBPickerWindow() : WindowBase(L"DAXSQLDBPicker") {}

SIZE SQLDBPickerWindow::PreferredSize(int dpi) const {
    const int lineHeight = static_cast<int>(std::lround(CurrentAmbient().fontSize * dpi / 72 * 1.21));
    return {MulDiv(200, dpi, 96), lineHeight + MulDiv(8, dpi, 96)};
}

void SQLDBPickerWindow::OnCreate() {
    if (const HWND child = cboCatalogs->Create(Handle())) TrackFocus(child);
    OnFont();
}

void SQLDBPickerWindow::OnSize(int width, int) { cboCatalogs->FitWidth(width); }

void SQLDBPickerWindow::OnAmbient() {
    const bool isDesign = !CurrentAmbient().userMode;
    picker->SetDesignMode(isDesign);
    if (isDesign)
        cboCatalogs->ShowSample(CurrentAmbient().displayName);
    else
        cboCatalogs->ShowSample(std::nullopt);
}

void SQLDBPickerWindow::OnCommand(HWND child, int code) {
    if (child != cboCatalogs->Handle()) return;
    // A listener may release this window; the list and the picker exist until their own calls end.
    const auto keptList = cboCatalogs;
    const auto keptPicker = picker;
    keptList->HandleNotification(code);
}

bool SQLDBPickerWindow::TranslateKey(const MSG& message) {
    const bool isKey = message.message == WM_KEYDOWN || message.message == WM_KEYUP ||
                       message.message == WM_SYSKEYDOWN || message.message == WM_SYSKEYUP;
    const HWND list = cboCatalogs->Handle();
    if (!isKey || !list || message.hwnd != list || !cboCatalogs->HandlesKey(message.wParam)) return false;
    // Of the Alt keys only those that open and close the list are its own.
    const bool isSystemKey = message.message == WM_SYSKEYDOWN || message.message == WM_SYSKEYUP;
    if (isSystemKey && message.wParam != VK_UP && message.wParam != VK_DOWN) return false;
    TranslateMessage(&message);
    DispatchMessageW(&message);
    return true;
}

void SQLDBPickerWindow::Paint(HDC dc, SIZE size, bool isView) {
    FillWith(dc, {0, 0, size.cx, size.cy}, CurrentAmbient().backColor);
    if (!isView) return; // the list is a window of its own
    const int saved = SaveDC(dc);
    SelectObject(dc, Font());
    const LONG height = std::min(size.cy, PreferredSize(CurrentAmbient().dpi).cy);
    DrawClosedList(dc, {0, 0, size.cx, height}, cboCatalogs->ShownText(), cboCatalogs->Enabled(), Scale(17));
    RestoreDC(dc, saved);
}

} // namespace dax
