// A host's own pictures for the lesson map.
#pragma once

#include "controls/win32/Windows.h"
#include "lessonmap/PictureKeys.h"

#include <commctrl.h>
#include <oaidl.h>

namespace dax {

struct HostPictures {
    HIMAGELIST images = nullptr; // stays the host's; null: none
    PictureKeys keys;            // in the order of the pictures
};

// `imageList` is the handle of an image list, or an object with `hImageList` and `ListImages`, whose items have a
// `Key`. `keys` is an array of texts, or a text in which commas separate them; an object's own keys count when it is
// left out. Throws Error for anything else.
HostPictures ReadPictures(const VARIANT& imageList, const VARIANT& keys);

} // namespace dax
