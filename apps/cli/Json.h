// JSON as programs read it: one object or array at a time, in UTF-8 when printed.
#pragma once

#include "base/Value.h"

namespace dax::cli {

Text JsonText(TextView text);
// Dates are texts in the form 2026-11-21T16:30:00.
Text JsonValue(const Value& value);

// Collects the members of one object.
class JsonObject {
public:
    JsonObject& Add(TextView name, const Value& value) { return AddRaw(name, JsonValue(value)); }
    JsonObject& Add(TextView name, TextView text) { return AddRaw(name, JsonText(text)); }
    JsonObject& Add(TextView name, const Text& text) { return AddRaw(name, JsonText(text)); }
    JsonObject& Add(TextView name, bool boolean) { return AddRaw(name, boolean ? u"true" : u"false"); }
    JsonObject& AddNumber(TextView name, long long number) { return AddRaw(name, ToText(number)); }
    // What is JSON already.
    JsonObject& AddRaw(TextView name, const Text& json);
    Text Result() const { return u"{" + members + u"}"; }

private:
    Text members;
};

class JsonArray {
public:
    void AddRaw(const Text& json) { items += (items.empty() ? u"" : u",") + json; }
    Text Result() const { return u"[" + items + u"]"; }

private:
    Text items;
};

} // namespace dax::cli
