// The tree as a picture: as its window shows it, or, without one, from its first row on.
#include "tree/win32/TreeViewWindow.h"

#include "controls/win32/GdiSurface.h"
#include "tree/modTreeviewAPI.h"
#include "tree/win32/TreeStyle.h"

#include <algorithm>
#include <cstring>

namespace dax {

namespace {

constexpr COLORREF LineColor = RGB(128, 128, 128);

int DepthOf(const Node* node) {
    int depth = 0;
    while ((node = node->Parent())) ++depth;
    return depth;
}

void FillPart(HDC dc, int left, int top, int right, int bottom, COLORREF color) {
    if (left < right && top < bottom) FillWith(dc, {left, top, right, bottom}, color);
}

// Onto a screen directly; elsewhere what is transparent is filled before.
void DrawListImage(HDC dc, HIMAGELIST list, int image, int x, int y, COLORREF background) {
    int width = 0, height = 0;
    if (!list || !ImageList_GetIconSize(list, &width, &height)) return;
    if (IsRasterDevice(dc)) {
        ImageList_Draw(list, image, dc, x, y, ILD_NORMAL);
        return;
    }
    const MemoryBitmap picture(width, height);
    FillWith(picture.Context(), {0, 0, width, height}, background);
    ImageList_Draw(list, image, picture.Context(), 0, 0, ILD_NORMAL);
    BitBlt(dc, x, y, width, height, picture.Context(), 0, 0, SRCCOPY);
}

// Lines from a row to its parent and its siblings, and the button of a row with children. `middle` is that of the
// button, half a row below `top`.
void DrawConnections(HDC dc, const Node& node, POINT middle, int top, int bottom, int indent, COLORREF background) {
    const bool isFirst = !node.Parent() && !node.Previous();
    FillPart(dc, middle.x, isFirst ? middle.y : top, middle.x + 1, node.Next() ? bottom : middle.y, LineColor);
    FillPart(dc, middle.x, middle.y, middle.x + indent / 2, middle.y + 1, LineColor);
    int x = middle.x - indent;
    for (const Node* above = node.Parent(); above; above = above->Parent(), x -= indent)
        if (above->Next()) FillPart(dc, x, top, x + 1, bottom, LineColor);
    if (!node.FirstChild()) return;
    const int half = std::max(4, indent / 5), arm = half - 2;
    FillPart(dc, middle.x - half, middle.y - half, middle.x + half + 1, middle.y + half + 1, LineColor);
    FillPart(dc, middle.x - half + 1, middle.y - half + 1, middle.x + half, middle.y + half, background);
    FillPart(dc, middle.x - arm, middle.y, middle.x + arm + 1, middle.y + 1, 0);
    if (!node.IsExpanded()) FillPart(dc, middle.x, middle.y - arm, middle.x + 1, middle.y + arm + 1, 0);
}

} // namespace

void TreeViewWindow::DrawPicture(HDC dc, const RECT& place, HFONT font) const {
    const int saved = SaveDC(dc);
    RECT inner = place;
    FillWith(dc, inner, backColor);
    DrawEdge(dc, &inner, EDGE_SUNKEN, BF_RECT | BF_ADJUST);
    IntersectClipRect(dc, inner.left, inner.top, inner.right, inner.bottom);
    SelectObject(dc, font);
    SetBkMode(dc, TRANSPARENT);
    TEXTMETRICW metrics;
    GetTextMetricsW(dc, &metrics);
    const auto ask = [this](UINT message, WPARAM wParam, LPARAM lParam) {
        return handle ? SendMessageW(handle, message, wParam, lParam) : 0;
    };
    int iconWidth = 0, iconHeight = 0, boxWidth = 0, boxHeight = 0;
    if (images) ImageList_GetIconSize(images, &iconWidth, &iconHeight);
    const auto boxes = reinterpret_cast<HIMAGELIST>(hasCheckBoxes ? ask(TVM_GETIMAGELIST, TVSIL_STATE, 0) : 0);
    if (boxes) ImageList_GetIconSize(boxes, &boxWidth, &boxHeight);
    if (hasCheckBoxes && !boxes) boxWidth = boxHeight = std::max(iconHeight, 13);
    int rowHeight = static_cast<int>(ask(TVM_GETITEMHEIGHT, 0, 0)), indent = static_cast<int>(ask(TVM_GETINDENT, 0, 0));
    if (rowHeight <= 0) rowHeight = std::max<int>(metrics.tmHeight + 2, iconHeight);
    if (indent <= 0) indent = iconWidth + 3;

    // From where the window has been scrolled to.
    const auto first = reinterpret_cast<HTREEITEM>(ask(TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0));
    const Node* node = first ? items.NodeOf(first) : tree.First();
    const int beforeText = boxWidth + iconWidth + 3;
    int root = inner.left + indent + beforeText; // where texts of the first level begin
    const auto shown = node && first ? TreeItems::ItemRect(first, true, ask) : std::nullopt;
    if (shown) root = inner.left + shown->left + 2 - DepthOf(node) * indent;
    const RowColors unfocused = ColorsWithoutFocus();
    for (int top = inner.top; node && top < inner.bottom; top += rowHeight, node = modTreeviewAPI::NextVisible(*node)) {
        const int textLeft = root + DepthOf(node) * indent, left = textLeft - beforeText, middle = top + rowHeight / 2;
        DrawConnections(dc, *node, {left - indent / 2, middle}, top, top + rowHeight, indent, backColor);
        if (boxes) DrawListImage(dc, boxes, node->IsChecked() ? 2 : 1, left, middle - boxHeight / 2, backColor);
        if (hasCheckBoxes && !boxes) {
            RECT box{left + 1, middle - 6, left + 14, middle + 7};
            DrawFrameControl(dc, &box, DFC_BUTTON, DFCS_BUTTONCHECK | (node->IsChecked() ? DFCS_CHECKED : 0u));
        }
        DrawListImage(dc, images, node->Image(), left + boxWidth, middle - iconHeight / 2, backColor);
        RECT text{textLeft, top, inner.right, top + rowHeight};
        const Text caption(Shorten(node->Caption(), 260));
        const bool isSelected = node == tree.Selected();
        if (isSelected) {
            SIZE extent{};
            GetTextExtentPoint32W(dc, Wide(caption), static_cast<int>(caption.size()), &extent);
            FillPart(dc, textLeft - 2, top, std::min<int>(textLeft + extent.cx + 2, inner.right), text.bottom,
                     unfocused.background);
        }
        SetTextColor(dc, isSelected ? unfocused.text : textColor);
        DrawTextW(dc, Wide(caption), static_cast<int>(caption.size()), &text,
                  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    RestoreDC(dc, saved);
}

} // namespace dax
