// Dates as statements and databases write them, whatever the locale.
#pragma once

#include "base/Value.h"

#include <optional>

namespace dax {

// yyyy/m/d or yyyy-m-d, with or without a time (24 hours, or 12 with AM/PM; "T" or blanks before it; a fraction).
std::optional<DateTime> ParseDate(TextView text);
// yyyy-mm-dd hh:mm:ss, and the fraction of the second when there is one.
Text FormatDate(const DateTime& date);

// The number, which is not negative, with zeros before it: `width` digits at least, 10 at most.
void AppendPadded(Text& text, int number, size_t width);

} // namespace dax
