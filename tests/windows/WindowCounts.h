// How many windows and GDI objects this process has, to see that none is left behind.
#pragma once

#include "controls/win32/Windows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace dax::test {

inline BOOL CALLBACK CountChild(HWND, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

inline BOOL CALLBACK CountWindow(HWND window, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    EnumChildWindows(window, CountChild, count);
    return TRUE;
}

// Top-level windows of this thread and all below them, and those under the message-only parent.
inline int WindowCount() {
    int count = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountWindow, reinterpret_cast<LPARAM>(&count));
    for (HWND window = nullptr; (window = FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr;)
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) ++count;
    return count;
}

// Wine does not count for us (GetGuiResources answers 0), but keeps the shared table of GDI handles, found through the
// process environment block: 24 bytes an entry, the type at offset 14, 0 when free.
inline int GdiObjectCount() {
    if (const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return static_cast<int>(counted);
    constexpr int entries = 0x4000, entrySize = 24, typeOffset = 14;
    constexpr size_t tableOffset = sizeof(void*) == 8 ? 0xF8 : 0x94;
    using Block = const char*(WINAPI*)();
    const auto block = reinterpret_cast<Block>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
    const auto* table = *reinterpret_cast<const unsigned char* const*>(block() + tableOffset);
    int count = 0;
    for (int entry = 0; entry < entries; ++entry)
        if (table[entry * entrySize + typeOffset] != 0) ++count;
    return count;
}

// What it does leaves nothing behind, but for what the system makes the first times and keeps.
template <typename Cycle>
void ExpectNothingLeft(int times, const Cycle& cycle) {
    for (int count = 0; count < std::min(times, 3); ++count) cycle(count);
    const int windows = WindowCount(), objects = GdiObjectCount();
    EXPECT_GT(objects, 0);
    for (int count = 0; count < times; ++count) {
        cycle(count);
        EXPECT_EQ(WindowCount(), windows) << "time " << count;
        EXPECT_EQ(GdiObjectCount(), objects) << "time " << count;
    }
}

} // namespace dax::test
