// Text of the whole system: UTF-16 on every platform, so that lengths are the ones hosts see.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dax {

using Text = std::u16string;
using TextView = std::u16string_view;

// A byte sequence that is not valid UTF-8 becomes U+FFFD, a lone surrogate likewise in the other direction.
Text FromUtf8(std::string_view utf8);
void AppendUtf8(Text& text, std::string_view utf8); // appends
std::string ToUtf8(TextView text);
void ToUtf8(TextView text, std::string& utf8); // the same

// The same text with U+FFFD for every lone surrogate.
Text ReplaceLoneSurrogates(TextView text);

inline bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xE000; }
// The code point at that index: both halves of a surrogate pair, otherwise the unit itself.
char32_t CodePointAt(TextView text, size_t at);
// Writes it where there is room for two units; returns how many units that took.
size_t WriteCodePoint(char32_t codePoint, char16_t* to);

Text ToText(long long number);
void AppendNumber(Text& text, long long number);
Text Hexadecimal(uint32_t number); // eight digits, as codes of errors are written

// The first units of a text, at most `length`, never cutting a surrogate pair in two.
TextView Shorten(TextView text, size_t length);

// ASCII only, whatever the locale.
bool EqualNoCase(TextView a, TextView b);
Text LowerAscii(TextView text);
TextView TrimBlanks(TextView text);

} // namespace dax
