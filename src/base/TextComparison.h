// Comparing texts whatever their case, the same on every system and in every locale.
#pragma once

#include "base/Text.h"

namespace dax {

// Letters of every script in lower case, one unit for one unit; what else a text comparison takes as equal stays apart.
Text LowerCase(TextView text);

// The form in which texts are equal that a text comparison of the hosts' Basic takes as equal: case does not count, nor
// whether a letter and its mark are one character or two, nor the width and the kind of kana; "ß" is "ss", "æ" is "ae".
Text FoldCase(TextView text);

} // namespace dax
