// A property collection as an automation object: the class of the content object library, which the controls return
// as well.
#pragma once

#include "content/PropertyCollection.h"

#include <ole2.h>

namespace dax {

// Returns one reference; null for null. Changes through the object are changes of `properties`.
IDispatch* ToInterface(std::shared_ptr<PropertyCollection> properties);

} // namespace dax
