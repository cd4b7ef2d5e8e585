// A host's ambient properties for a control. Colours and font default to the system's.
#pragma once

#include "base/Text.h"

#include <cstdint>

namespace dax {

struct Ambient {
    bool userMode = true; // false: the host is being designed
    Text displayName;     // the control's name on its form
    Text fontName = u"Tahoma";
    double fontSize = 8.25; // points
    bool isBold = false, isItalic = false;
    uint32_t foreColor = 0x000000; // 0x00BBGGRR
    uint32_t backColor = 0xFFFFFF;
    int dpi = 96;
};

} // namespace dax
