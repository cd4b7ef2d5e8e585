// Fonts and measures at one resolution.
#pragma once

#include <windows.h>

#include <string>

namespace dax::workbench {

// Whether texts and pictures need the system's own colours: in high contrast, and wherever its background is dark.
bool HighContrast();

class Style {
public:
    explicit Style(int dotsPerInch);
    Style(const Style&) = delete;
    Style& operator=(const Style&) = delete;
    ~Style();

    // Creates the fonts again, in the system's message font.
    void SetDpi(int dotsPerInch);
    int Dpi() const { return dpi; }

    // Pixels for a measure at 96 dots per inch.
    int Scale(int measure) const { return MulDiv(measure, dpi, 96); }
    HFONT Plain() const { return plain; }
    HFONT Heading() const { return heading; }
    int LineHeight() const { return lineHeight; }
    int HeadingHeight() const { return headingHeight; }
    // As high as a drop-down list is by itself; borders do not grow with the resolution.
    int FieldHeight() const { return lineHeight + 2 * GetSystemMetrics(SM_CYEDGE) + 4; }
    int ButtonHeight() const { return lineHeight + Scale(10); }
    int Gap() const { return Scale(8); }
    int Margin() const { return Scale(14); }
    // Width in the plain font; an ampersand that marks a mnemonic counts too, which leaves a little room.
    int TextWidth(const std::wstring& text) const;
    int ButtonWidth(const std::wstring& text) const;
    // Height of a wrapped text of that width.
    int WrappedHeight(const std::wstring& text, int width) const;

private:
    void Release();

    int dpi = 96;
    HFONT plain = nullptr;
    HFONT heading = nullptr;
    int lineHeight = 0;
    int headingHeight = 0;
};

} // namespace dax::workbench
