#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace dax {

namespace {

constexpr char16_t Replacement = 0xFFFD;

// What the first byte of a sequence determines: how many bytes follow, and the bounds of the first of them.
struct Lead {
    int following;
    unsigned char low, high;
    unsigned char bits;
};

Lead LeadOf(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF, static_cast<unsigned char>(byte & 0x1F)};
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF), static_cast<unsigned char>(byte & 0x0F)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF), static_cast<unsigned char>(byte & 0x07)};
    }
    return {};
}

// Writes a character that is not ASCII where there is room, and returns how many bytes that took.
size_t WriteUtf8(char32_t point, char* utf8) {
    size_t taken = 0;
    if (point < 0x800) {
        utf8[taken++] = static_cast<char>(0xC0 | (point >> 6));
    } else {
        if (point < 0x10000) {
            utf8[taken++] = static_cast<char>(0xE0 | (point >> 12));
        } else {
            utf8[taken++] = static_cast<char>(0xF0 | (point >> 18));
            utf8[taken++] = static_cast<char>(0x80 | ((point >> 12) & 0x3F));
        }
        utf8[taken++] = static_cast<char>(0x80 | ((point >> 6) & 0x3F));
    }
    utf8[taken++] = static_cast<char>(0x80 | (point & 0x3F));
    return taken;
}

// Copies what is ASCII at the front, in blocks that take a few instructions: nearly all text is nothing else.
template <typename From, typename To>
size_t CopyAscii(const From* from, size_t length, To* to) {
    constexpr size_t block = 8;
    constexpr uint64_t others = sizeof(From) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    size_t i = 0;
    for (; i + block <= length; i += block) {
        uint64_t words[sizeof(From)];
        std::memcpy(words, from + i, sizeof words);
        uint64_t all = 0;
        for (const uint64_t word : words) all |= word;
        if (all & others) break;
        From units[block]; // not in place: compilers take all of a block at once where nothing can overlap
        To copied[block];
        std::memcpy(units, from + i, sizeof units);
        std::ranges::transform(
            units, copied, [](From unit) { return static_cast<To>(static_cast<std::make_unsigned_t<From>>(unit)); });
        std::memcpy(to + i, copied, sizeof copied);
    }
    for (; i < length && static_cast<std::make_unsigned_t<From>>(from[i]) < 0x80; ++i) to[i] = static_cast<To>(from[i]);
    return i;
}

char16_t LowerUnit(char16_t unit) { return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit; }

} // namespace

Text FromUtf8(std::string_view utf8) {
    Text text;
    AppendUtf8(text, utf8);
    return text;
}

void AppendUtf8(Text& text, std::string_view utf8) {
    size_t i = 0, size = text.size();
    text.resize(size + utf8.size()); // no sequence has more units than bytes
    while (i < utf8.size()) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            const size_t copied = CopyAscii(utf8.data() + i, utf8.size() - i, text.data() + size);
            i += copied;
            size += copied;
            continue;
        }
        ++i;
        const Lead lead = LeadOf(byte);
        char32_t point = lead.bits;
        int taken = 0;
        for (; taken < lead.following && i < utf8.size(); ++taken, ++i) {
            const auto next = static_cast<unsigned char>(utf8[i]);
            if (next < (taken == 0 ? lead.low : 0x80) || next > (taken == 0 ? lead.high : 0xBF)) break;
            point = (point << 6) | (next & 0x3F);
        }
        // What was taken of a broken sequence is one replacement; the byte that broke it starts again.
        const bool isBroken = lead.following == 0 || taken < lead.following;
        size += WriteCodePoint(isBroken ? char32_t{Replacement} : point, text.data() + size);
    }
    text.resize(size);
}

std::string ToUtf8(TextView text) {
    std::string utf8;
    ToUtf8(text, utf8);
    return utf8;
}

void ToUtf8(TextView text, std::string& utf8) {
    utf8.resize(text.size());
    size_t i = CopyAscii(text.data(), text.size(), utf8.data()), size = i;
    if (i < text.size()) utf8.resize(i + (text.size() - i) * 3); // no unit takes more
    while (i < text.size()) {
        if (text[i] < 0x80) {
            const size_t copied = CopyAscii(text.data() + i, text.size() - i, utf8.data() + size);
            i += copied;
            size += copied;
            continue;
        }
        const char32_t point = CodePointAt(text, i);
        i += point < 0x10000 ? 1 : 2;
        size += WriteUtf8(IsSurrogate(point) ? char32_t{Replacement} : point, utf8.data() + size);
    }
    utf8.resize(size);
}

char32_t CodePointAt(TextView text, size_t at) {
    const char32_t high = text[at];
    if ((high & 0xFC00) != 0xD800 || at + 1 == text.size()) return high;
    const char32_t low = text[at + 1];
    return (low & 0xFC00) == 0xDC00 ? 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF) : high;
}

size_t WriteCodePoint(char32_t codePoint, char16_t* to) {
    if (codePoint < 0x10000) {
        to[0] = static_cast<char16_t>(codePoint);
        return 1;
    }
    to[0] = static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    to[1] = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    return 2;
}

Text ReplaceLoneSurrogates(TextView text) {
    Text result(text);
    for (size_t i = 0; i < result.size();) {
        if (!IsSurrogate(result[i])) {
            ++i;
            continue;
        }
        const char32_t character = CodePointAt(result, i);
        i += WriteCodePoint(IsSurrogate(character) ? char32_t{Replacement} : character, result.data() + i);
    }
    return result;
}

Text ToText(long long number) {
    Text text;
    AppendNumber(text, number);
    return text;
}

Text Hexadecimal(uint32_t number) {
    constexpr char16_t digits[] = u"0123456789ABCDEF";
    Text text;
    for (int shift = 28; shift >= 0; shift -= 4) text += digits[(number >> shift) & 15];
    return text;
}

void AppendNumber(Text& text, long long number) {
    char digits[24];
    char16_t units[std::size(digits)];
    const char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    text.append(units, static_cast<size_t>(std::copy(std::cbegin(digits), end, units) - units));
}

TextView Shorten(TextView text, size_t length) {
    if (text.size() <= length) return text;
    const bool cutsPair = length > 0 && CodePointAt(text, length - 1) >= 0x10000;
    return text.substr(0, cutsPair ? length - 1 : length);
}

bool EqualNoCase(TextView a, TextView b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return LowerUnit(x) == LowerUnit(y); });
}

Text LowerAscii(TextView text) {
    Text lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerUnit);
    return lower;
}

TextView TrimBlanks(TextView text) {
    const size_t first = text.find_first_not_of(u' ');
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

} // namespace dax
