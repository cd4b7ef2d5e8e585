// The stored text of a property collection: reading and writing it (docs/content-objects.md describes it).
#pragma once

#include "base/Value.h"

#include <functional>

namespace dax::PropertyText {

void WriteHeading(Text& text, TextView name);
void WriteValue(Text& text, TextView name, const Value& value);

// Calls `found` for the heading (with the collection's name) and for each property, in order. Lines that are
// neither are passed over.
void Read(TextView text, const std::function<void(bool isHeading, Text&& name, Value&& value)>& found);

} // namespace dax::PropertyText
