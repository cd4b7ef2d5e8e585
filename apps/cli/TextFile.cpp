#include "TextFile.h"

#include "Command.h"
#include "Console.h"
#include "Interruption.h"
#include "base/Error.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace dax::cli {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF", utf16Mark = "\xFF\xFE", utf16BigMark = "\xFE\xFF";

Text DisplayPath(const Text& path) {
    return path == StandardStream ? Text(u"The standard input") : u"The file '" + path + u"'";
}

Text SystemError() { return FromUtf8(std::generic_category().message(errno)); }

[[noreturn]] void RefuseEncoding(const Text& source, TextView encoding, size_t line) {
    throw RefusedError(source + u" is not valid " + Text(encoding) + u" in line " +
                       ToText(static_cast<long long>(line)) +
                       u". Save it as UTF-8, or as UTF-16 with a byte-order mark.");
}

Text DecodeUtf16(std::string_view bytes, bool isBig, const Text& source) {
    Text text;
    size_t line = 1;
    for (size_t i = 0; i < bytes.size(); i += 2) {
        if (i + 1 == bytes.size()) RefuseEncoding(source, u"UTF-16", line);
        const auto first = static_cast<unsigned char>(bytes[i]), second = static_cast<unsigned char>(bytes[i + 1]);
        const auto unit = static_cast<char16_t>(isBig ? first << 8 | second : second << 8 | first);
        const bool isHigh = unit >= 0xD800 && unit < 0xDC00, isLow = unit >= 0xDC00 && unit < 0xE000;
        const bool followsHigh = !text.empty() && text.back() >= 0xD800 && text.back() < 0xDC00;
        if (isLow != followsHigh || unit == 0) RefuseEncoding(source, u"UTF-16", line);
        if (unit == u'\n') ++line;
        text += unit;
        if (isHigh && i + 3 >= bytes.size()) RefuseEncoding(source, u"UTF-16", line);
    }
    return text;
}

std::string ReadBytes(const Text& path) {
    if (path == StandardStream) return {std::istreambuf_iterator<char>(std::cin), {}};
    errno = 0;
    const std::filesystem::path place(path);
    std::error_code ignored;
    if (std::filesystem::is_directory(place, ignored)) throw RefusedError(u"'" + path + u"' is a folder, not a file.");
    std::ifstream stream(place, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) throw RefusedError(DisplayPath(path) + u" cannot be read: " + SystemError() + u".");
    return bytes;
}

[[noreturn]] void ThrowWriteError(const Text& path, const Text& why) {
    throw Error(ErrorNumbers::PathFileAccess, u"The file '" + path + u"' cannot be written: " + why + u".");
}

} // namespace

Text Decode(std::string_view bytes, const Text& source) {
    for (const std::string_view mark : {utf16Mark, utf16BigMark})
        if (bytes.starts_with(mark)) return DecodeUtf16(bytes.substr(mark.size()), mark == utf16BigMark, source);
    if (bytes.starts_with(utf8Mark)) bytes.remove_prefix(utf8Mark.size());
    size_t number = 0;
    for (size_t at = 0; at < bytes.size(); ++number) {
        const size_t end = std::min(bytes.find('\n', at), bytes.size());
        const std::string_view line = bytes.substr(at, end - at);
        if (ToUtf8(FromUtf8(line)) != line || line.find('\0') != line.npos)
            RefuseEncoding(source, u"UTF-8", number + 1);
        at = end + 1;
    }
    return FromUtf8(bytes);
}

Text ReadTextFile(const Text& path) { return Decode(ReadBytes(path), DisplayPath(path)); }

void WriteTextFile(const Text& path, const Text& text, Encoding encoding, bool mayReplace) {
    std::string bytes;
    if (encoding == Encoding::Utf16) {
        bytes = utf16Mark;
        for (const char16_t unit : text) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
    } else {
        bytes = ToUtf8(text);
    }
    if (path == StandardStream) {
        PrintBytes(bytes);
        return;
    }
    const std::filesystem::path place(path);
    std::error_code failure;
    const bool exists = std::filesystem::exists(place, failure);
    // A pipe or a device is written into; a file is made beside its place first.
    const bool isPlain = !exists || std::filesystem::is_regular_file(place, failure);
    if (exists && isPlain && !mayReplace)
        throw RefusedError(u"'" + path + u"' exists already. Choose another name, or replace it with --force.");
    const std::filesystem::path beside = isPlain ? std::filesystem::path(path + u".new") : place;
    const auto remove = [&] {
        std::error_code ignored;
        if (isPlain) std::filesystem::remove(beside, ignored);
    };
    InterruptScope writing(u"No file was written.", remove);
    errno = 0;
    std::ofstream stream(beside, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        const Text why = SystemError();
        remove();
        ThrowWriteError(path, why);
    }
    writing.Finish();
    if (isPlain) std::filesystem::rename(beside, place, failure);
    if (isPlain && failure) {
        remove();
        ThrowWriteError(path, FromUtf8(failure.message()));
    }
}

} // namespace dax::cli
