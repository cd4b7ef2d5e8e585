#include "validation/win32/StatusPictures.h"

#include <cmath>
#include <initializer_list>
#include <vector>

namespace dax {

namespace {

constexpr int oversampling = 8;
constexpr double designSize = 32; // the shapes below are given on a square of this size

constexpr COLORREF blue = RGB(0x1B, 0x6A, 0xC9), white = RGB(255, 255, 255);
constexpr COLORREF amber = RGB(0xF5, 0xA6, 0x00), ink = RGB(0x33, 0x2A, 0x00);
constexpr COLORREF red = RGB(0xCC, 0x2B, 0x2B);
constexpr COLORREF slate = RGB(0x4A, 0x5A, 0x6A), glass = RGB(0xE6, 0xEE, 0xF5);

struct Spot {
    double x, y;
};

// Filled shapes in design coordinates.
class Pen {
public:
    Pen(HDC context, int pixels) : dc(context), scale(pixels / designSize), saved(SaveDC(context)) {}
    ~Pen() {
        RestoreDC(dc, saved);
        for (const HGDIOBJ object : objects) DeleteObject(object);
    }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

    void Disc(Spot centre, double radius, COLORREF color) {
        Choose(color, 0, color);
        Ellipse(dc, At(centre.x - radius), At(centre.y - radius), At(centre.x + radius) + 1, At(centre.y + radius) + 1);
    }

    // A border of the width makes the corners round.
    void Shape(std::initializer_list<Spot> corners, COLORREF fill, double borderWidth, COLORREF border) {
        Choose(fill, borderWidth, border);
        std::vector<POINT> points;
        for (const Spot corner : corners) points.push_back({At(corner.x), At(corner.y)});
        Polygon(dc, points.data(), static_cast<int>(points.size()));
    }

    void Line(Spot from, Spot to, double width, COLORREF color) {
        Choose(color, width, color);
        MoveToEx(dc, At(from.x), At(from.y), nullptr);
        LineTo(dc, At(to.x), At(to.y));
    }

private:
    int At(double distance) const { return static_cast<int>(std::lround(distance * scale)); }

    void Choose(COLORREF fill, double lineWidth, COLORREF line) {
        const LOGBRUSH ink{BS_SOLID, line, 0};
        const int width = At(lineWidth);
        const HPEN pen = width > 0 ? ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                                  static_cast<DWORD>(width), &ink, 0, nullptr)
                                   : CreatePen(PS_NULL, 0, 0);
        const HBRUSH brush = CreateSolidBrush(fill);
        SelectObject(dc, pen);
        SelectObject(dc, brush);
        objects.push_back(pen);
        objects.push_back(brush);
    }

    HDC dc;
    double scale;
    int saved;
    std::vector<HGDIOBJ> objects;
};

void DrawInformation(Pen& pen) {
    pen.Disc({16, 16}, 15, blue);
    pen.Disc({16, 9.2}, 2.3, white);
    pen.Line({16, 15}, {16, 23.2}, 4, white);
}

void DrawExclamation(Pen& pen) {
    pen.Shape({{16, 4}, {28.6, 27}, {3.4, 27}}, amber, 5, amber);
    pen.Shape({{14.9, 11.2}, {17.1, 11.2}, {16.5, 19}, {15.5, 19}}, ink, 2, ink);
    pen.Disc({16, 24.2}, 2.1, ink);
}

void DrawCritical(Pen& pen) {
    pen.Disc({16, 16}, 15, red);
    pen.Line({10.8, 10.8}, {21.2, 21.2}, 4, white);
    pen.Line({21.2, 10.8}, {10.8, 21.2}, 4, white);
}

// An hourglass.
void DrawBusy(Pen& pen) {
    pen.Shape({{8.5, 4},
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
    pen.Shape({{11.3, 9.6}, {20.7, 9.6}, {16, 15.2}}, amber, 0.5, amber);
    pen.Shape({{16, 20.4}, {21, 25.6}, {11, 25.6}}, amber, 0.5, amber);
    pen.Line({16, 14}, {16, 21}, 1, amber);
    pen.Line({6.5, 3.5}, {25.5, 3.5}, 3.6, slate);
    pen.Line({6.5, 28.5}, {25.5, 28.5}, 3.6, slate);
}

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

std::unique_ptr<MemoryBitmap> Render(StatusPicture picture, int width, int height, COLORREF background) {
    const MemoryBitmap large(width * oversampling, height * oversampling);
    FillWith(large.Context(), {0, 0, large.Width(), large.Height()}, background);
    {
        Pen pen(large.Context(), large.Width());
        if (picture == StatusPicture::Information) DrawInformation(pen);
        if (picture == StatusPicture::Exclamation) DrawExclamation(pen);
        if (picture == StatusPicture::Critical) DrawCritical(pen);
        if (picture == StatusPicture::Busy) DrawBusy(pen);
    }
    auto small = std::make_unique<MemoryBitmap>(width, height);
    const uint32_t* from = large.Pixels();
    uint32_t* to = small->Pixels();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            to[y * width + x] = Average(from + (y * large.Width() + x) * oversampling, large.Width());
    return small;
}

} // namespace

void StatusPictures::Draw(HDC dc, StatusPicture picture, const Rect& place, COLORREF background) {
    if (picture == StatusPicture::None || place.Width() <= 0 || place.Height() <= 0) return;
    if (!kept || keptPicture != picture || keptBackground != background || kept->Width() != place.Width() ||
        kept->Height() != place.Height()) {
        kept = Render(picture, place.Width(), place.Height(), background);
        keptPicture = picture;
        keptBackground = background;
    }
    BitBlt(dc, place.left, place.top, place.Width(), place.Height(), kept->Context(), 0, 0, SRCCOPY);
}

} // namespace dax
