#include "locks/win32/LockManagerWindow.h"

#include "controls/win32/GdiSurface.h"

namespace dax {

LockManagerWindow::LockManagerWindow() : WindowBase(L"DAXLockManager") {
    manager->SetupColumns();
    // The list and the manager hold each other only weakly: the window owns both.
    const std::weak_ptr<LockManager> weakManager = manager;
    const std::weak_ptr<ListViewWindow> weakList = list;
    list->Click.AddPermanent([weakManager] {
        if (const auto held = weakManager.lock()) held->ListClicked();
    });
    list->KeyDown.AddPermanent([weakManager](int key) {
        if (const auto held = weakManager.lock()) held->KeyDown(key);
    });
    list->ColumnClick.AddPermanent([weakManager, weakList](size_t column) {
        const auto held = weakManager.lock();
        if (!held) return;
        held->ColumnClicked(column);
        if (const auto shown = weakList.lock()) shown->ShowSortArrow(static_cast<int>(column), held->IsDescending());
    });
}

SIZE LockManagerWindow::PreferredSize(int dpi) const { return {MulDiv(760, dpi, 96), MulDiv(240, dpi, 96)}; }

void LockManagerWindow::OnCreate() {
    if (const HWND child = list->Create(Handle())) TrackFocus(child);
    OnFont();
    OnAmbient();
}

LRESULT LockManagerWindow::OnNotify(const NMHDR& header, LPARAM) {
    const auto keptList = list; // a listener may release this window
    const auto keptManager = manager;
    return keptList->HandleNotification(header);
}

// The list's own keys; everything else, Tab and Escape among them, is the host's.
bool LockManagerWindow::TranslateKey(const MSG& message) {
    if (!IsKeyDownIn(list->Handle(), message)) return false;
    switch (message.wParam) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_HOME:
    case VK_END:
    case VK_SPACE:
    case VK_DELETE:
    case VK_F5:
        return Deliver(message);
    default:
        return false;
    }
}

void LockManagerWindow::Paint(HDC dc, SIZE size, bool isView) {
    const RECT whole{0, 0, size.cx, size.cy};
    FillWith(dc, whole, CurrentAmbient().backColor);
    if (isView) list->DrawPicture(dc, whole, Font()); // otherwise the list is a window of its own
}

} // namespace dax
