// Numbers in texts of databases and files: ASCII digits and a decimal point, whatever the locale.
#pragma once

#include "base/Text.h"

#include <charconv>
#include <optional>

namespace dax {

// Nothing unless the whole text is a number of that type: no blanks, no plus sign.
template <typename Number>
std::optional<Number> ReadNumber(TextView text) {
    char ascii[64];
    if (text.size() > sizeof ascii) return std::nullopt;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] > 0x7F) return std::nullopt;
        ascii[i] = static_cast<char>(text[i]);
    }
    Number number{};
    const auto [end, error] = std::from_chars(ascii, ascii + text.size(), number);
    if (error != std::errc() || end != ascii + text.size()) return std::nullopt;
    return number;
}

} // namespace dax
