#include "ui/ToolbarIcons.h"

#include "controls/win32/ShapePen.h"
#include "ui/Style.h"
#include "ui/Toolbar.h"

#include <iterator>

namespace dax::workbench {

namespace {

using PointF = ShapePen::PointF;

constexpr COLORREF paper = RGB(0xFF, 0xFF, 0xFF), edge = RGB(0x5A, 0x6A, 0x7A), ink = RGB(0x1B, 0x6A, 0xC9);
constexpr COLORREF blue = RGB(0x2B, 0x6C, 0xB8), darkBlue = RGB(0x1C, 0x4A, 0x80), pale = RGB(0xCF, 0xE0, 0xF2);
constexpr COLORREF amber = RGB(0xF2, 0xB1, 0x34), darkAmber = RGB(0xB8, 0x7A, 0x10);
constexpr COLORREF green = RGB(0x1E, 0x8A, 0x3C), red = RGB(0xC6, 0x28, 0x28);

void DrawPlus(ShapePen& pen, PointF at) {
    pen.Circle(at, 8.5, paper);
    pen.Line({at.x - 6, at.y}, {at.x + 6, at.y}, 4, green);
    pen.Line({at.x, at.y - 6}, {at.x, at.y + 6}, 4, green);
}

void DrawSave(ShapePen& pen) {
    pen.Polygon({{4, 4}, {24, 4}, {28, 8}, {28, 28}, {4, 28}}, blue, 2, darkBlue);
    pen.Polygon({{9, 5}, {22, 5}, {22, 13}, {9, 13}}, paper, 0, paper);
    pen.Polygon({{17, 6}, {20, 6}, {20, 12}, {17, 12}}, darkBlue, 0, darkBlue);
    pen.Polygon({{8, 17}, {24, 17}, {24, 27}, {8, 27}}, pale, 0, pale);
}

void DrawAddGroup(ShapePen& pen) {
    pen.Polygon({{2, 7}, {11, 7}, {14, 11}, {26, 11}, {26, 25}, {2, 25}}, amber, 2, darkAmber);
    DrawPlus(pen, {23, 23});
}

void DrawAddLesson(ShapePen& pen) {
    pen.Polygon({{5, 2}, {17, 2}, {24, 9}, {24, 28}, {5, 28}}, paper, 2, edge);
    pen.Line({9, 13}, {20, 13}, 2.4, ink);
    pen.Line({9, 18}, {16, 18}, 2.4, ink);
    DrawPlus(pen, {23, 23});
}

void DrawRemove(ShapePen& pen) {
    pen.Line({7, 7}, {25, 25}, 5, red);
    pen.Line({25, 7}, {7, 25}, 5, red);
}

// An arrow from the middle of a 32 by 32 square towards a side; `turn` counts quarter turns clockwise from up.
void DrawArrow(ShapePen& pen, int turn, COLORREF colour) {
    const auto at = [turn](double x, double y) -> PointF {
        x -= 16;
        y -= 16;
        for (int i = 0; i < turn; ++i) {
            const double before = x;
            x = -y;
            y = before;
        }
        return {x + 16, y + 16};
    };
    pen.Polygon({at(16, 4), at(27, 16), at(20, 16), at(20, 27), at(12, 27), at(12, 16), at(5, 16)}, colour, 1, colour);
}

// An arc with an arrow's head: to the left for what is taken back, to the right for what is done again.
void DrawTurn(ShapePen& pen, bool isBack) {
    const auto at = [isBack](double x, double y) -> PointF { return {isBack ? x : 32 - x, y}; };
    const PointF way[] = {at(9, 12), at(16, 9.5), at(23, 12), at(26, 18), at(23, 24), at(16, 26.5)};
    for (size_t i = 1; i < std::size(way); ++i) pen.Line(way[i - 1], way[i], 4, ink);
    pen.Polygon({at(3, 14), at(12, 4), at(14, 17)}, ink, 1, ink);
}

void DrawBox(ShapePen& pen, bool isPlus) {
    pen.Polygon({{5, 5}, {27, 5}, {27, 27}, {5, 27}}, paper, 2, edge);
    pen.Line({10, 16}, {22, 16}, 3.4, ink);
    if (isPlus) pen.Line({16, 10}, {16, 22}, 3.4, ink);
}

// A snowflake's six arms.
void DrawFreeze(ShapePen& pen) {
    pen.Line({16, 3}, {16, 29}, 3, blue);
    pen.Line({5, 9.5}, {27, 22.5}, 3, blue);
    pen.Line({5, 22.5}, {27, 9.5}, 3, blue);
    pen.Circle({16, 16}, 4, paper);
    pen.Circle({16, 16}, 2.6, blue);
}

// A map as a bar, with an arrow that leads to it.
void DrawMap(ShapePen& pen, bool isNext) {
    const double bar = isNext ? 25 : 3;
    pen.Polygon({{4, bar}, {28, bar}, {28, bar + 4}, {4, bar + 4}}, edge, 0, edge);
    const double tip = isNext ? 22 : 10, wing = isNext ? 13 : 19, foot = isNext ? 3 : 29;
    pen.Polygon({{16, tip}, {25, wing}, {19, wing}, {19, foot}, {13, foot}, {13, wing}, {7, wing}}, ink, 1, ink);
}

void DrawCheck(ShapePen& pen, bool isChecked) {
    pen.Polygon({{5, 5}, {27, 5}, {27, 27}, {5, 27}}, paper, 2, edge);
    if (!isChecked) return;
    pen.Line({9, 16}, {14, 22}, 4, green);
    pen.Line({14, 22}, {24, 10}, 4, green);
}

void Draw(Icon icon, ShapePen& pen) {
    switch (icon) {
    case Icon::Save:
        return DrawSave(pen);
    case Icon::Undo:
    case Icon::Redo:
        return DrawTurn(pen, icon == Icon::Undo);
    case Icon::AddGroup:
        return DrawAddGroup(pen);
    case Icon::AddLesson:
        return DrawAddLesson(pen);
    case Icon::Remove:
        return DrawRemove(pen);
    case Icon::Up:
        return DrawArrow(pen, 0, ink);
    case Icon::Indent:
        return DrawArrow(pen, 1, ink);
    case Icon::Down:
        return DrawArrow(pen, 2, ink);
    case Icon::Outdent:
        return DrawArrow(pen, 3, ink);
    case Icon::ExpandAll:
        return DrawBox(pen, true);
    case Icon::CollapseAll:
        return DrawBox(pen, false);
    case Icon::Freeze:
        return DrawFreeze(pen);
    case Icon::PreviousMap:
        return DrawMap(pen, false);
    case Icon::NextMap:
        return DrawMap(pen, true);
    case Icon::CheckAll:
        return DrawCheck(pen, true);
    case Icon::UncheckAll:
        return DrawCheck(pen, false);
    }
}

// What cannot be used looks pale and has no colour, or has the system's colour for it; the alpha is premultiplied.
void TakeColour(HBITMAP bitmap) {
    DIBSECTION section{};
    if (!GetObjectW(bitmap, sizeof section, &section) || section.dsBm.bmBitsPixel != 32) return;
    GdiFlush();
    auto* bytes = static_cast<BYTE*>(section.dsBm.bmBits);
    const bool isPale = !HighContrast();
    const COLORREF grey = GetSysColor(COLOR_GRAYTEXT);
    const LONG count = section.dsBm.bmWidth * section.dsBm.bmHeight;
    for (LONG i = 0; i < count; ++i, bytes += 4) {
        const int light = (bytes[0] + 6 * bytes[1] + 3 * bytes[2]) / 10;
        if (!isPale) {
            const int shade = (bytes[3] + light) / 2;
            bytes[0] = static_cast<BYTE>(GetBValue(grey) * shade / 255);
            bytes[1] = static_cast<BYTE>(GetGValue(grey) * shade / 255);
            bytes[2] = static_cast<BYTE>(GetRValue(grey) * shade / 255);
            continue;
        }
        bytes[3] = static_cast<BYTE>(bytes[3] * 2 / 5);
        bytes[0] = bytes[1] = bytes[2] = static_cast<BYTE>(light * 2 / 5);
    }
}

} // namespace

HIMAGELIST CreateToolbarIcons(int size, bool isEnabled) {
    constexpr int count = static_cast<int>(Icon::UncheckAll) + 1;
    const HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32, count, 0);
    for (int i = 0; i < count; ++i) {
        const HBITMAP bitmap =
            RenderShapesTransparent(size, [i](ShapePen& pen) { Draw(static_cast<Icon>(i), pen); })->Detach();
        if (!isEnabled) TakeColour(bitmap);
        ImageList_Add(list, bitmap, nullptr);
        DeleteObject(bitmap);
    }
    return list;
}

} // namespace dax::workbench
