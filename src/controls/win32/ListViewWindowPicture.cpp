// The list as a picture: as its window shows it, or, without one, from its first row on.
#include "controls/win32/GdiSurface.h"
#include "controls/win32/ListViewWindow.h"

#include <algorithm>

namespace dax {

namespace {

constexpr int CellMargin = 4;

void DrawCell(HDC dc, TextView text, RECT cell) {
    cell.left += CellMargin;
    cell.right -= CellMargin / 2;
    DrawTextW(dc, Units(text), static_cast<int>(text.size()), &cell,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

// At the right end of a header; returns what is left for the caption.
RECT DrawSortArrow(HDC dc, RECT header, bool isDescending) {
    const int size = std::max<int>(3, (header.bottom - header.top) / 6);
    const int right = header.right - 2 * CellMargin, middle = (header.top + header.bottom) / 2;
    const int base = isDescending ? middle - size / 2 : middle + size / 2,
              tip = isDescending ? base + size : base - size;
    const POINT corners[] = {{right - 2 * size, base}, {right, base}, {right - size, tip}};
    const int saved = SaveDC(dc);
    SelectObject(dc, GetStockObject(NULL_PEN));
    SelectObject(dc, GetSysColorBrush(COLOR_BTNSHADOW));
    Polygon(dc, corners, 3);
    RestoreDC(dc, saved);
    header.right = right - 2 * size;
    return header;
}

} // namespace

std::vector<int> ListViewWindow::ColumnWidths(HDC dc, int width) const {
    std::vector<int> shown = SharedWidths(dc, width);
    if (!handle || widths == Widths::Shared) return shown;
    for (size_t column = 0; column < shown.size(); ++column)
        if (const LRESULT current = SendMessageW(handle, LVM_GETCOLUMNWIDTH, column, 0); current > 0)
            shown[column] = static_cast<int>(current);
    return shown;
}

void ListViewWindow::DrawPicture(HDC dc, const RECT& place, HFONT font) const {
    const int saved = SaveDC(dc);
    SelectObject(dc, font);
    RECT inner = place;
    FillWith(dc, inner, backColor);
    DrawEdge(dc, &inner, EDGE_SUNKEN, BF_RECT | BF_ADJUST);
    IntersectClipRect(dc, inner.left, inner.top, inner.right, inner.bottom);
    TEXTMETRICW metrics;
    GetTextMetricsW(dc, &metrics);
    int rowHeight = metrics.tmHeight + 4, headerHeight = rowHeight + 4, left = inner.left;
    size_t first = 0;
    const HWND header = handle ? reinterpret_cast<HWND>(SendMessageW(handle, LVM_GETHEADER, 0, 0)) : nullptr;
    if (RECT shown{}; header) {
        first = static_cast<size_t>(SendMessageW(handle, LVM_GETTOPINDEX, 0, 0));
        if (SendMessageW(handle, LVM_GETITEMRECT, first, reinterpret_cast<LPARAM>(&shown)))
            rowHeight = std::max<int>(1, shown.bottom - shown.top);
        if (GetClientRect(header, &shown) && shown.bottom > 0) headerHeight = shown.bottom;
        left -= GetScrollPos(handle, SB_HORZ);
    }
    SetBkMode(dc, TRANSPARENT);
    const int rowsTop = inner.top + headerHeight;
    const size_t end = std::min(
        model->Items().size(),
        first + static_cast<size_t>(std::max<LONG>(0, inner.bottom - rowsTop)) / static_cast<size_t>(rowHeight) + 1);
    const std::vector<int> widths = ColumnWidths(dc, inner.right - inner.left);
    for (size_t item = first; item < end; ++item) {
        const int top = rowsTop + static_cast<int>(item - first) * rowHeight;
        int right = left;
        for (const int width : widths) right += width;
        if (model->Items()[item].isSelected)
            FillWith(dc, {left, top, right, top + rowHeight}, GetSysColor(COLOR_HIGHLIGHT));
    }
    for (size_t column = 0; column < widths.size(); left += widths[column++]) {
        const int right = left + widths[column];
        RECT caption{left, inner.top, right, rowsTop};
        DrawFrameControl(dc, &caption, DFC_BUTTON, DFCS_BUTTONPUSH);
        HDITEMW arrow{};
        arrow.mask = HDI_FORMAT;
        if (header) SendMessageW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(&arrow));
        if (arrow.fmt & (HDF_SORTUP | HDF_SORTDOWN))
            caption = DrawSortArrow(dc, caption, (arrow.fmt & HDF_SORTDOWN) != 0);
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        SelectObject(dc, font);
        DrawCell(dc, model->Columns()[column].caption, caption);
        for (size_t item = first; item < end; ++item) {
            const int top = rowsTop + static_cast<int>(item - first) * rowHeight;
            const ListItem& row = model->Items()[item];
            SelectObject(dc, row.mark.empty() || !markedFont ? font : markedFont);
            SetTextColor(dc, row.isSelected     ? GetSysColor(COLOR_HIGHLIGHTTEXT)
                             : row.mark.empty() ? textColor
                                                : MarkedColor());
            DrawCell(dc, model->Cell(item, column), {left, top, right, top + rowHeight});
        }
    }
    RestoreDC(dc, saved);
}

} // namespace dax
