#include "validation/win32/StatusPictures.h"

#include "controls/win32/ShapePen.h"

namespace dax {

namespace {

constexpr COLORREF blue = RGB(0x1B, 0x6A, 0xC9), white = RGB(255, 255, 255);
constexpr COLORREF amber = RGB(0xF5, 0xA6, 0x00), ink = RGB(0x33, 0x2A, 0x00);
constexpr COLORREF red = RGB(0xCC, 0x2B, 0x2B);
constexpr COLORREF slate = RGB(0x4A, 0x5A, 0x6A), glass = RGB(0xE6, 0xEE, 0xF5);

void DrawInformation(ShapePen& pen) {
    pen.Circle({16, 16}, 15, blue);
    pen.Circle({16, 9.2}, 2.3, white);
    pen.Line({16, 15}, {16, 23.2}, 4, white);
}

void DrawExclamation(ShapePen& pen) {
    pen.Polygon({{16, 4}, {28.6, 27}, {3.4, 27}}, amber, 5, amber);
    pen.Polygon({{14.9, 11.2}, {17.1, 11.2}, {16.5, 19}, {15.5, 19}}, ink, 2, ink);
    pen.Circle({16, 24.2}, 2.1, ink);
}

void DrawCritical(ShapePen& pen) {
    pen.Circle({16, 16}, 15, red);
    pen.Line({10.8, 10.8}, {21.2, 21.2}, 4, white);
    pen.Line({21.2, 10.8}, {10.8, 21.2}, 4, white);
}

// An hourglass.
void DrawBusy(ShapePen& pen) {
    pen.Polygon({{8.5, 4},
                 {23.5, 4},
                 {23.5, 8.5},
                 {17.2, 16},
                 {23.5, 23.5},
                 {23.5, 28},
                 {8.5, 28},
                 {8.5, 23.5},
                 {14.8, 16},
                 {8.5, 8.5}},
                glass, 2, slate);
    pen.Polygon({{11.3, 9.6}, {20.7, 9.6}, {16, 15.2}}, amber, 0.5, amber);
    pen.Polygon({{16, 20.4}, {21, 25.6}, {11, 25.6}}, amber, 0.5, amber);
    pen.Line({16, 14}, {16, 21}, 1, amber);
    pen.Line({6.5, 3.5}, {25.5, 3.5}, 3.6, slate);
    pen.Line({6.5, 28.5}, {25.5, 28.5}, 3.6, slate);
}

void DrawShapes(StatusPicture picture, ShapePen& pen) {
    if (picture == StatusPicture::Information) DrawInformation(pen);
    if (picture == StatusPicture::Exclamation) DrawExclamation(pen);
    if (picture == StatusPicture::Critical) DrawCritical(pen);
    if (picture == StatusPicture::Busy) DrawBusy(pen);
}

std::unique_ptr<MemoryBitmap> Render(StatusPicture picture, int width, int height, COLORREF background) {
    return RenderShapes(width, height, background, [picture](ShapePen& pen) { DrawShapes(picture, pen); });
}

} // namespace

void StatusPictures::Draw(HDC dc, StatusPicture picture, const Rect& place, COLORREF background) {
    if (picture == StatusPicture::None || place.Width() <= 0 || place.Height() <= 0) return;
    if (!IsRasterDevice(dc)) {
        POINT former{};
        OffsetWindowOrgEx(dc, -place.left, -place.top, &former);
        {
            ShapePen pen(dc, place.Width());
            DrawShapes(picture, pen);
        }
        SetWindowOrgEx(dc, former.x, former.y, nullptr);
        return;
    }
    if (!kept || keptPicture != picture || keptBackground != background || kept->Width() != place.Width() ||
        kept->Height() != place.Height()) {
        kept = Render(picture, place.Width(), place.Height(), background);
        keptPicture = picture;
        keptBackground = background;
    }
    BitBlt(dc, place.left, place.top, place.Width(), place.Height(), kept->Context(), 0, 0, SRCCOPY);
}

} // namespace dax
