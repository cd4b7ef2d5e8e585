// Right-aligned lines of text: what both information panels are painted with. The layout is computed before the
// drawing, so that it can be measured before it is chosen.
#pragma once

#include "controls/Surface.h"

#include <vector>

namespace dax {

struct PanelLine {
    Text text{};
    Text suffix{};       // at the right end, never cut before `text` is
    double fontSize = 8; // points
    bool isBold = false;
    bool hasHalfLineGap = false; // above it: half the height of a line and one pixel
    int gap = 0;                 // above it, pixels
    bool operator==(const PanelLine&) const = default;
};

using PanelLayout = std::vector<PanelLine>;

// The height that the lines need.
int MeasurePanel(Surface& surface, const PanelLayout& layout);

// Clears the surface and draws each line flush right, with an ellipsis at its end when it does not fit.
void PaintPanel(Surface& surface, const PanelLayout& layout);

} // namespace dax
