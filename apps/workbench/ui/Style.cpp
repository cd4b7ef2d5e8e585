#include "ui/Style.h"

#include <algorithm>

namespace dax::workbench {

namespace {

// A function of newer systems; null on those that lack it.
template <class Function>
Function UserFunction(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32"), name)));
}

class Measure {
public:
    explicit Measure(HFONT font) : dc(GetDC(nullptr)), before(SelectObject(dc, font)) {}
    Measure(const Measure&) = delete;
    Measure& operator=(const Measure&) = delete;
    ~Measure() {
        SelectObject(dc, before);
        ReleaseDC(nullptr, dc);
    }
    int LineHeight() const {
        TEXTMETRICW metrics;
        GetTextMetricsW(dc, &metrics);
        return metrics.tmHeight;
    }
    HDC Dc() const { return dc; }

private:
    HDC dc;
    HGDIOBJ before;
};

} // namespace

bool HighContrast() {
    const COLORREF face = GetSysColor(COLOR_BTNFACE);
    if (GetRValue(face) + GetGValue(face) + GetBValue(face) < 3 * 128) return true;
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON);
}

Style::Style(int dotsPerInch) { SetDpi(dotsPerInch); }

Style::~Style() { Release(); }

void Style::Release() {
    if (plain) DeleteObject(plain);
    if (heading) DeleteObject(heading);
}

void Style::SetDpi(int dotsPerInch) {
    Release();
    dpi = dotsPerInch;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    static const auto forDpi = UserFunction<BOOL(WINAPI*)(UINT, UINT, void*, UINT, UINT)>("SystemParametersInfoForDpi");
    if (!forDpi || !forDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, static_cast<UINT>(dpi)))
        SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    LOGFONTW font = metrics.lfMessageFont;
    plain = CreateFontIndirectW(&font);
    font.lfHeight = MulDiv(font.lfHeight, 3, 2);
    font.lfWeight = FW_SEMIBOLD;
    heading = CreateFontIndirectW(&font);
    lineHeight = Measure(plain).LineHeight();
    headingHeight = Measure(heading).LineHeight();
}

int Style::TextWidth(const std::wstring& text) const {
    SIZE size{};
    GetTextExtentPoint32W(Measure(plain).Dc(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

int Style::ButtonWidth(const std::wstring& text) const { return std::max(TextWidth(text) + Scale(24), Scale(88)); }

int Style::WrappedHeight(const std::wstring& text, int width) const {
    RECT area{0, 0, std::max(width, 1), 0};
    DrawTextW(Measure(plain).Dc(), text.c_str(), -1, &area, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    return area.bottom;
}

} // namespace dax::workbench
