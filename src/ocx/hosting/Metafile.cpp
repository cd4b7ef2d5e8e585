#include "ocx/hosting/Metafile.h"

#include "com/ComError.h"
#include "ocx/hosting/HostSite.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace dax {

namespace {

constexpr LONG Farthest = 1 << 26; // device contexts count with 27 bits
constexpr LONG Longest = 0x7FFF;   // that older metafiles count

LONG Limited(double length) { return static_cast<LONG>(std::lround(std::clamp<double>(length, 1, Longest))); }

// Plays a metafile into another one at a place of its own: instead of the origin and the extent that the former sets
// for itself, those that put it there.
struct Player {
    RECT bounds, whole; // in units of the receiver

    static int CALLBACK Play(HDC dc, HANDLETABLE* objects, METARECORD* record, int count, LPARAM player) {
        auto& self = *reinterpret_cast<Player*>(player);
        const auto parameter = [record](int index) { return static_cast<short>(record->rdParm[index]); };
        switch (record->rdFunction) {
        case META_SETMAPMODE:
            SetMapMode(dc, MM_ANISOTROPIC);
            return 1;
        case META_SETWINDOWORG: // the vertical one first
            self.origin = {parameter(1), parameter(0)};
            return 1;
        case META_SETWINDOWEXT: {
            const SIZE extent{parameter(1), parameter(0)};
            const RECT& in = self.bounds;
            const LONG width = in.right - in.left, height = in.bottom - in.top;
            SetWindowOrgEx(dc, self.origin.x + MulDiv(self.whole.left - in.left, extent.cx, width),
                           self.origin.y + MulDiv(self.whole.top - in.top, extent.cy, height), nullptr);
            SetWindowExtEx(dc, MulDiv(self.whole.right - self.whole.left, extent.cx, width),
                           MulDiv(self.whole.bottom - self.whole.top, extent.cy, height), nullptr);
            return 1;
        }
        default:
            PlayMetaFileRecord(dc, objects, record, static_cast<UINT>(count));
            return 1;
        }
    }

    POINT origin{};
};

} // namespace

RECT Drawable(const RECTL& bounds) {
    const auto limited = [](LONG value) { return std::clamp(value, -Farthest, Farthest); };
    return {limited(bounds.left), limited(bounds.top), limited(bounds.right), limited(bounds.bottom)};
}

RECT InDeviceUnits(HDC dc, const RECT& bounds) {
    RECT device = bounds;
    LPtoDP(dc, reinterpret_cast<POINT*>(&device), 2);
    const auto [left, right] = std::minmax({device.left, device.right});
    const auto [top, bottom] = std::minmax({device.top, device.bottom});
    return Drawable({left, top, right, bottom});
}

void UseDeviceUnits(HDC dc) {
    if (GetGraphicsMode(dc) == GM_ADVANCED) ModifyWorldTransform(dc, nullptr, MWT_IDENTITY);
    SetMapMode(dc, MM_TEXT);
    SetWindowOrgEx(dc, 0, 0, nullptr);
    SetViewportOrgEx(dc, 0, 0, nullptr);
}

SIZE LayoutSize(SIZE own, SIZE target, int targetDpi, int dpi) {
    double scale = targetDpi > 0 ? static_cast<double>(targetDpi) / dpi : 1;
    if (own.cx > 0 && own.cy > 0)
        scale = std::min(static_cast<double>(target.cx) / own.cx, static_cast<double>(target.cy) / own.cy);
    return {Limited(target.cx / scale), Limited(target.cy / scale)};
}

Metafile RecordMetafile(SIZE pixels, const std::function<void(HDC, SIZE)>& drawing) {
    // In the screen's millimetres, which need not be those of its dots per inch.
    const HDC screen = GetDC(nullptr);
    const RECT frame{0, 0, MulDiv(pixels.cx, 100 * GetDeviceCaps(screen, HORZSIZE), GetDeviceCaps(screen, HORZRES)),
                     MulDiv(pixels.cy, 100 * GetDeviceCaps(screen, VERTSIZE), GetDeviceCaps(screen, VERTRES))};
    const HDC dc = CreateEnhMetaFileW(screen, nullptr, &frame, nullptr);
    ReleaseDC(nullptr, screen);
    if (!dc) throw ComError(E_OUTOFMEMORY);
    try {
        IntersectClipRect(dc, 0, 0, pixels.cx, pixels.cy);
        drawing(dc, pixels);
    } catch (...) {
        DeleteEnhMetaFile(CloseEnhMetaFile(dc));
        throw;
    }
    Metafile recorded(CloseEnhMetaFile(dc));
    if (!recorded) throw ComError(E_OUTOFMEMORY);
    return recorded;
}

WindowsMetafile ToWindowsFormat(const Metafile& picture) {
    const HDC screen = GetDC(nullptr);
    std::vector<BYTE> bits(GetWinMetaFileBits(picture.get(), 0, nullptr, MM_ANISOTROPIC, screen));
    const UINT size = bits.empty() ? 0
                                   : GetWinMetaFileBits(picture.get(), static_cast<UINT>(bits.size()), bits.data(),
                                                        MM_ANISOTROPIC, screen);
    ReleaseDC(nullptr, screen);
    WindowsMetafile older(size ? SetMetaFileBitsEx(size, bits.data()) : nullptr);
    if (!older) throw ComError(E_OUTOFMEMORY);
    return older;
}

void Play(HDC dc, const Metafile& picture, const RECT& place) {
    if (!PlayEnhMetaFile(dc, picture.get(), &place)) throw ComError(E_FAIL);
}

void PlayWindowsFormat(HDC dc, const Metafile& picture, const RECT& place, const RECT& whole) {
    const WindowsMetafile older = ToWindowsFormat(picture);
    Player player{place, whole};
    const DeviceContextState state(dc);
    if (!EnumMetaFile(dc, older.get(), Player::Play, reinterpret_cast<LPARAM>(&player))) throw ComError(E_FAIL);
}

} // namespace dax
