// A control's picture and texts as data that other programs take, from the clipboard or from the control itself.
#pragma once

#include "base/Text.h"
#include "ocx/hosting/Metafile.h"

namespace dax {

// How the control looked when this was made; does not refer to it. `size` in 0.01 mm. Without texts there is none of
// their format.
IDataObject* NewPictureData(Metafile picture, SIZEL size, Text text);

} // namespace dax
