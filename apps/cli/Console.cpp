#include "Console.h"

#include "Interruption.h"
#include "System.h"
#include "base/Secrets.h"
#include "data/modDB.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace dax::cli {

namespace {

constexpr std::chrono::seconds ReportInterval(1);
constexpr size_t PieceSize = 1 << 16;

// Roughly, as terminals do it: combining marks take nothing, East Asian letters two columns. The
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

// The error's number when it fails.
int Write(std::FILE* stream, std::string_view bytes) {
    errno = 0;
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    return isWritten && std::fflush(stream) == 0 ? 0 : errno != 0 ? errno : EIO;
}

int WriteLine(std::FILE* stream, TextView line) {
#ifdef _WIN32
    if (IsTerminal(stream)) {
        // A console takes UTF-16 whatever its code page.
        std::fflush(stream);
        const int former = _setmode(_fileno(stream), _O_U16TEXT);
        std::fputws((std::wstring(line.begin(), line.end()) + L'\n').c_str(), stream);
        std::fflush(stream);
        _setmode(_fileno(stream), former);
        return 0;
    }
#endif
    return Write(stream, ToUtf8(line) + '\n');
}

void Require(int error) {
    if (error == 0) return;
    // Windows says that an argument is invalid when the reader of a pipe has ended.
    bool isClosed = error == EPIPE;
#ifdef _WIN32
    isClosed = isClosed || error == EINVAL;
#endif
    throw OutputError(u"The output cannot be written: " + FromUtf8(std::generic_category().message(error)) + u".",
                      isClosed);
}

std::vector<Text>& Secrets() {
    static std::vector<Text> secrets;
    return secrets;
}

} // namespace

void Print(TextView line) { Require(WriteLine(stdout, line)); }

void PrintBytes(std::string_view bytes) { Require(Write(stdout, bytes)); }

void Announce(TextView line) {
    try {
        Print(line);
    } catch (const OutputError& error) {
        throw OutputError(error.Message() + u"\nThe change was made: " + Text(line), error.IsClosed());
    }
}

void PrintError(TextView line) { WriteLine(stderr, MaskPasswords(line, Secrets())); }

void AddSecret(const Text& password) {
    if (password.empty()) return;
    const Text quoted = modDB::QuoteSQLString(password); // as statements write it
    Secrets().push_back(quoted.substr(1, quoted.size() - 2));
    Secrets().push_back(password);
}

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
    CheckInterrupt();
    const auto now = std::chrono::steady_clock::now();
    if (now < next) return;
    next = now + ReportInterval;
    if (total == 0) {
        PrintError(what + u": " + ToText(static_cast<long long>(done)));
        return;
    }
    const size_t percent = std::min<size_t>(100, done * 100 / total);
    PrintError(what + u": " + ToText(static_cast<long long>(percent)) + u" %");
}

} // namespace dax::cli
