// The system resources of this process, to check that nothing that was created is leaked.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace dax::workbench::selftest {

struct ResourceCounts {
    int windows = CountWindows(); // of this thread
    int userObjects = static_cast<int>(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS));
    int gdiObjects = CountGdiObjects();
    int handles = CountHandles();
    size_t bytes = CountBytes(); // in use, of all heaps

    static BOOL CALLBACK CountChild(HWND, LPARAM count) {
        ++*reinterpret_cast<int*>(count);
        return TRUE;
    }
    static BOOL CALLBACK CountWindow(HWND window, LPARAM count) {
        ++*reinterpret_cast<int*>(count);
        EnumChildWindows(window, CountChild, count);
        return TRUE;
    }
    // Top-level windows and all below them, and those under the message-only parent.
    static int CountWindows() {
        int count = 0;
        EnumThreadWindows(GetCurrentThreadId(), CountWindow, reinterpret_cast<LPARAM>(&count));
        for (HWND window = nullptr; (window = FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr;)
            if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) ++count;
        return count;
    }

    // Wine does not count (GetGuiResources answers 0), but keeps the shared table of GDI handles, found through the
    // process environment block: 24 bytes an entry, the type at offset 14, 0 when free.
    static int CountGdiObjects() {
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

    // Wine does not count them either (GetProcessHandleCount answers 0), but lists those of all processes.
    static int CountHandles() {
        DWORD counted = 0;
        if (GetProcessHandleCount(GetCurrentProcess(), &counted) && counted > 0) return static_cast<int>(counted);
        struct Entry {
            ULONG process;
            BYTE kind, flags;
            USHORT handle;
            void* object;
            ULONG access;
        };
        constexpr ULONG listOfHandles = 16;
        constexpr size_t firstEntry = sizeof(void*); // after their number
        using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
        const auto query = reinterpret_cast<Query>(
            reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
        std::vector<char> list(1 << 16);
        ULONG needed = 0;
        while (query(listOfHandles, list.data(), static_cast<ULONG>(list.size()), &needed) != 0) {
            if (list.size() > (1u << 26)) return -1;
            list.resize(list.size() * 2);
        }
        ULONG number = 0;
        std::memcpy(&number, list.data(), sizeof number);
        for (ULONG i = 0; i < number; ++i) {
            Entry entry;
            std::memcpy(&entry, list.data() + firstEntry + i * sizeof entry, sizeof entry);
            if (entry.process == GetCurrentProcessId()) ++counted;
        }
        return static_cast<int>(counted);
    }

    static size_t CountBytes() {
        HANDLE heaps[64];
        const DWORD count = GetProcessHeaps(64, heaps);
        size_t bytes = 0;
        for (DWORD i = 0; i < count && i < 64; ++i) {
            PROCESS_HEAP_ENTRY entry{};
            HeapLock(heaps[i]);
            while (HeapWalk(heaps[i], &entry))
                if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData;
            HeapUnlock(heaps[i]);
        }
        return bytes;
    }
};

} // namespace dax::workbench::selftest
