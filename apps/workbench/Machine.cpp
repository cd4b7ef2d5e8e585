#include "Machine.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

namespace dax::workbench {

namespace {

std::wstring FirstAddress() {
    std::wstring address = L"127.0.0.1";
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return address;
    char name[256] = {};
    addrinfo requested{};
    requested.ai_family = AF_INET;
    addrinfo* found = nullptr;
    if (gethostname(name, sizeof name) == 0 && getaddrinfo(name, nullptr, &requested, &found) == 0 && found) {
        const auto* v4 = reinterpret_cast<const sockaddr_in*>(found->ai_addr);
        const auto* octets = reinterpret_cast<const unsigned char*>(&v4->sin_addr);
        address.clear();
        for (int i = 0; i < 4; ++i) address += (i ? L"." : L"") + std::to_wstring(octets[i]);
        freeaddrinfo(found);
    }
    WSACleanup();
    return address;
}

// The true version; the documented call reports at most the version that the program's manifest names.
std::wstring SystemVersion() {
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    const auto get = reinterpret_cast<GetVersion>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll"), "RtlGetVersion")));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (!get || get(&version) != 0) return L"Windows";
    return L"Windows " + std::to_wstring(version.dwMajorVersion) + L"." + std::to_wstring(version.dwMinorVersion) +
           L"." + std::to_wstring(version.dwBuildNumber);
}

} // namespace

Machine ThisMachine() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &length);
    return {name, FirstAddress(), SystemVersion(), DAX_VERSION};
}

} // namespace dax::workbench
