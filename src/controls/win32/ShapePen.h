// Small pictures drawn as shapes, with smooth edges at every size.
#pragma once

#include "controls/win32/GdiSurface.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

namespace dax {

// Filled shapes on a square of 32 by 32, whatever the number of pixels is.
class ShapePen {
public:
    struct PointF {
        double x, y;
    };

    ShapePen(HDC context, int pixels);
    ~ShapePen();
    ShapePen(const ShapePen&) = delete;
    ShapePen& operator=(const ShapePen&) = delete;

    void Circle(PointF centre, double radius, COLORREF color) { Ellipse(centre, radius, radius, color); }
    void Ellipse(PointF centre, double radiusX, double radiusY, COLORREF color);
    // A border of the width makes the corners round.
    void Polygon(std::initializer_list<PointF> corners, COLORREF fill, double borderWidth, COLORREF border);
    void Line(PointF from, PointF to, double width, COLORREF color);

private:
    int At(double distance) const;
    void SelectPenAndBrush(COLORREF fill, double lineWidth, COLORREF line);

    HDC dc;
    double scale;
    int saved;
    std::vector<HGDIOBJ> objects;
};

using ShapeDrawing = std::function<void(ShapePen&)>;

// Draws at many times the size and averages, so that edges are smooth on the background colour.
std::unique_ptr<MemoryBitmap> RenderShapes(int width, int height, COLORREF background, const ShapeDrawing& drawing);

// The same with a transparent background (premultiplied alpha), as an image list takes it.
std::unique_ptr<MemoryBitmap> RenderShapesTransparent(int size, const ShapeDrawing& drawing);

} // namespace dax
