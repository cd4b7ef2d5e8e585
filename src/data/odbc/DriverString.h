// The string that a driver gets: with the options that are forced upon it, and marked as that driver reads it.
#pragma once

#include "data/ConnectionString.h"
#include "data/Dialect.h"

namespace dax {

// Throws Error, which names the keyword and never the value, when the driver cannot be told a value.
Text WriteForDriver(ConnectionKeywords keywords, const Dialect& dialect);

} // namespace dax
