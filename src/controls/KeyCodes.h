// Codes of the keys that controls handle: virtual-key codes and, for Enter, Escape and Space, characters too.
#pragma once

namespace dax {

inline constexpr int enterKey = 13, escapeKey = 27, spaceKey = 32, deleteKey = 46, f5Key = 116;

} // namespace dax
