// A top-level window to put controls into, a look at what they paint, and the user's mouse and keyboard.
#pragma once

#include "controls/win32/GdiSurface.h"
#include "controls/win32/MessagePump.h"
#include "controls/win32/WindowBase.h"

#include "../../apps/workbench/selftest/UserInput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
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

// The pixels of a part of a window's client area (0x00RRGGBB, top row first).
inline std::vector<uint32_t> WindowPixels(HWND window, RECT place) {
    RECT client;
    GetClientRect(window, &client);
    IntersectRect(&place, &place, &client);
    const MemoryBitmap bitmap(place.right - place.left, place.bottom - place.top);
    const HDC dc = GetDC(window);
    BitBlt(bitmap.Context(), 0, 0, bitmap.Width(), bitmap.Height(), dc, place.left, place.top, SRCCOPY);
    ReleaseDC(window, dc);
    std::vector<uint32_t> all(bitmap.Pixels(), bitmap.Pixels() + bitmap.Width() * bitmap.Height());
    for (uint32_t& pixel : all) pixel &= 0xFFFFFF;
    return all;
}

inline std::vector<uint32_t> WindowPixels(HWND window) { return WindowPixels(window, {0, 0, 4096, 4096}); }

class UserInput : public workbench::selftest::UserInput {
public:
    explicit UserInput(HWND topLevel) : workbench::selftest::UserInput(topLevel, ProcessPendingMessages) {}

    void Do(const std::function<void(UserInput&)>& script) {
        EXPECT_EQ(Play([&](workbench::selftest::UserInput&) { script(*this); }), 0) << "input that never came";
    }

    // Without any input: pumps until the condition holds.
    static bool Await(const std::function<bool()>& condition) {
        constexpr unsigned timeLimit = 30'000; // milliseconds
        const ULONGLONG end = GetTickCount64() + timeLimit;
        while (!condition()) {
            if (GetTickCount64() > end) return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
            ProcessPendingMessages();
        }
        return true;
    }
};

// The fastest of five, all that follows included, in milliseconds: others may use the machine.
inline double Fastest(const std::function<void(int)>& act) {
    using Clock = std::chrono::steady_clock;
    double fastest = 1e9;
    for (int turn = 0; turn < 5; ++turn) {
        const auto start = Clock::now();
        act(turn);
        ProcessPendingMessages();
        fastest = std::min(fastest, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return fastest;
}

} // namespace dax::test
