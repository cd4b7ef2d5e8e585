#include "validation/StatusPanel.h"

#include <algorithm>

namespace dax {

namespace {

constexpr uint32_t titleFlags = DrawTextFlags::NoPrefix | DrawTextFlags::PathEllipsis | DrawTextFlags::WordEllipsis;
constexpr uint32_t paragraphFlags = titleFlags | DrawTextFlags::WordBreak;

class Column {
public:
    Column(Surface& paintOn, const StatusPanelMetrics& distances, int top)
        : surface(paintOn), metrics(distances), y(top), lineHeight(LineHeight(paintOn)),
          left(distances.margin + distances.pictureWidth + distances.columnGap),
          right(std::max(paintOn.Width(), left)) {}

    static int LineHeight(Surface& on) {
        Rect rect;
        on.SetBold(false);
        return on.DrawText(u"()", rect, DrawTextFlags::SingleLine | DrawTextFlags::CalcRect);
    }

    void DrawTitle(const Text& text) {
        if (text.empty()) return;
        Rect rect = Rest();
        surface.SetBold(true);
        y += surface.DrawText(text, rect, titleFlags) + metrics.titleGap;
        surface.SetBold(false);
    }

    void DrawParagraph(const Text& text) {
        if (text.empty()) return;
        Rect measured = Rest();
        const int height = surface.DrawText(text, measured, paragraphFlags | DrawTextFlags::CalcRect);
        Rect rect = Rest();
        surface.DrawText(text, rect, paragraphFlags);
        y += height + 2 * lineHeight - metrics.titleGap;
    }

private:
    Rect Rest() const { return {left, y, right, std::max(surface.Height(), y)}; }

    Surface& surface;
    const StatusPanelMetrics& metrics;
    int y;
    const int lineHeight, left, right;
};

} // namespace

StatusPanelMetrics StatusPanelMetrics::ForDpi(int dpi) {
    StatusPanelMetrics metrics;
    for (int StatusPanelMetrics::*distance :
         {&StatusPanelMetrics::pictureWidth, &StatusPanelMetrics::pictureHeight, &StatusPanelMetrics::margin,
          &StatusPanelMetrics::columnGap, &StatusPanelMetrics::titleGap})
        metrics.*distance = (metrics.*distance * dpi + 48) / 96;
    return metrics;
}

void PaintStatusPanel(Surface& surface, const StatusDisplay& display, const StatusPanelMetrics& metrics) {
    surface.Clear();
    int y = metrics.margin;
    // A lone message is centred on the picture.
    if (display.statusTitle.empty()) y += (metrics.pictureHeight - Column::LineHeight(surface)) / 2;
    Column column(surface, metrics, y);
    column.DrawTitle(display.statusTitle);
    column.DrawParagraph(display.statusMessage);
    column.DrawTitle(display.detailTitle);
    column.DrawParagraph(display.detailText);
}

} // namespace dax
