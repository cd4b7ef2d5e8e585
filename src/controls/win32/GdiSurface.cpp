#include "controls/win32/GdiSurface.h"

#include "base/Error.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace dax {

GdiSurface::GdiSurface(HDC context, SIZE extent, HFONT normalFont, HFONT boldFont, COLORREF foreColor,
                       COLORREF backColor, int dotsPerInch)
    : dc(context), size(extent), normal(normalFont), bold(boldFont), background(backColor), dpi(dotsPerInch),
      saved(SaveDC(context)) {
    SetTextColor(dc, foreColor);
    SetBkMode(dc, TRANSPARENT);
    SelectObject(dc, normal);
}

GdiSurface::~GdiSurface() {
    RestoreDC(dc, saved);
    for (const auto& [key, font] : sized) DeleteObject(font);
}

void GdiSurface::Clear() { FillWith(dc, {0, 0, size.cx, size.cy}, background); }

void GdiSurface::SetBold(bool isBold) {
    isBoldNow = isBold;
    Select();
}

void GdiSurface::SetFontSize(double points) {
    pointsNow = points;
    Select();
}

void GdiSurface::Select() {
    HFONT font = isBoldNow ? bold : normal;
    if (pointsNow > 0) {
        HFONT& other = sized[{pointsNow, isBoldNow}];
        if (!other) {
            LOGFONTW description{};
            GetObjectW(font, sizeof description, &description);
            description.lfHeight = -static_cast<LONG>(std::lround(pointsNow * dpi / 72));
            other = CreateFontIndirectW(&description);
        }
        font = other;
    }
    SelectObject(dc, font);
}

// Whether the text has a path at all, and each word, or what follows its last slash, has room beside an ellipsis.
bool GdiSurface::PathsFit(const Text& text, int width) {
    if (text.find_first_of(u"\\/") == Text::npos) return false;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find_first_of(u" \n", start), text.size());
        Text word = text.substr(start, end - start);
        if (const size_t slash = word.find_last_of(u"\\/"); slash != Text::npos) word.erase(0, slash);
        if (!word.empty() && TextWidth(u"..." + word) > width) return false;
        start = end + 1;
    }
    return true;
}

// Whether each character has a width of its own wherever it is: Latin, Greek and Cyrillic without marks.
bool GdiSurface::IsPlain(const Text& text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) {
        return (unit >= 0x20 && unit < 0x7F) || (unit >= 0xA0 && unit < 0x300 && unit != 0xAD) ||
               (unit >= 0x370 && unit < 0x483) || (unit >= 0x48A && unit < 0x530);
    });
}

// Fonts with bitmaps for small sizes are measured by their outlines in Wine: lines of such a font, placed by their
// measured widths, ended where their letters happened to. Each letter is put where the measuring has it.
int GdiSurface::DrawRight(const Text& text, const Rect& rect) {
    const auto measure = [this](const Text& measured, int room, int& fitting, std::vector<int>& ends) {
        SIZE extent{};
        ends.assign(measured.size(), 0);
        GetTextExtentExPointW(dc, Wide(measured), static_cast<int>(measured.size()), room, &fitting, ends.data(),
                              &extent);
        return extent.cx;
    };
    constexpr int everything = 0x7FFFFFFF;
    Text shown = text.substr(0, text.find_last_not_of(u' ') + 1); // a blank would move the end of what is seen
    std::vector<int> ends;
    int fitting = 0;
    if (measure(shown, std::max(0, rect.Width()), fitting, ends) > rect.Width()) {
        measure(shown, std::max(0, rect.Width() - TextWidth(u"...")), fitting, ends);
        shown = shown.substr(0, static_cast<size_t>(std::max(1, fitting))) + u"...";
    }
    const int width = measure(shown, everything, fitting, ends);
    std::adjacent_difference(ends.begin(), ends.end(), ends.begin());
    const RECT place{rect.left, rect.top, rect.right, rect.bottom};
    ExtTextOutW(dc, rect.right - std::min(width, rect.Width()), rect.top, ETO_CLIPPED, &place, Wide(shown),
                static_cast<UINT>(shown.size()), ends.data());
    TEXTMETRICW metrics;
    GetTextMetricsW(dc, &metrics);
    return metrics.tmHeight;
}

int GdiSurface::DrawText(const Text& text, Rect& rect, uint32_t flags) {
    using namespace DrawTextFlags;
    if (flags == (Right | EndEllipsis | NoPrefix) && IsPlain(text)) return DrawRight(text, rect);
    // Wine ends the program when it both breaks a word and puts an ellipsis into a path, and puts two of them into a
    // text without a path: where a path has no room or there is none, the end is cut instead, as Windows does.
    if (flags & PathEllipsis && !PathsFit(text, rect.Width())) flags &= ~PathEllipsis;
    RECT place{rect.left, rect.top, rect.right, rect.bottom};
    const int height = DrawTextW(dc, Wide(text), static_cast<int>(text.size()), &place, flags);
    if (flags & CalcRect) rect = {place.left, place.top, place.right, place.bottom};
    return height;
}

int GdiSurface::TextWidth(const Text& text) {
    SIZE extent{};
    GetTextExtentPoint32W(dc, Wide(text), static_cast<int>(text.size()), &extent);
    return extent.cx;
}

int MonitorDpi(HWND window) {
    using GetDpi = UINT(WINAPI*)(HWND);
    // Only newer systems have a DPI per window.
    static const auto dpiOfWindow = reinterpret_cast<GetDpi>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32"), "GetDpiForWindow")));
    if (window && dpiOfWindow)
        if (const UINT dpi = dpiOfWindow(window)) return static_cast<int>(dpi);
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : USER_DEFAULT_SCREEN_DPI;
}

HFONT CreateFontFor(const Text& name, double points, int dpi, bool isBold, bool isItalic) {
    LOGFONTW font{};
    font.lfHeight = -static_cast<LONG>(std::lround(points * dpi / 72));
    font.lfWeight = isBold ? FW_BOLD : FW_NORMAL;
    font.lfItalic = isItalic;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfQuality = DEFAULT_QUALITY;
    const size_t length = std::min<size_t>(name.size(), LF_FACESIZE - 1);
    std::copy_n(name.begin(), length, font.lfFaceName);
    return CreateFontIndirectW(&font);
}

void FillWith(HDC dc, const RECT& place, COLORREF color) {
    const HBRUSH brush = CreateSolidBrush(color);
    FillRect(dc, &place, brush);
    DeleteObject(brush);
}

bool IsRasterDevice(HDC dc) {
    const DWORD type = GetObjectType(dc);
    return type == OBJ_MEMDC || (type == OBJ_DC && GetDeviceCaps(dc, TECHNOLOGY) == DT_RASDISPLAY);
}

void PaintBuffered(HDC dc, const RECT& place, const std::function<void(HDC, SIZE)>& paint) {
    constexpr int64_t largest = 0x7FFF; // no screen is larger; sums of such lengths overflow nowhere
    const SIZE size{static_cast<LONG>(std::min(largest, int64_t{place.right} - place.left)),
                    static_cast<LONG>(std::min(largest, int64_t{place.bottom} - place.top))};
    if (size.cx <= 0 || size.cy <= 0) return;
    RECT seen;
    if (GetClipBox(dc, &seen) == NULLREGION) return;
    const RECT whole{place.left, place.top, place.left + size.cx, place.top + size.cy};
    if (!IntersectRect(&seen, &seen, &whole)) return;
    const MemoryBitmap buffer(seen.right - seen.left, seen.bottom - seen.top);
    SetViewportOrgEx(buffer.Context(), place.left - seen.left, place.top - seen.top, nullptr);
    paint(buffer.Context(), size);
    SetViewportOrgEx(buffer.Context(), 0, 0, nullptr);
    BitBlt(dc, seen.left, seen.top, buffer.Width(), buffer.Height(), buffer.Context(), 0, 0, SRCCOPY);
}

MemoryBitmap::MemoryBitmap(int w, int h) : width(w), height(h) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    dc = CreateCompatibleDC(nullptr);
    bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap) {
        DeleteDC(dc);
        throw Error(u"There is not enough memory for a bitmap.");
    }
    pixels = static_cast<uint32_t*>(bits);
    former = SelectObject(dc, bitmap);
}

MemoryBitmap::~MemoryBitmap() {
    SelectObject(dc, former);
    DeleteObject(bitmap);
    DeleteDC(dc);
}

HBITMAP MemoryBitmap::Detach() {
    GdiFlush();
    SelectObject(dc, former);
    return std::exchange(bitmap, nullptr);
}

uint32_t* MemoryBitmap::Pixels() const {
    GdiFlush();
    return pixels;
}

} // namespace dax
