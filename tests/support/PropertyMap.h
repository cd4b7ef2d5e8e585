// The properties that a control writes: those that differ from their defaults.
#pragma once

#include "controls/PropertyBag.h"

#include <map>

namespace dax::test {

struct PropertyMap : PropertyBag, std::map<Text, Value> {
    Value ReadProperty(const Text& name, const Value& usual) override { return contains(name) ? at(name) : usual; }
    void WriteProperty(const Text& name, const Value& value, const Value& usual) override {
        if (value != usual) insert_or_assign(name, value);
    }
};

} // namespace dax::test
