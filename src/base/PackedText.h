// Compact storage for texts: one byte for each UTF-16 unit when all are up to U+00FF, as nearly always.
#pragma once

#include "base/Text.h"

namespace dax::PackedText {

// Above U+00FF.
bool NeedsTwoBytes(TextView text);
inline size_t BytesOf(size_t units, bool isWide) { return units * (isWide ? sizeof(char16_t) : 1); }
// Both yield where the text ends: Pack returns it, Unpack moves `from` there.
char* Pack(TextView text, bool isWide, char* to);
Text Unpack(const char*& from, size_t units, bool isWide);
// Whether the packed text begins with these units.
bool EqualsPacked(TextView text, const char* from, bool isWide);

} // namespace dax::PackedText
