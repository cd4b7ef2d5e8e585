// The four pictures of the status panel, drawn at any size.
#pragma once

#include "controls/win32/GdiSurface.h"
#include "validation/StatusPanel.h"

#include <memory>

namespace dax {

class StatusPictures {
public:
    // Draws shapes at many times the size and averages them, so that edges are smooth on the background colour.
    // The last picture is kept, since a panel paints the same one again and again.
    void Draw(HDC dc, StatusPicture picture, const Rect& place, COLORREF background);

private:
    std::unique_ptr<MemoryBitmap> kept;
    StatusPicture keptPicture = StatusPicture::None;
    COLORREF keptBackground = 0;
};

} // namespace dax
