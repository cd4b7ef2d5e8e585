#include "Output.h"

#include "base/Secrets.h"
#include "com/Variant.h"

#include <windows.h>

#include <stdexcept>

namespace dax {

namespace {

void Print(DWORD stream, std::wstring_view text) {
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0, written = 0;
    if (GetConsoleMode(handle, &mode)) {
        const std::wstring line = std::wstring(text) + L"\r\n";
        WriteConsoleW(handle, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        return;
    }
    const std::string line = ToUtf8(FromWide(text)) + "\n";
    for (size_t done = 0; done < line.size(); done += written)
        if (!WriteFile(handle, line.data() + done, static_cast<DWORD>(line.size() - done), &written, nullptr) ||
            written == 0)
            return; // the reader closed the pipe
}

} // namespace

void PrintLine(std::wstring_view text) { Print(STD_OUTPUT_HANDLE, text); }
void PrintErrorLine(std::wstring_view text) { Print(STD_ERROR_HANDLE, ToWide(MaskPasswords(FromWide(text)))); }

std::wstring ReadScript(const wchar_t* path) {
    const HANDLE file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("the file cannot be opened");
    std::string bytes;
    char piece[4096];
    DWORD read = 0;
    BOOL isRead = FALSE;
    while ((isRead = ReadFile(file, piece, sizeof piece, &read, nullptr)) && read > 0) bytes.append(piece, read);
    CloseHandle(file);
    if (!isRead) throw std::runtime_error("the file cannot be read");
    if (bytes.starts_with("\xFF\xFE")) {
        std::wstring text;
        for (size_t i = 2; i + 1 < bytes.size(); i += 2)
            text += static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1])
                                                                                    << 8);
        return text;
    }
    const std::string_view mark = "\xEF\xBB\xBF";
    return ToWide(FromUtf8(std::string_view(bytes).substr(bytes.starts_with(mark) ? mark.size() : 0)));
}

} // namespace dax
