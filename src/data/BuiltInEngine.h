// The engine that the product carries.
#pragma once

#include "base/Text.h"

namespace dax {

// Its name and version, as it tells them itself.
Text BuiltInEngine();

} // namespace dax
