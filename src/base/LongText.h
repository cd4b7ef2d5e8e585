// Text read as a long integer.
#pragma once

#include "base/Text.h"

#include <cstdint>
#include <optional>

namespace dax {

// As the hosts' Basic converts text to a long: white space around; a sign before or after, or brackets for a
// negative number; "$"; a decimal point, commas in the whole part, an exponent with e or d; or &H and &O, whose bits
// are the number, with or without a last "&". Halves go to the even number. Nothing for any other text, and for a
// number that does not fit. Digits are those of ASCII, separators and signs those of American English whatever the
// locale, so that what is stored means the same on every machine: deliberate.
std::optional<int32_t> ReadLong(TextView text);

} // namespace dax
