// The string passed to a driver: with the options that are always set, and quoted as that driver reads it.
#pragma once

#include "data/ConnectionString.h"
#include "data/Dialect.h"

namespace dax {

// Throws Error, which names the keyword and never the value, when a value cannot be passed to the driver.
Text WriteForDriver(ConnectionKeywords keywords, const Dialect& dialect);

} // namespace dax
