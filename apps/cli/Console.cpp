#include "Console.h"

#include <algorithm>
#include <cstdio>
#include <string>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace dax::cli {

namespace {

constexpr std::chrono::seconds ReportInterval(1);

void Write(std::FILE* stream, TextView line) {
#ifdef _WIN32
    if (_isatty(_fileno(stream))) {
        // A console takes UTF-16 whatever its code page.
        std::fflush(stream);
        const int former = _setmode(_fileno(stream), _O_U16TEXT);
        std::fputws((std::wstring(line.begin(), line.end()) + L'\n').c_str(), stream);
        std::fflush(stream);
        _setmode(_fileno(stream), former);
        return;
    }
#endif
    const std::string utf8 = ToUtf8(line) + '\n';
    std::fwrite(utf8.data(), 1, utf8.size(), stream);
    std::fflush(stream);
}

} // namespace

void PrepareConsole() {
#ifdef _WIN32
    // Files and pipes get the same bytes on every system.
    if (!_isatty(_fileno(stdout))) _setmode(_fileno(stdout), _O_BINARY);
    if (!_isatty(_fileno(stderr))) _setmode(_fileno(stderr), _O_BINARY);
#endif
}

void Print(TextView line) { Write(stdout, line); }

void Complain(TextView line) { Write(stderr, line); }

Progress::Progress(Text label, size_t count)
    : what(std::move(label)), total(count), next(std::chrono::steady_clock::now() + ReportInterval) {}

void Progress::Report(size_t done) {
    const auto now = std::chrono::steady_clock::now();
    if (now < next) return;
    next = now + ReportInterval;
    const size_t percent = total == 0 ? 100 : std::min<size_t>(100, done * 100 / total);
    Complain(what + u": " + ToText(static_cast<long long>(percent)) + u" %");
}

} // namespace dax::cli
