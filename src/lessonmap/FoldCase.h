// Comparing texts whatever their case, the same on every system and in every locale.
#pragma once

#include "base/Text.h"

namespace dax {

// Lower case of the alphabets that have two: Latin with its accents, Greek, Cyrillic, Armenian, full-width Latin. One
// unit becomes one unit, so that positions stay.
Text FoldCase(TextView text);

} // namespace dax
