// The status panel of the validator: a picture at the top left and up to four paragraphs to its right.
#pragma once

#include "controls/Surface.h"

namespace dax {

enum class StatusPicture { None, Information, Exclamation, Critical, Busy };

struct StatusDisplay {
    Text statusTitle, statusMessage, detailTitle, detailText;
    StatusPicture picture = StatusPicture::None;
    bool operator==(const StatusDisplay&) const = default;
};

// Distances in pixels, at 96 dpi as given here.
struct StatusPanelMetrics {
    int pictureWidth = 32, pictureHeight = 32;
    int margin = 2;    // of the picture, from the top and the left
    int columnGap = 8; // between the picture and the texts
    int titleGap = 4;  // below a title; above the next paragraph two lines less this

    static StatusPanelMetrics ForDpi(int dpi);
    Rect PicturePlace() const { return {margin, margin, margin + pictureWidth, margin + pictureHeight}; }
};

// Clears the surface and paints the texts; the picture is the caller's. What does not fit is cut at the bottom.
void PaintStatusPanel(Surface& surface, const StatusDisplay& display, const StatusPanelMetrics& metrics);

} // namespace dax
