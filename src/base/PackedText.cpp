#include "base/PackedText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace dax::PackedText {

namespace {

// Texts are copied in blocks of a fixed size, which compilers take at once.
constexpr size_t blockUnits = 8;

void Widen(const char* from, size_t units, char16_t* to) {
    for (size_t i = 0; i < units; ++i) to[i] = static_cast<unsigned char>(from[i]);
}

} // namespace

bool NeedsTwoBytes(TextView text) {
    uint64_t all = 0, word = 0;
    constexpr size_t wordUnits = sizeof word / sizeof(char16_t);
    for (; text.size() >= wordUnits; text.remove_prefix(wordUnits)) {
        std::memcpy(&word, text.data(), sizeof word);
        all |= word;
    }
    for (const char16_t unit : text) all |= unit;
    return (all & 0xFF00FF00FF00FF00) != 0;
}

char* Pack(TextView text, bool isWide, char* to) {
    if (isWide) {
        if (!text.empty()) std::memcpy(to, text.data(), text.size() * sizeof(char16_t));
        return to + text.size() * sizeof(char16_t);
    }
    for (; text.size() >= blockUnits; text.remove_prefix(blockUnits), to += blockUnits) {
        char16_t units[blockUnits];
        char packed[blockUnits];
        std::memcpy(units, text.data(), sizeof units);
        std::ranges::transform(units, packed, [](char16_t unit) { return static_cast<char>(unit); });
        std::memcpy(to, packed, sizeof packed);
    }
    for (const char16_t unit : text) *to++ = static_cast<char>(unit);
    return to;
}

Text Unpack(const char*& from, size_t units, bool isWide) {
    Text text(units, u'\0');
    if (isWide) {
        if (units > 0) std::memcpy(text.data(), from, units * sizeof(char16_t));
    } else {
        Widen(from, units, text.data());
    }
    from += BytesOf(units, isWide);
    return text;
}

bool EqualsPacked(TextView text, const char* from, bool isWide) {
    if (isWide) return text.empty() || std::memcmp(text.data(), from, text.size() * sizeof(char16_t)) == 0;
    for (; text.size() >= blockUnits; text.remove_prefix(blockUnits), from += blockUnits) {
        char16_t units[blockUnits];
        Widen(from, blockUnits, units);
        if (std::memcmp(text.data(), units, sizeof units) != 0) return false;
    }
    for (const char16_t unit : text) {
        if (unit != static_cast<unsigned char>(*from++)) return false;
    }
    return true;
}

} // namespace dax::PackedText
