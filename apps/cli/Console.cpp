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
constexpr size_t PieceSize = 1 << 16;

// Roughly, as terminals do it: marks that stand on another letter take nothing, East Asian letters two columns. The
// two halves of a pair count one each, since nearly all that need a pair are wide.
size_t ColumnsOf(char16_t unit) {
    const auto lies = [unit](char16_t first, char16_t last) { return unit >= first && unit <= last; };
    if (lies(0x0300, 0x036F) || lies(0x0591, 0x05BD) || lies(0x064B, 0x065F) || lies(0x093C, 0x093C) ||
        lies(0x0941, 0x0948) || unit == 0x094D || lies(0x200B, 0x200F) || lies(0xFE00, 0xFE0F)) {
        return 0;
    }
    return lies(0x1100, 0x115F) || lies(0x2E80, 0xA4CF) || lies(0xAC00, 0xD7A3) || lies(0xF900, 0xFAFF) ||
                   lies(0xFE30, 0xFE6F) || lies(0xFF00, 0xFF60)
               ? 2
               : 1;
}

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

void Output::Line(TextView line) {
    waiting += line;
    waiting += u'\n';
    if (waiting.size() >= PieceSize) Finish();
}

void Output::Finish() {
    if (!waiting.empty()) Print(TextView(waiting).substr(0, waiting.size() - 1));
    waiting.clear();
}

Text OneLine(TextView text) {
    Text line(text);
    for (char16_t& unit : line) {
        if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029) unit = u' ';
    }
    return line;
}

size_t Columns(TextView text) {
    size_t columns = 0;
    for (const char16_t unit : text) columns += ColumnsOf(unit);
    return columns;
}

Text Fit(TextView text, size_t columns) {
    Text line = OneLine(text);
    if (Columns(line) > columns) {
        size_t used = 1, end = 0; // the ellipsis takes one
        while (end < line.size() && used + ColumnsOf(line[end]) <= columns) used += ColumnsOf(line[end++]);
        line = Text(Shorten(line, end)) + u"…";
    }
    line.append(columns - std::min(columns, Columns(line)), u' ');
    return line;
}

Progress::Progress(Text label, size_t count)
    : what(std::move(label)), total(count), next(std::chrono::steady_clock::now() + ReportInterval) {}

void Progress::Report(size_t done) {
    const auto now = std::chrono::steady_clock::now();
    if (now < next) return;
    next = now + ReportInterval;
    if (total == 0) {
        Complain(what + u": " + ToText(static_cast<long long>(done)));
        return;
    }
    const size_t percent = std::min<size_t>(100, done * 100 / total);
    Complain(what + u": " + ToText(static_cast<long long>(percent)) + u" %");
}

} // namespace dax::cli
