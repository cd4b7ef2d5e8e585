#include "panels/PanelLayout.h"

#include <algorithm>

namespace dax {

namespace {

// A title shows its ampersands as they are.
constexpr uint32_t RightAligned = DrawTextFlags::Right | DrawTextFlags::EndEllipsis | DrawTextFlags::NoPrefix;

int LineHeight(Surface& surface) {
    Rect place{0, 0, surface.Width(), surface.Height()};
    return surface.DrawText(u"()", place, RightAligned | DrawTextFlags::CalcRect);
}

int GapAbove(const PanelLine& line, int lineHeight) {
    return line.gap + (line.hasHalfLineGap ? lineHeight / 2 + 1 : 0);
}

void SelectFont(Surface& surface, const PanelLine& line) {
    surface.SetFontSize(line.fontSize);
    surface.SetBold(line.isBold);
}

} // namespace

int MeasurePanel(Surface& surface, const PanelLayout& layout) {
    int height = 0;
    for (const PanelLine& line : layout) {
        SelectFont(surface, line);
        const int lineHeight = LineHeight(surface);
        height += GapAbove(line, lineHeight) + lineHeight;
    }
    return height;
}

void PaintPanel(Surface& surface, const PanelLayout& layout) {
    surface.Clear();
    int top = 0;
    for (const PanelLine& line : layout) {
        SelectFont(surface, line);
        const int lineHeight = LineHeight(surface);
        top += GapAbove(line, lineHeight);
        Rect place{0, top, surface.Width(), surface.Height()};
        if (!line.suffix.empty()) {
            surface.DrawText(line.suffix, place, RightAligned);
            place = {0, top, std::max(0, surface.Width() - surface.TextWidth(line.suffix)), surface.Height()};
        }
        surface.DrawText(line.text, place, RightAligned);
        top += lineHeight;
    }
    surface.SetFontSize(0);
    surface.SetBold(false);
}

} // namespace dax
