#include "tree/win32/WindowCapture.h"

#include <olectl.h>

#include <array>

namespace dax {

namespace {

// The 256 colours of a palette display; null on every other.
HPALETTE SystemPalette(HDC dc) {
    if (!(GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE) || GetDeviceCaps(dc, SIZEPALETTE) != 256) return nullptr;
    struct {
        WORD version = 0x300, count = 256;
        std::array<PALETTEENTRY, 256> entries{};
    } palette;
    GetSystemPaletteEntries(dc, 0, 256, palette.entries.data());
    return CreatePalette(reinterpret_cast<const LOGPALETTE*>(&palette));
}

} // namespace

WindowCapture::WindowCapture(HWND window) {
    RECT place;
    if (!GetWindowRect(window, &place)) return;
    size = {place.right - place.left, place.bottom - place.top};
    const HDC dc = GetWindowDC(window);
    if (!dc) return;
    const HDC memory = CreateCompatibleDC(dc);
    const HBITMAP bitmap = CreateCompatibleBitmap(dc, size.cx, size.cy);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, size.cx, size.cy, dc, 0, 0, SRCCOPY);
    SelectObject(memory, former);
    DeleteDC(memory);
    PICTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_BITMAP;
    description.bmp.hbitmap = bitmap;
    description.bmp.hpal = SystemPalette(dc);
    ReleaseDC(window, dc);
    // The picture owns bitmap and palette; without one they are deleted here.
    if (SUCCEEDED(OleCreatePictureIndirect(&description, IID_IPicture, TRUE, picture.OutVoid()))) return;
    picture = {};
    DeleteObject(bitmap);
    if (description.bmp.hpal) DeleteObject(description.bmp.hpal);
}

void WindowCapture::Draw(HDC dc, int x, int y) const {
    if (!picture) return;
    OLE_XSIZE_HIMETRIC width = 0;
    OLE_YSIZE_HIMETRIC height = 0;
    picture->get_Width(&width);
    picture->get_Height(&height);
    picture->Render(dc, x, y, size.cx, size.cy, 0, height, width, -height, nullptr);
}

} // namespace dax
