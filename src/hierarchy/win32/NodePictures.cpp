#include "hierarchy/win32/NodePictures.h"

#include "controls/win32/ShapePen.h"

#include <vector>

namespace dax {

namespace {

constexpr COLORREF Steel = RGB(0x3C, 0x5A, 0x78), LightSteel = RGB(0x9F, 0xB8, 0xD0), Band = RGB(0x6B, 0x8C, 0xAE);
constexpr COLORREF Amber = RGB(0xF2, 0xB1, 0x34), DarkAmber = RGB(0xB8, 0x7A, 0x10), PaleAmber = RGB(0xFB, 0xD7, 0x86);
constexpr COLORREF Paper = RGB(0xFF, 0xFF, 0xFF), Ink = RGB(0x1B, 0x6A, 0xC9), Edge = RGB(0x5A, 0x6A, 0x7A);
constexpr COLORREF Grey = RGB(0xB4, 0xB8, 0xBE), DarkGrey = RGB(0x6A, 0x70, 0x78);

// A cylinder with two bands.
void DrawDatabase(ShapePen& pen) {
    pen.Ellipse({16, 25}, 12, 5, Steel);
    pen.Polygon({{4, 7}, {28, 7}, {28, 25}, {4, 25}}, Steel, 0, Steel);
    pen.Ellipse({16, 19}, 12, 5, Band);
    pen.Polygon({{4, 14}, {28, 14}, {28, 19}, {4, 19}}, Band, 0, Band);
    pen.Ellipse({16, 14}, 12, 5, Steel);
    pen.Polygon({{4, 8}, {28, 8}, {28, 14}, {4, 14}}, Steel, 0, Steel);
    pen.Ellipse({16, 7}, 12, 5, LightSteel);
}

// A folder, slightly open.
void DrawGroup(ShapePen& pen) {
    pen.Polygon({{4, 7}, {13, 7}, {16, 11}, {27, 11}, {27, 26}, {4, 26}}, Amber, 2, DarkAmber);
    pen.Polygon({{8, 15}, {30, 15}, {26, 26}, {4, 26}}, PaleAmber, 2, DarkAmber);
}

// A page with lines and a folded corner.
void DrawLesson(ShapePen& pen) {
    pen.Polygon({{7, 3}, {19, 3}, {26, 10}, {26, 29}, {7, 29}}, Paper, 2, Edge);
    pen.Polygon({{19, 3}, {19, 10}, {26, 10}}, LightSteel, 2, Edge);
    pen.Line({11, 15}, {22, 15}, 2.4, Ink);
    pen.Line({11, 20}, {22, 20}, 2.4, Ink);
    pen.Line({11, 25}, {18, 25}, 2.4, Ink);
}

void DrawOther(ShapePen& pen) {
    pen.Polygon({{6, 6}, {26, 6}, {26, 26}, {6, 26}}, Grey, 4, DarkGrey);
    pen.Circle({16, 16}, 4, Paper);
}

} // namespace

HIMAGELIST CreateNodePictures(int size) {
    const std::vector<ShapeDrawing> drawings{[](ShapePen&) {}, DrawDatabase, DrawGroup, DrawLesson, DrawOther};
    const HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32, static_cast<int>(drawings.size()), 0);
    for (const ShapeDrawing& drawing : drawings) {
        const HBITMAP bitmap = RenderShapesTransparent(size, drawing)->Detach();
        ImageList_Add(list, bitmap, nullptr);
        DeleteObject(bitmap);
    }
    return list;
}

} // namespace dax
