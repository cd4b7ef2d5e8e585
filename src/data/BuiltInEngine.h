// The engine that is part of the product.
#pragma once

#include "base/Text.h"

namespace dax {

// Its name and version, as the engine reports them.
Text BuiltInEngine();

} // namespace dax
