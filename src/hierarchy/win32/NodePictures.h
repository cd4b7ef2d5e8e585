// The pictures of the hierarchy's nodes: 1 database, 2 group, 3 lesson, 4 anything else (0 is empty).
#pragma once

#include "controls/win32/Windows.h"

#include <commctrl.h>

namespace dax {

// The caller destroys the list. `size` in pixels: 16 at 96 dpi.
HIMAGELIST CreateNodePictures(int size);

} // namespace dax
