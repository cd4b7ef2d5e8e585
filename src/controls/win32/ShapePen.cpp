#include "controls/win32/ShapePen.h"

#include <algorithm>
#include <cmath>

namespace dax {

namespace {

constexpr int oversampling = 8;
constexpr double designSize = 32;

uint32_t Average(const uint32_t* firstPixel, int stride) {
    uint32_t sums[3] = {};
    for (int y = 0; y < oversampling; ++y)
        for (int x = 0; x < oversampling; ++x)
            for (int channel = 0; channel < 3; ++channel)
                sums[channel] += firstPixel[y * stride + x] >> (8 * channel) & 0xFF;
    uint32_t pixel = 0;
    constexpr uint32_t samples = oversampling * oversampling;
    for (int channel = 0; channel < 3; ++channel) pixel |= (sums[channel] + samples / 2) / samples << (8 * channel);
    return pixel;
}

} // namespace

ShapePen::ShapePen(HDC context, int pixels) : dc(context), scale(pixels / designSize), saved(SaveDC(context)) {}

ShapePen::~ShapePen() {
    RestoreDC(dc, saved);
    for (const HGDIOBJ object : objects) DeleteObject(object);
}

void ShapePen::Ellipse(PointF centre, double radiusX, double radiusY, COLORREF color) {
    SelectPenAndBrush(color, 0, color);
    ::Ellipse(dc, At(centre.x - radiusX), At(centre.y - radiusY), At(centre.x + radiusX) + 1,
              At(centre.y + radiusY) + 1);
}

void ShapePen::Polygon(std::initializer_list<PointF> corners, COLORREF fill, double borderWidth, COLORREF border) {
    SelectPenAndBrush(fill, borderWidth, border);
    std::vector<POINT> points;
    for (const PointF corner : corners) points.push_back({At(corner.x), At(corner.y)});
    ::Polygon(dc, points.data(), static_cast<int>(points.size()));
}

void ShapePen::Line(PointF from, PointF to, double width, COLORREF color) {
    SelectPenAndBrush(color, width, color);
    MoveToEx(dc, At(from.x), At(from.y), nullptr);
    LineTo(dc, At(to.x), At(to.y));
}

int ShapePen::At(double distance) const { return static_cast<int>(std::lround(distance * scale)); }

void ShapePen::SelectPenAndBrush(COLORREF fill, double lineWidth, COLORREF line) {
    const LOGBRUSH ink{BS_SOLID, line, 0};
    const int width = At(lineWidth);
    constexpr DWORD style = PS_GEOMETRIC; // solid, with round ends and joins: their values are zero
    const HPEN pen =
        width > 0 ? ExtCreatePen(style, static_cast<DWORD>(width), &ink, 0, nullptr) : CreatePen(PS_NULL, 0, 0);
    const HBRUSH brush = CreateSolidBrush(fill);
    SelectObject(dc, pen);
    SelectObject(dc, brush);
    objects.push_back(pen);
    objects.push_back(brush);
}

std::unique_ptr<MemoryBitmap> RenderShapes(int width, int height, COLORREF background, const ShapeDrawing& drawing) {
    const MemoryBitmap large(width * oversampling, height * oversampling);
    FillWith(large.Context(), {0, 0, large.Width(), large.Height()}, background);
    {
        ShapePen pen(large.Context(), large.Width());
        drawing(pen);
    }
    auto small = std::make_unique<MemoryBitmap>(width, height);
    const uint32_t* from = large.Pixels();
    uint32_t* to = small->Pixels();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            to[y * width + x] = Average(from + (y * large.Width() + x) * oversampling, large.Width());
    return small;
}

// What differs between a black and a white background is what shines through.
std::unique_ptr<MemoryBitmap> RenderShapesTransparent(int size, const ShapeDrawing& drawing) {
    auto onBlack = RenderShapes(size, size, RGB(0, 0, 0), drawing);
    const auto onWhite = RenderShapes(size, size, RGB(255, 255, 255), drawing);
    uint32_t* pixel = onBlack->Pixels();
    const uint32_t* white = onWhite->Pixels();
    for (int index = 0; index < size * size; ++index) {
        const uint32_t through = std::min<uint32_t>(0xFF, (white[index] & 0xFF) - (pixel[index] & 0xFF));
        pixel[index] = (pixel[index] & 0xFFFFFF) | (0xFF - through) << 24;
    }
    return onBlack;
}

} // namespace dax
