// The engine that the product carries.
#pragma once

#include "base/Text.h"

namespace dax {

// Its name and version, as the engine reports them.
Text BuiltInEngine();

} // namespace dax
