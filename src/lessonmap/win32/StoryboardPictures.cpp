#include "lessonmap/win32/StoryboardPictures.h"

#include "controls/win32/ShapePen.h"
#include "lessonmap/PictureKeys.h"

#include <iterator>
#include <utility>

namespace dax {

namespace {

constexpr COLORREF Paper = RGB(0xFF, 0xFF, 0xFF), Edge = RGB(0x5A, 0x6A, 0x7A), Pale = RGB(0xD8, 0xE0, 0xE8);
constexpr COLORREF Ink = RGB(0x1B, 0x6A, 0xC9), DarkInk = RGB(0x12, 0x4B, 0x91), Sky = RGB(0xBF, 0xDD, 0xF6);
constexpr COLORREF Leaf = RGB(0x3E, 0x96, 0x51), DarkLeaf = RGB(0x28, 0x6B, 0x38), PaleLeaf = RGB(0xC4, 0xE3, 0xC4);
constexpr COLORREF Amber = RGB(0xF2, 0xB1, 0x34), DarkAmber = RGB(0xB0, 0x72, 0x0C), PaleAmber = RGB(0xFD, 0xE4, 0xA8);
constexpr COLORREF Violet = RGB(0x7B, 0x52, 0xAB), DarkViolet = RGB(0x55, 0x34, 0x7D), Coal = RGB(0x36, 0x3F, 0x4A);
constexpr COLORREF Brick = RGB(0xC9, 0x4F, 0x3D), PaleBrick = RGB(0xF3, 0xC9, 0xC1), Grey = RGB(0x8A, 0x93, 0x9D);

// A sheet of paper on which the page types are drawn.
void DrawSheet(ShapePen& pen, COLORREF border) { pen.Polygon({{6, 3}, {26, 3}, {26, 29}, {6, 29}}, Paper, 2, border); }

void DrawQuestionMark(ShapePen& pen, ShapePen::PointF at, double size, COLORREF color) {
    const auto place = [&](double x, double y) { return ShapePen::PointF{at.x + x * size, at.y + y * size}; };
    const ShapePen::PointF curve[] = {place(-4, -4), place(-3, -7), place(0, -8),  place(3, -7),
                                      place(4, -4),  place(2, -1),  place(0, 0.5), place(0, 3)};
    for (size_t i = 0; i + 1 < std::size(curve); ++i) pen.Line(curve[i], curve[i + 1], 3 * size, color);
    pen.Circle(place(0, 7.5), 1.9 * size, color);
}

// A map folded twice.
void DrawMap(ShapePen& pen) {
    pen.Polygon({{3, 7}, {11, 3}, {11, 25}, {3, 29}}, PaleLeaf, 2, DarkLeaf);
    pen.Polygon({{11, 3}, {21, 7}, {21, 29}, {11, 25}}, Leaf, 2, DarkLeaf);
    pen.Polygon({{21, 7}, {29, 3}, {29, 25}, {21, 29}}, PaleLeaf, 2, DarkLeaf);
}

void DrawUndefined(ShapePen& pen) {
    DrawSheet(pen, Grey);
    DrawQuestionMark(pen, {16, 16}, 1, Grey);
}

// A sheet with a neutral mark.
void DrawCustom(ShapePen& pen) {
    DrawSheet(pen, Edge);
    pen.Polygon({{16, 8}, {23, 16}, {16, 24}, {9, 16}}, Violet, 2, DarkViolet);
}

void DrawTitle(ShapePen& pen) {
    pen.Polygon({{3, 5}, {29, 5}, {29, 27}, {3, 27}}, Ink, 2, DarkInk);
    pen.Line({9, 11}, {23, 11}, 3.6, Paper);
    pen.Line({16, 11}, {16, 22}, 3.6, Paper);
}

void DrawText(ShapePen& pen) {
    DrawSheet(pen, Edge);
    for (const double y : {9.0, 14.0, 19.0}) pen.Line({11, y}, {21, y}, 2.2, Ink);
    pen.Line({11, 24}, {17, 24}, 2.2, Ink);
}

// Sun and mountains.
void DrawPicture(ShapePen& pen) {
    pen.Polygon({{3, 5}, {29, 5}, {29, 27}, {3, 27}}, Sky, 0, Sky);
    pen.Circle({22, 11}, 3.4, Amber);
    pen.Polygon({{3, 27}, {12, 12}, {21, 27}}, Leaf, 0, Leaf);
    pen.Polygon({{15, 27}, {22, 18}, {29, 27}}, DarkLeaf, 0, DarkLeaf);
    for (const auto& [from, to] : {std::pair<ShapePen::PointF, ShapePen::PointF>{{3, 5}, {29, 5}},
                                   {{29, 5}, {29, 27}},
                                   {{29, 27}, {3, 27}},
                                   {{3, 27}, {3, 5}}})
        pen.Line(from, to, 2, Edge);
}

void DrawVideo(ShapePen& pen) {
    pen.Polygon({{3, 6}, {29, 6}, {29, 26}, {3, 26}}, Coal, 2, Coal);
    pen.Polygon({{12, 10}, {23, 16}, {12, 22}}, Paper, 1, Paper);
}

// A loudspeaker.
void DrawAudio(ShapePen& pen) {
    pen.Polygon({{3, 12}, {8, 12}, {16, 5}, {16, 27}, {8, 20}, {3, 20}}, Ink, 2, DarkInk);
    pen.Line({20, 12}, {22, 16}, 2.6, Ink);
    pen.Line({22, 16}, {20, 20}, 2.6, Ink);
    pen.Line({24, 8}, {28, 16}, 2.6, Ink);
    pen.Line({28, 16}, {24, 24}, 2.6, Ink);
}

// A ball that flies.
void DrawAnimation(ShapePen& pen) {
    pen.Circle({7, 24}, 4, PaleBrick);
    pen.Circle({13, 16}, 5, RGB(0xE3, 0x8D, 0x7F));
    pen.Circle({22, 11}, 8, Brick);
}

void DrawQuestion(ShapePen& pen) {
    pen.Circle({16, 16}, 14, Ink);
    DrawQuestionMark(pen, {16, 15.5}, 1.1, Paper);
}

// A pencil.
void DrawExercise(ShapePen& pen) {
    pen.Polygon({{22, 3}, {29, 10}, {12, 27}, {5, 20}}, Amber, 2, DarkAmber);
    pen.Polygon({{5, 20}, {12, 27}, {3, 29}}, PaleAmber, 2, DarkAmber);
    pen.Polygon({{22, 3}, {29, 10}, {25, 14}, {18, 7}}, Brick, 2, DarkAmber);
}

// A screen with a pointer.
void DrawSimulation(ShapePen& pen) {
    pen.Polygon({{3, 5}, {29, 5}, {29, 23}, {3, 23}}, Sky, 2.4, Coal);
    pen.Line({10, 28}, {22, 28}, 2.6, Coal);
    pen.Line({16, 23}, {16, 28}, 2.6, Coal);
    pen.Polygon({{12, 8}, {21, 15}, {16, 15.5}, {12.5, 19}}, Paper, 1.6, Coal);
}

// A sheet with a tick.
void DrawTest(ShapePen& pen) {
    DrawSheet(pen, DarkLeaf);
    pen.Line({11, 16}, {15, 21}, 3.6, Leaf);
    pen.Line({15, 21}, {22, 10}, 3.6, Leaf);
}

// A note with points.
void DrawSummary(ShapePen& pen) {
    pen.Polygon({{4, 4}, {28, 4}, {28, 28}, {4, 28}}, PaleAmber, 2, DarkAmber);
    for (const double y : {10.0, 16.0, 22.0}) {
        pen.Circle({9.5, y}, 2, DarkAmber);
        pen.Line({14, y}, {23, y}, 2.4, DarkAmber);
    }
}

void DrawMenu(ShapePen& pen) {
    pen.Polygon({{3, 4}, {29, 4}, {29, 10}, {3, 10}}, Edge, 2, Edge);
    pen.Polygon({{3, 13}, {29, 13}, {29, 19}, {3, 19}}, Pale, 2, Edge);
    pen.Polygon({{3, 22}, {29, 22}, {29, 28}, {3, 28}}, Pale, 2, Edge);
}

void DrawBox(ShapePen& pen) { pen.Polygon({{5, 5}, {27, 5}, {27, 27}, {5, 27}}, Paper, 2, Edge); }

void DrawCheckedBox(ShapePen& pen) {
    pen.Polygon({{5, 5}, {27, 5}, {27, 27}, {5, 27}}, Ink, 2, DarkInk);
    pen.Line({10, 16}, {14.5, 21}, 3.6, Paper);
    pen.Line({14.5, 21}, {22, 11}, 3.6, Paper);
}

void Append(HIMAGELIST list, int size, const ShapeDrawing& drawing) {
    const HBITMAP bitmap = RenderShapesTransparent(size, drawing)->Detach();
    ImageList_Add(list, bitmap, nullptr);
    DeleteObject(bitmap);
}

void DrawNothing(ShapePen&) {}

} // namespace

HIMAGELIST CreateStoryboardPictures(int size) {
    static constexpr std::pair<TextView, void (*)(ShapePen&)> drawings[] = {
        {PictureKeys::Root, DrawMap},
        {PictureKeys::Undefined, DrawUndefined},
        {PictureKeys::Custom, DrawCustom},
        {u"title", DrawTitle},
        {u"text", DrawText},
        {u"picture", DrawPicture},
        {u"video", DrawVideo},
        {u"audio", DrawAudio},
        {u"animation", DrawAnimation},
        {u"question", DrawQuestion},
        {u"exercise", DrawExercise},
        {u"simulation", DrawSimulation},
        {u"test", DrawTest},
        {u"summary", DrawSummary},
        {u"menu", DrawMenu},
    };
    const PictureKeys keys;
    const HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32, static_cast<int>(keys.Keys().size()) + 1, 0);
    Append(list, size, DrawNothing);
    for (const Text& key : keys.Keys())
        for (const auto& [name, draw] : drawings)
            if (name == key) Append(list, size, draw);
    return list;
}

HIMAGELIST CopyPictures(HIMAGELIST images) {
    int width = 0, height = 0;
    const int count = ImageList_GetImageCount(images);
    if (!ImageList_GetIconSize(images, &width, &height) || width <= 0 || height <= 0) return nullptr;
    const HIMAGELIST list = ImageList_Create(width, height, ILC_COLOR32 | ILC_MASK, count + 1, 0);
    if (!list) return nullptr;
    // The first picture, hidden by its mask, is for items without one.
    ImageList_SetImageCount(list, 1);
    for (int index = 0; index < count; ++index) {
        const HICON icon = ImageList_GetIcon(images, index, ILD_TRANSPARENT);
        ImageList_ReplaceIcon(list, -1, icon);
        DestroyIcon(icon);
    }
    return list;
}

HIMAGELIST CreateCheckPictures(int size) {
    const HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32, 3, 0);
    for (const ShapeDrawing& drawing : {ShapeDrawing(DrawNothing), ShapeDrawing(DrawBox), ShapeDrawing(DrawCheckedBox)})
        Append(list, size, drawing);
    return list;
}

} // namespace dax
