#include "tree/win32/DragImage.h"

#include "controls/win32/GdiSurface.h"

#include <algorithm>

namespace dax {

namespace {

constexpr int Gap = 3, Border = 2, LongestCaption = 260;

// A small opaque rectangle: with transparency the background would become part of the image.
HIMAGELIST Picture(HWND window, HIMAGELIST icons, int icon, const Text& caption, SIZE& size) {
    const Text shown(Shorten(caption, LongestCaption));
    const auto font = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    int iconWidth = 0, iconHeight = 0;
    if (icons) ImageList_GetIconSize(icons, &iconWidth, &iconHeight);
    const HDC measuring = GetDC(window);
    const HGDIOBJ former = SelectObject(measuring, font);
    SIZE text{};
    GetTextExtentPoint32W(measuring, Wide(shown), static_cast<int>(shown.size()), &text);
    SelectObject(measuring, former);
    ReleaseDC(window, measuring);
    RECT client;
    GetClientRect(window, &client);
    size = {std::clamp<LONG>(iconWidth + Gap + text.cx + 3 * Border, 1, std::max<LONG>(1, client.right)),
            std::max<LONG>({iconHeight, text.cy, 1}) + 2 * Border};
    MemoryBitmap bitmap(size.cx, size.cy);
    const HDC dc = bitmap.Context();
    const RECT whole{0, 0, size.cx, size.cy};
    FillRect(dc, &whole, GetSysColorBrush(COLOR_WINDOW));
    FrameRect(dc, &whole, GetSysColorBrush(COLOR_GRAYTEXT));
    if (icons) ImageList_Draw(icons, icon, dc, Border, (size.cy - iconHeight) / 2, ILD_NORMAL);
    const HGDIOBJ formerFont = SelectObject(dc, font);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
    RECT place{Border + iconWidth + Gap, 0, size.cx - Border, size.cy};
    DrawTextW(dc, Wide(shown), static_cast<int>(shown.size()), &place,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, formerFont);
    uint32_t* const pixels = bitmap.Pixels();
    for (LONG index = 0; index < size.cx * size.cy; ++index) pixels[index] |= 0xFF000000u;
    const HBITMAP finished = bitmap.Detach();
    const HIMAGELIST list = ImageList_Create(size.cx, size.cy, ILC_COLOR32, 1, 0);
    ImageList_Add(list, finished, nullptr);
    DeleteObject(finished);
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
    // The image is in coordinates of the window, its frame included.
    POINT point = last = clientPoint;
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
