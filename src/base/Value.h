// A field, a parameter or a property: nothing (NULL), a Boolean, a number, a text or a date.
#pragma once

#include "base/Text.h"

#include <cstdint>
#include <variant>

namespace dax {

// A moment of local time as the databases keep it. `fraction` counts nanoseconds.
struct DateTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    uint32_t fraction = 0;
    auto operator<=>(const DateTime&) const = default;
};

DateTime Now();

using Value = std::variant<std::monostate, bool, int64_t, double, Text, DateTime>;

inline bool IsNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }

} // namespace dax
