#include "System.h"

#include "Console.h"
#include "Interruption.h"

#include <atomic>
#include <fcntl.h>
#include <io.h>
#include <iostream>
#include <string>
#include <windows.h>

namespace dax::cli {

namespace {

constexpr UINT interruptedCode = 0xC000013A; // STATUS_CONTROL_C_EXIT

// The console's mode while nothing that is typed appears.
std::atomic<HANDLE> hiding = nullptr;
DWORD shown = 0;

void ShowTyping() {
    if (const HANDLE input = hiding.exchange(nullptr)) SetConsoleMode(input, shown);
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
    OnInterrupt();
    // The system ends a program whose window was closed as soon as this returns.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

} // namespace

void PrepareStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr})
        if (!IsTerminal(stream)) _setmode(_fileno(stream), _O_BINARY);
}

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

int EndWithClosedOutput() { return 3; }

void StartListening() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

void EndInterrupted() noexcept {
    ShowTyping();
    TerminateProcess(GetCurrentProcess(), interruptedCode);
    for (;;) Sleep(INFINITE);
}

std::optional<std::string> ReadHiddenLine(TextView question) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (!GetConsoleMode(input, &shown)) {
        PrintError(question);
        std::string line;
        if (!std::getline(std::cin, line)) return {};
        return line;
    }
    hiding = input;
    SetConsoleMode(input,
                   (shown & ~static_cast<DWORD>(ENABLE_ECHO_INPUT)) | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
    PrintError(question);
    wchar_t typed[1024];
    DWORD length = 0;
    const BOOL isRead = ReadConsoleW(input, typed, static_cast<DWORD>(std::size(typed)), &length, nullptr);
    ShowTyping();
    std::cerr << '\n';
    if (!isRead || length == 0) return {};
    std::wstring line(typed, length);
    while (!line.empty() && (line.back() == L'\r' || line.back() == L'\n')) line.pop_back();
    return ToUtf8(Text(line.begin(), line.end()));
}

} // namespace dax::cli
