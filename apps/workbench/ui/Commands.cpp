#include "ui/Commands.h"

#include <commctrl.h>

namespace dax::workbench {

namespace {

bool IsOfClass(HWND window, const wchar_t* name) {
    wchar_t found[64] = L"";
    GetClassNameW(window, found, 64);
    return CompareStringOrdinal(found, -1, name, -1, TRUE) == CSTR_EQUAL;
}

// Below what is selected in the window that has the focus, or in its corner.
POINT PlaceForKeys(HWND owner) {
    HWND window = GetFocus();
    if (!window || !IsChild(owner, window)) window = owner;
    RECT whole, place{};
    GetClientRect(window, &whole);
    bool isKnown = false;
    if (IsOfClass(window, WC_TREEVIEWW)) {
        const HTREEITEM item = TreeView_GetSelection(window);
        isKnown = item && TreeView_GetItemRect(window, item, &place, TRUE);
    } else if (IsOfClass(window, WC_LISTVIEWW)) {
        const int row = ListView_GetNextItem(window, -1, LVNI_SELECTED);
        isKnown = row >= 0 && ListView_GetItemRect(window, row, &place, LVIR_LABEL);
    }
    POINT at{isKnown ? (place.left + place.right) / 2 : whole.left, isKnown ? place.bottom : whole.top};
    if (!PtInRect(&whole, at)) at = {whole.left, whole.top};
    ClientToScreen(window, &at);
    return at;
}

} // namespace

void FillMenu(HMENU menu, const std::vector<MenuEntry>& entries) {
    while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
    }
    for (const MenuEntry& entry : entries) {
        if (entry.id == 0) {
            AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
            continue;
        }
        const UINT flags = MF_STRING | (entry.isEnabled ? 0u : MF_GRAYED) | (entry.isChecked ? MF_CHECKED : 0u);
        AppendMenuW(menu, flags, static_cast<UINT_PTR>(entry.id), entry.text.c_str());
    }
}

void ShowContextMenu(HWND owner, POINT at, const std::vector<MenuEntry>& entries) {
    if (at.x == -1 && at.y == -1) at = PlaceForKeys(owner);
    const HMENU menu = CreatePopupMenu();
    FillMenu(menu, entries);
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, at.x, at.y, 0, owner, nullptr);
    DestroyMenu(menu);
}

void SelectAt(HWND window, POINT at) {
    ScreenToClient(window, &at);
    if (IsOfClass(window, WC_TREEVIEWW)) {
        TVHITTESTINFO hit{};
        hit.pt = at;
        if (const HTREEITEM item = TreeView_HitTest(window, &hit);
            item && (hit.flags & (TVHT_ONITEM | TVHT_ONITEMRIGHT)))
            TreeView_SelectItem(window, item);
    } else if (IsOfClass(window, WC_LISTVIEWW)) {
        LVHITTESTINFO hit{};
        hit.pt = at;
        const int row = ListView_HitTest(window, &hit);
        if (row < 0 || ListView_GetItemState(window, row, LVIS_SELECTED)) return;
        ListView_SetItemState(window, -1, 0, LVIS_SELECTED);
        ListView_SetItemState(window, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
}

} // namespace dax::workbench
