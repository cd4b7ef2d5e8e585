// Messages of the tree window, turned into changes of the model and into events.
#include "tree/win32/TreeViewWindow.h"

#include "tree/modTVW.h"
#include "tree/win32/TreeStyle.h"

#include <windowsx.h>

#include <algorithm>

namespace dax {

namespace {

// The ANSI form, which some trees send; both forms mean the same here.
constexpr UINT SelectionChangedAnsi = static_cast<UINT>(TVN_FIRST - 2), KeyDownCode = static_cast<UINT>(TVN_FIRST - 12);
constexpr UINT BoxPressed = 1; // our own: the system's codes are beyond the positive ones
struct BoxPress {
    NMHDR header;
    Point point;
};

Point PointOf(LPARAM lParam) { return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; }

} // namespace

LRESULT TreeViewWindow::HandleNotification(const NMHDR& header) {
    if (header.hwndFrom != handle) return 0;
    switch (header.code) {
    case TVN_GETDISPINFOW: {
        TVITEMW& item = reinterpret_cast<NMTVDISPINFOW*>(const_cast<NMHDR*>(&header))->item;
        if (!(item.mask & TVIF_TEXT) || item.cchTextMax <= 0) return 0;
        const Node* const node = TreeItems::NodeOf(item);
        const Text caption(node ? Shorten(node->Caption(), static_cast<size_t>(item.cchTextMax) - 1) : TextView());
        std::copy(caption.begin(), caption.end(), item.pszText);
        item.pszText[caption.size()] = 0;
        return 0;
    }
    case TVN_ITEMEXPANDEDW:
        ItemExpanded(reinterpret_cast<const NMTREEVIEWW&>(header));
        return 0;
    case TVN_SELCHANGEDW:
    case SelectionChangedAnsi:
        SelectionChanged(reinterpret_cast<const NMTREEVIEWW&>(header));
        return 0;
    case TVN_SINGLEEXPAND:
        return SingleExpand(reinterpret_cast<const NMTREEVIEWW&>(header));
    case KeyDownCode:
        KeyDown.Raise(reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey);
        return 0;
    case TVN_BEGINDRAGW:
        MouseMove.Raise(MouseButton::Left, Pointer());
        return 0;
    case NM_CLICK: {
        const Point point = Pointer();
        const bool isOnBox = hasCheckBoxes && (HitTest(point).flags & TVHT_ONITEMSTATEICON);
        Click.Raise(point, IsCtrlDown());
        return isOnBox ? 1 : 0; // the model has toggled it; the tree's own toggle would turn it back
    }
    case NM_DBLCLK: {
        const unsigned removals = items.Removals();
        DblClick.Raise(Pointer(), IsCtrlDown());
        return items.Removals() == removals ? 0 : 1; // the tree would expand or collapse an item that may be deleted
    }
    case NM_RCLICK: // the tree has waited for the button's coming up itself
        MouseUp.Raise(MouseButton::Right, Pointer());
        return 0;
    case BoxPressed:
        Click.Raise(reinterpret_cast<const BoxPress&>(header).point, false);
        return 0;
    case NM_SETFOCUS:
        accessible.OnFocusGained();
        return 0;
    case NM_CUSTOMDRAW:
        return CustomDraw(*reinterpret_cast<NMTVCUSTOMDRAW*>(const_cast<NMHDR*>(&header)));
    default:
        return 0;
    }
}

// Through the parent, which holds what must not be destroyed while events are raised.
void TreeViewWindow::PressButton(Node& node) {
    if (!handle) return;
    NMTREEVIEWW press{};
    press.hdr = {handle, 0, TVN_ITEMEXPANDEDW};
    press.action = node.IsExpanded() ? TVE_COLLAPSE : TVE_EXPAND;
    press.itemNew.lParam = reinterpret_cast<LPARAM>(&node);
    SendMessageW(GetParent(handle), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&press));
}

void TreeViewWindow::PressBox(Node& node) {
    ApplyChanges();
    if (!node.windowItem) return;
    SendMessageW(handle, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(TreeItems::ItemOf(node)));
    const auto row = RowRect(node);
    if (!row) return;
    BoxPress press{{handle, 0, BoxPressed}, {row->left, (row->top + row->bottom) / 2}};
    while (!(HitTest(press.point).flags & TVHT_ONITEMSTATEICON))
        if (++press.point.x >= row->right) return;
    SendMessageW(GetParent(handle), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&press));
}

void TreeViewWindow::ItemExpanded(const NMTREEVIEWW& change) {
    if (items.IsMirroring()) return;
    Node* const node = TreeItems::NodeOf(change.itemNew);
    if (!node) return;
    const bool isExpanded = change.action == TVE_EXPAND;
    node->SetExpanded(isExpanded);
    (isExpanded ? Expanded : Collapsed).Raise(*node);
}

void TreeViewWindow::SelectionChanged(const NMTREEVIEWW& change) {
    if (items.IsMirroring()) return;
    tree.Select(change.itemNew.hItem ? TreeItems::NodeOf(change.itemNew) : nullptr);
}

// The model expands and collapses, so that window and model never differ: the branches that do not hold the new node
// collapse, the new node expands.
LRESULT TreeViewWindow::SingleExpand(const NMTREEVIEWW& change) {
    Node* const newNode = TreeItems::NodeOf(change.itemNew);
    if (!items.IsMirroring() && newNode) {
        Node* const oldNode = change.itemOld.hItem ? items.NodeOf(change.itemOld.hItem) : nullptr;
        for (Node* node = oldNode; node; node = node->Parent())
            if (node->Parent() && node->IsExpanded() && !modTVW::IsInBranch(newNode, node)) node->SetExpanded(false);
        if (newNode->FirstChild()) newNode->SetExpanded(true);
    }
    return TVNRET_SKIPOLD | TVNRET_SKIPNEW;
}

// Without the focus the selected row stays well visible.
LRESULT TreeViewWindow::CustomDraw(NMTVCUSTOMDRAW& draw) const {
    if (GetFocus() == handle) return CDRF_DODEFAULT;
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || !handle) return CDRF_DODEFAULT;
    const auto item = static_cast<WPARAM>(draw.nmcd.dwItemSpec);
    if (SendMessageW(handle, TVM_GETITEMSTATE, item, TVIS_SELECTED) & TVIS_SELECTED) {
        const RowColors colors = ColorsWithoutFocus();
        draw.clrText = colors.text;
        draw.clrTextBk = colors.background;
    }
    return CDRF_DODEFAULT;
}

LRESULT CALLBACK TreeViewWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                           DWORD_PTR reference) {
    auto* const self = reinterpret_cast<TreeViewWindow*>(reference);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, Procedure, id);
        const RevisionCheck before(self->revision);
        const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
        if (before.Exists()) self->OnHandleDestroyed();
        return result;
    }
    const RevisionCheck before(self->revision);
    try {
        self->ApplyUpdatesBefore(message);
        if (const auto answer = self->PreprocessMessage(message, wParam, lParam)) return *answer;
    } catch (...) {
        return 0; // no exception may cross the system's frames; a listener of the host has failed
    }
    if (!before.Exists()) return 0;
    return self->CallSystemProcedure(window, message, wParam, lParam);
}

// While the tree's own procedure runs, only messages that query rows or paint them need the update.
void TreeViewWindow::ApplyUpdatesBefore(UINT message) {
    if (items.IsUpToDate() || message == WM_DESTROY || message == WM_SETREDRAW) return;
    const bool isAboutRows = message == WM_PAINT || (message >= TV_FIRST && message < TV_FIRST + 0x100);
    if (systemDepth == 0 || isAboutRows) ApplyChanges();
}

LRESULT TreeViewWindow::CallSystemProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const RevisionCheck before(revision);
    const bool hasImage = message == WM_PAINT && dragImage && dragImage->IsShown();
    if (hasImage) dragImage->Hide();
    if (systemDepth++ == 0) items.SetIsInSystemProcedure(true);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (!before.Exists()) return result;
    if (--systemDepth == 0) items.SetIsInSystemProcedure(false);
    if (handle) PostprocessMessage(message, lParam);
    if (hasImage && dragImage) dragImage->ShowAgain();
    return result;
}

std::optional<LRESULT> TreeViewWindow::PreprocessMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    // Without a place for the Menu key, and on most systems for Shift+F10; for a right click there is NM_RCLICK.
    const bool isPlaced = GET_X_LPARAM(lParam) != -1 || GET_Y_LPARAM(lParam) != -1;
    const bool isShiftF10 = message == WM_SYSKEYDOWN && wParam == VK_F10 && GetKeyState(VK_SHIFT) < 0;
    if (((message == WM_CONTEXTMENU && !isPlaced) || isShiftF10) && !MenuKey.IsEmpty()) {
        MenuKey.Raise();
        return 0;
    }
    switch (message) {
    case TreeItems::UpdateMessage:
        items.OnPendingUpdate();
        ApplyChanges();
        return 0;
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_LBUTTONDOWN: {
        // Not every system sets the focus before a drag begins, and then another window would get Escape.
        const RevisionCheck before(revision);
        if (GetFocus() != handle) SetFocus(handle);
        if (!before.Exists() || !handle) return 0;
        isPressed = true;
        MouseDown.Raise(MouseButton::Left, PointOf(lParam));
        return {};
    }
    case WM_RBUTTONDOWN: {
        const bool wasDragging = dragImage != nullptr;
        MouseDown.Raise(MouseButton::Right, PointOf(lParam));
        return wasDragging ? std::optional<LRESULT>(0) : std::nullopt;
    }
    case WM_MOUSEMOVE: {
        // Before a drag too: the tree itself may begin one earlier.
        const bool wasDragging = dragImage != nullptr, isHeld = wParam & MK_LBUTTON;
        if (!wasDragging && !(isPressed && isHeld)) return {};
        MouseMove.Raise(isHeld ? MouseButton::Left : MouseButton::None, PointOf(lParam));
        return wasDragging ? std::optional<LRESULT>(0) : std::nullopt;
    }
    case WM_LBUTTONUP: {
        const bool wasDragging = dragImage != nullptr;
        isPressed = false;
        MouseUp.Raise(MouseButton::Left, PointOf(lParam));
        return wasDragging ? std::optional<LRESULT>(0) : std::nullopt;
    }
    case WM_RBUTTONUP: // after a drag that the right button has ended
        MouseUp.Raise(MouseButton::Right, PointOf(lParam));
        return {};
    case WM_CAPTURECHANGED:
        if (dragImage && reinterpret_cast<HWND>(lParam) != handle) DragLost.Raise();
        return {};
    case WM_CHAR:
        if (wParam == VK_SPACE && hasCheckBoxes) return 0; // toggled as a key already
        KeyPress.Raise(static_cast<char16_t>(wParam));
        // The tree would beep at these.
        return wParam == VK_RETURN || wParam == VK_ESCAPE ? std::optional<LRESULT>(0) : std::nullopt;
    case WM_KEYUP:
    case WM_KEYDOWN:
        if (wParam == VK_CONTROL && dragImage) { // the drop target changes
            MouseMove.Raise(MouseButton::Left, Pointer());
            return {};
        }
        if (message == WM_KEYUP || wParam != VK_SPACE || !hasCheckBoxes) return {};
        KeyDown.Raise(VK_SPACE); // and not the tree's own toggle of the selected node, which may be another
        return 0;
    case WM_TIMER:
        if (wParam < FirstTreeTimer || wParam > FirstTreeTimer + static_cast<UINT_PTR>(TreeTimer::Checkstate))
            return {};
        Timer.Raise(static_cast<TreeTimer>(wParam - FirstTreeTimer));
        return 0;
    case WM_DESTROY:
        if (hasCheckBoxes) DeleteBoxes();
        accessible.Unbind();
        items.Unbind();
        return {};
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        InvalidateRect(handle, nullptr, FALSE);
        return {};
    default:
        return {};
    }
}

void TreeViewWindow::PostprocessMessage(UINT message, LPARAM lParam) {
    // The tree may have consumed the button's release itself.
    if (message == WM_LBUTTONDOWN && GetKeyState(VK_LBUTTON) >= 0) isPressed = false;
    if (message == WM_PAINT) {
        DrawInsertMark();
    } else if (hasCheckBoxes && (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK)) {
        // The check state comes from the model, whatever the tree made of the press.
        if (const Node* const node = HitTest(PointOf(lParam)).node) items.ShowCheck(*node);
    }
}

} // namespace dax
