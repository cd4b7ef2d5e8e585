// The pictures of the toolbars.
#pragma once

#include "controls/win32/Windows.h" // first: it frees names that the system takes as macros

#include <commctrl.h>

namespace dax::workbench {

// One picture for each Icon, in their order. The caller destroys the list.
HIMAGELIST CreateToolbarIcons(int size, bool isEnabled);

} // namespace dax::workbench
