// The commands of a page, as menus show them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace dax::workbench {

// One line of a menu; no number: a line between two groups.
struct MenuEntry {
    int id = 0;
    std::wstring text{}; // followed by a tab and its key
    bool isEnabled = true;
    bool isChecked = false;
};

// Puts the entries into the menu, in the place of what it had.
void FillMenu(HMENU menu, const std::vector<MenuEntry>& entries);

// Shows them as a context menu; the choice goes to `owner` by WM_COMMAND. `at` is a place on the screen; both
// coordinates -1: beside what is selected in the window that has the focus.
void ShowContextMenu(HWND owner, POINT at, const std::vector<MenuEntry>& entries);

// The entry of a tree, or the row of a list, that lies under the place on the screen becomes the selected one, as by a
// left click; a row that is selected already keeps the others.
void SelectAt(HWND window, POINT at);

} // namespace dax::workbench
