// What this process holds of the system, to see that creating and releasing controls leaks nothing.
#pragma once

#include "windows/WindowCounts.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace dax::test {

struct ResourceCounts {
    int windows = WindowCount();
    int objects = GdiObjectCount();
    int handles = HandleCount();
    size_t bytes = HeapBytes(); // in use, of all heaps

private:
    // Wine does not count them (GetProcessHandleCount answers 0), but lists those of all processes.
    static int HandleCount() {
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

    static size_t HeapBytes() {
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

} // namespace dax::test
