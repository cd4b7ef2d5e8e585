// A drawing surface that measures text: what panels are painted on. All distances are pixels.
#pragma once

#include "base/Text.h"

#include <cstdint>

#undef DrawText // a macro of Windows, whose header may have been read before

namespace dax {

struct Point {
    int x = 0, y = 0;
};

struct Rect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool operator==(const Rect&) const = default;
};

// The system's text drawing flags, under the system's names and values.
namespace DrawTextFlags {
inline constexpr uint32_t Right = 0x2;
inline constexpr uint32_t WordBreak = 0x10;
inline constexpr uint32_t SingleLine = 0x20;
inline constexpr uint32_t CalcRect = 0x400;
inline constexpr uint32_t NoPrefix = 0x800;
inline constexpr uint32_t PathEllipsis = 0x4000;
inline constexpr uint32_t EndEllipsis = 0x8000;
inline constexpr uint32_t WordEllipsis = 0x40000;
} // namespace DrawTextFlags

class Surface {
public:
    virtual ~Surface() = default;
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    virtual void Clear() = 0;
    // The control's font, regular or bold, in its own size (0) or in that many points.
    virtual void SetBold(bool isBold) = 0;
    virtual void SetFontSize(double points) = 0;
    // Draws, or with CalcRect only measures and narrows or lengthens `rect`; returns the height.
    virtual int DrawText(const Text& text, Rect& rect, uint32_t flags) = 0;
    virtual int TextWidth(const Text& text) = 0;
};

} // namespace dax
