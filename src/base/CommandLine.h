// Command lines of Windows.
#pragma once

#include "base/Text.h"

namespace dax {

// In double quotes, so that the start-up code of a program reads the same argument: backslashes count only before a
// quote.
Text QuotedArgument(TextView argument);

} // namespace dax
