// What text comparison needs of the system: on Windows its functions, elsewhere ours with the same results.
#pragma once

#include "base/Text.h"

namespace dax {

// Letters in lower case, whatever the process's locale, as long as their upper case leads back to them: the others
// ("İ", the Kelvin sign) stay.
Text LowerLetters(TextView text);
// A letter and its combining marks as one character, where there is one.
Text ComposeMarks(TextView text);
// Each ligature as its letters: "ß" as "ss", "æ" as "ae".
Text ExpandLigatures(TextView text);

} // namespace dax
