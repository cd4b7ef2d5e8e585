// A top-level window to put controls into, and a look at what they paint.
#pragma once

#include "controls/win32/ControlWindow.h"
#include "controls/win32/GdiSurface.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace dax::test {

class HostWindow {
public:
    explicit HostWindow(int width = 600, int height = 400)
        : handle(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE | TakesInput, 0, 0, width,
                                 height, nullptr, nullptr, nullptr, nullptr)) {}
    ~HostWindow() {
        if (handle) DestroyWindow(handle);
    }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;
    HWND handle;

private:
    static constexpr DWORD TakesInput = SS_NOTIFY; // a label would let clicks fall through
};

inline Ambient At(int dpi, bool userMode = true) {
    Ambient ambient;
    ambient.dpi = dpi;
    ambient.userMode = userMode;
    ambient.displayName = u"Control1";
    return ambient;
}

// What stands in a window's client area now (0x00RRGGBB, top row first).
inline std::vector<uint32_t> WindowPixels(HWND window) {
    RECT client;
    GetClientRect(window, &client);
    const MemoryBitmap bitmap(client.right, client.bottom);
    const HDC dc = GetDC(window);
    BitBlt(bitmap.Context(), 0, 0, client.right, client.bottom, dc, 0, 0, SRCCOPY);
    ReleaseDC(window, dc);
    const uint32_t* const pixels = bitmap.Pixels();
    std::vector<uint32_t> all(pixels, pixels + static_cast<size_t>(client.right) * static_cast<size_t>(client.bottom));
    for (uint32_t& pixel : all) pixel &= 0xFFFFFF;
    return all;
}

} // namespace dax::test
