#include "base/PackedText.h"

#include <cstdint>
#include <cstring>

namespace dax::PackedText {

namespace {

// Texts are looked at and copied in blocks of a fixed size, which compilers take at once.
constexpr size_t blockUnits = 16;

} // namespace

bool NeedsTwoBytes(TextView text) {
    uint64_t all = 0;
    for (; text.size() >= blockUnits; text.remove_prefix(blockUnits)) {
        uint64_t words[blockUnits / 4];
        std::memcpy(words, text.data(), sizeof words);
        for (const uint64_t word : words) all |= word;
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
        for (size_t k = 0; k < blockUnits; ++k) packed[k] = static_cast<char>(units[k]);
        std::memcpy(to, packed, sizeof packed);
    }
    for (const char16_t unit : text) *to++ = static_cast<char>(unit);
    return to;
}

const char* Append(Text& text, const char* from, size_t units, bool isWide) {
    const size_t before = text.size();
    text.resize(before + units);
    char16_t* const to = text.data() + before;
    if (isWide) {
        if (units > 0) std::memcpy(to, from, units * sizeof(char16_t));
    } else {
        for (size_t i = 0; i < units; ++i) to[i] = static_cast<unsigned char>(from[i]);
    }
    return from + BytesOf(units, isWide);
}

Text Unpack(const char*& from, size_t units, bool isWide) {
    Text text;
    from = Append(text, from, units, isWide);
    return text;
}

bool IsPacked(TextView text, const char* from, bool isWide) {
    if (isWide) return text.empty() || std::memcmp(text.data(), from, text.size() * sizeof(char16_t)) == 0;
    for (const char16_t unit : text) {
        if (unit != static_cast<unsigned char>(*from++)) return false;
    }
    return true;
}

} // namespace dax::PackedText
