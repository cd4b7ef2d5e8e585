// Where a host keeps the design-time properties of a control.
#pragma once

#include "base/Value.h"

namespace dax {

class PropertyBag {
public:
    virtual ~PropertyBag() = default;
    // The default when the bag has no such property or one of another kind.
    virtual Value ReadProperty(const Text& name, const Value& defaultValue) = 0;
    // A value equal to the default need not be stored.
    virtual void WriteProperty(const Text& name, const Value& value, const Value& defaultValue) = 0;
};

} // namespace dax
