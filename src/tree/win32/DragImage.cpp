#include "tree/win32/DragImage.h"

#include "controls/win32/GdiSurface.h"

#include <algorithm>

namespace dax {

namespace {

constexpr COLORREF Transparent = RGB(255, 0, 255);
constexpr int Gap = 3, LongestCaption = 260;

// The list takes the pixels; what has the transparent colour becomes its mask.
HIMAGELIST Picture(HWND window, HIMAGELIST icons, int icon, const Text& caption, SIZE& size) {
    const Text shown(Shorten(caption, LongestCaption));
    const auto font = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    int iconWidth = 0, iconHeight = 0;
    if (icons) ImageList_GetIconSize(icons, &iconWidth, &iconHeight);
    const HDC screen = GetDC(window);
    const HDC dc = CreateCompatibleDC(screen);
    const HGDIOBJ formerFont = SelectObject(dc, font);
    SIZE text{};
    GetTextExtentPoint32W(dc, Wide(shown), static_cast<int>(shown.size()), &text);
    RECT client;
    GetClientRect(window, &client);
    size = {std::clamp<LONG>(iconWidth + Gap + text.cx, 1, std::max<LONG>(1, client.right)),
            std::max<LONG>({iconHeight, text.cy, 1})};
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, size.cx, size.cy);
    ReleaseDC(window, screen);
    const HGDIOBJ formerBitmap = SelectObject(dc, bitmap);
    FillWith(dc, {0, 0, size.cx, size.cy}, Transparent);
    if (icons) ImageList_Draw(icons, icon, dc, 0, (size.cy - iconHeight) / 2, ILD_NORMAL);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
    RECT place{iconWidth + Gap, 0, size.cx, size.cy};
    DrawTextW(dc, Wide(shown), static_cast<int>(shown.size()), &place,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, formerBitmap);
    SelectObject(dc, formerFont);
    DeleteDC(dc);
    const HIMAGELIST list = ImageList_Create(size.cx, size.cy, ILC_COLOR32 | ILC_MASK, 1, 0);
    ImageList_AddMasked(list, bitmap, Transparent);
    DeleteObject(bitmap);
    return list;
}

} // namespace

DragImage::DragImage(HWND window, HIMAGELIST icons, int icon, const Text& caption, POINT hotSpot) : owner(window) {
    SIZE size{};
    images = Picture(window, icons, icon, caption, size);
    ImageList_BeginDrag(images, 0, std::clamp<int>(hotSpot.x, 0, size.cx), std::clamp<int>(hotSpot.y, 0, size.cy));
}

DragImage::~DragImage() {
    Hide();
    ImageList_EndDrag();
    ImageList_Destroy(images);
}

void DragImage::Show(POINT clientPoint) {
    // The image lives in coordinates of the window, its frame included.
    POINT point = clientPoint;
    ClientToScreen(owner, &point);
    RECT window;
    GetWindowRect(owner, &window);
    const int x = point.x - window.left, y = point.y - window.top;
    if (isShown)
        ImageList_DragMove(x, y);
    else
        ImageList_DragEnter(owner, x, y);
    isShown = true;
}

void DragImage::Hide() {
    if (isShown) ImageList_DragLeave(owner);
    isShown = false;
}

} // namespace dax
