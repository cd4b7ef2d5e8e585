#include "ocx/hosting/HostSite.h"

#include "com/Dispatch.h"
#include "controls/win32/GdiSurface.h"

#include <olectl.h>

#include <algorithm>

namespace dax {

namespace {

constexpr int HimetricPerInch = 2540;

// A host that shows its windows at a scale of its own, as in a preview, sets this property on one of them, to the dots
// per inch that the controls in it are to have.
constexpr wchar_t dpiProperty[] = L"DAXControls.DPI";
constexpr int minDpi = 48, maxDpi = 960;

// Empty when the host does not supply it.
Variant AmbientProperty(IDispatch& host, DISPID dispid) {
    DispatchResult answer = InvokeMember(&host, dispid, DISPATCH_PROPERTYGET);
    return SUCCEEDED(answer.code) ? std::move(answer.value) : Variant();
}

void ReadColor(IDispatch& host, DISPID dispid, uint32_t& color) {
    const Value value = ToValue(AmbientProperty(host, dispid), int64_t{});
    COLORREF translated = 0;
    if (const auto* number = std::get_if<int64_t>(&value))
        if (SUCCEEDED(OleTranslateColor(static_cast<OLE_COLOR>(*number), nullptr, &translated))) color = translated;
}

// What a host gets that names no font and no colours: the font of message boxes, and the colours of a window. The
// font's height is that of the system's resolution.
void ReadSystemLook(Ambient& ambient) {
    ambient.foreColor = GetSysColor(COLOR_WINDOWTEXT);
    ambient.backColor = GetSysColor(COLOR_WINDOW);
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) return;
    const LOGFONTW& font = metrics.lfMessageFont;
    if (font.lfFaceName[0]) ambient.fontName = FromWide(font.lfFaceName);
    // A positive height is that of the line, which is not the size of the font.
    if (font.lfHeight < 0) ambient.fontSize = -72.0 * font.lfHeight / DpiOf(nullptr);
    ambient.isBold = font.lfWeight > FW_MEDIUM;
    ambient.isItalic = font.lfItalic != 0;
}

void ReadFont(IDispatch& host, Ambient& ambient) {
    const Variant value = AmbientProperty(host, DISPID_AMBIENT_FONT);
    if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) return;
    const auto font = Query<IFont>(value.punkVal, IID_IFont);
    if (!font) return;
    Bstr name;
    if (SUCCEEDED(font->get_Name(name.Out())) && !name.Wide().empty()) ambient.fontName = FromBstr(name.Get());
    CY size{};
    if (SUCCEEDED(font->get_Size(&size)) && size.int64 > 0) ambient.fontSize = static_cast<double>(size.int64) / 10000;
    BOOL isOn = FALSE;
    if (SUCCEEDED(font->get_Bold(&isOn))) ambient.isBold = isOn != FALSE;
    if (SUCCEEDED(font->get_Italic(&isOn))) ambient.isItalic = isOn != FALSE;
}

} // namespace

void HostSite::Set(IOleClientSite* newClient) {
    const ComPtr<IOleInPlaceSite> formerInPlace = std::move(inPlace);
    const ComPtr<IOleClientSite> former = std::exchange(client, ComPtr<IOleClientSite>(newClient));
}

ComPtr<IOleControlSite> HostSite::ControlSite() const {
    return Query<IOleControlSite>(client.Get(), IID_IOleControlSite);
}

IOleInPlaceSite* HostSite::InPlace() {
    if (!inPlace) inPlace = Query<IOleInPlaceSite>(client.Get(), IID_IOleInPlaceSite);
    return inPlace.Get();
}

Ambient HostSite::ReadAmbient() const {
    Ambient ambient;
    ReadSystemLook(ambient);
    HWND window = nullptr;
    if (const auto place = Query<IOleWindow>(client.Get(), IID_IOleInPlaceSite)) place->GetWindow(&window);
    ambient.dpi = DpiOf(window);
    const auto host = Query<IDispatch>(client.Get(), IID_IDispatch);
    if (!host) return ambient;
    const Value userMode = ToValue(AmbientProperty(*host.Get(), DISPID_AMBIENT_USERMODE), true);
    if (const auto* isUserMode = std::get_if<bool>(&userMode)) ambient.userMode = *isUserMode;
    const Value name = ToValue(AmbientProperty(*host.Get(), DISPID_AMBIENT_DISPLAYNAME), Text());
    if (const auto* text = std::get_if<Text>(&name)) ambient.displayName = *text;
    ReadColor(*host.Get(), DISPID_AMBIENT_FORECOLOR, ambient.foreColor);
    ReadColor(*host.Get(), DISPID_AMBIENT_BACKCOLOR, ambient.backColor);
    ReadFont(*host.Get(), ambient);
    return ambient;
}

int DpiOf(HWND window) {
    for (HWND each = window; each; each = GetAncestor(each, GA_PARENT))
        if (const HANDLE dpi = GetPropW(each, dpiProperty))
            return std::clamp(static_cast<int>(reinterpret_cast<INT_PTR>(dpi)), minDpi, maxDpi);
    return MonitorDpi(window);
}

SIZEL PixelsToHimetric(SIZE pixels, int dpi) {
    return {MulDiv(pixels.cx, HimetricPerInch, dpi), MulDiv(pixels.cy, HimetricPerInch, dpi)};
}

SIZE HimetricToPixels(SIZEL himetric, int dpi) {
    return {MulDiv(himetric.cx, dpi, HimetricPerInch), MulDiv(himetric.cy, dpi, HimetricPerInch)};
}

} // namespace dax
