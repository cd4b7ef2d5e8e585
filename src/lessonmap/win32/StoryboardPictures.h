// The pictures of the lesson map: page types, and the boxes to check.
#pragma once

#include "controls/win32/Windows.h"

#include <commctrl.h>

namespace dax {

// The pictures of PictureKeys' own keys, numbered as those are from 1; 0 is empty. The caller destroys the list. `size`
// in pixels: 16 at 96 dpi.
HIMAGELIST CreateStoryboardPictures(int size);

// A host's pictures, numbered from 1 in their order; 0 is empty. A copy: the host's list may go. Null when that is no
// image list.
HIMAGELIST CopyPictures(HIMAGELIST images);

// 0 nothing, 1 an empty box, 2 a checked one: the states of a tree's items. The caller destroys the list.
HIMAGELIST CreateCheckPictures(int size);

} // namespace dax
