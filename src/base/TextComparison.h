// Comparing texts whatever their case, the same on every system and in every locale.
#pragma once

#include "base/Text.h"

namespace dax {

// Letters of every script in lower case, one unit for one unit; other characters that compare as equal stay different.
Text LowerCase(TextView text);

// A form that is equal for texts that compare as equal in the hosts' Basic (text comparison): case does not count, nor
// whether a letter and its mark are one character or two, nor the width and the kind of kana; "ß" is "ss", "æ" is "ae".
Text FoldCase(TextView text);

} // namespace dax
