// A device context as a drawing surface.
#pragma once

#include "controls/Surface.h"
#include "controls/win32/Windows.h"

#include <functional>
#include <map>
#include <utility>

namespace dax {

class GdiSurface : public Surface {
public:
    // The destructor restores the context's colours and fonts.
    GdiSurface(HDC context, SIZE extent, HFONT normalFont, HFONT boldFont, COLORREF foreColor, COLORREF backColor,
               int dotsPerInch);
    ~GdiSurface() override;
    GdiSurface(const GdiSurface&) = delete;
    GdiSurface& operator=(const GdiSurface&) = delete;

    int Width() const override { return size.cx; }
    int Height() const override { return size.cy; }
    void Clear() override;
    void SetBold(bool isBold) override;
    void SetFontSize(double points) override;
    int DrawText(const Text& text, Rect& rect, uint32_t flags) override;
    int TextWidth(const Text& text) override;

private:
    HDC dc;
    SIZE size;
    HFONT normal, bold;
    COLORREF background;
    int dpi;
    int saved;
    bool isBoldNow = false;
    double pointsNow = 0;
    std::map<std::pair<double, bool>, HFONT> sized; // fonts of other sizes used so far

    void Select();
    bool PathsFit(const Text& text, int width);
    static bool IsPlain(const Text& text);
    int DrawRight(const Text& text, const Rect& rect);
};

// The pixels per inch of the monitor that the window is on; of the screen for null, or where the system cannot say it.
int MonitorDpi(HWND window);

HFONT CreateFontFor(const Text& name, double points, int dpi, bool isBold, bool isItalic);

void FillWith(HDC dc, const RECT& place, COLORREF color);

// Whether what is drawn becomes pixels at once, of a screen or a bitmap; else it is printed or recorded, and bitmaps
// are to be avoided.
bool IsRasterDevice(HDC dc);

// Paints into a bitmap of its own and copies it to `place` of `dc` at once, so that nothing flickers. `paint` gets a
// context whose origin is the top left corner of `place`. Only what can be seen is painted, however large the place.
void PaintBuffered(HDC dc, const RECT& place, const std::function<void(HDC, SIZE)>& paint);

// A bitmap selected into a context of its own, with its pixels (0xAARRGGBB, top row first).
class MemoryBitmap {
public:
    MemoryBitmap(int width, int height);
    ~MemoryBitmap();
    MemoryBitmap(const MemoryBitmap&) = delete;
    MemoryBitmap& operator=(const MemoryBitmap&) = delete;

    HDC Context() const { return dc; }
    int Width() const { return width; }
    int Height() const { return height; }
    // Complete only after everything drawn has been flushed, which this does.
    uint32_t* Pixels() const;
    // Gives the bitmap to the caller, who deletes it; nothing can be drawn any more.
    HBITMAP Detach();

private:
    int width, height;
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ former = nullptr;
    uint32_t* pixels = nullptr;
};

} // namespace dax
