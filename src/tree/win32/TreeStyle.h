// Styles of a tree view's window.
#pragma once

#include "controls/win32/Windows.h"

namespace dax {

struct RowColors {
    COLORREF text, background;
};

// Of the selected row in a tree that does not have the focus.
RowColors ColorsWithoutFocus();

} // namespace dax

namespace dax::modGeneric {

// Whether selecting an item expands it and collapses the one selected before.
void SetTreeSingleExpandStyle(HWND tree, bool on);

} // namespace dax::modGeneric
