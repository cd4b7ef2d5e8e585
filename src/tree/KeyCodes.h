// Codes of the keys that the tree editors handle: virtual-key codes and, for Enter, Escape and Space, characters too.
#pragma once

namespace dax {

inline constexpr int enterKey = 13, escapeKey = 27, spaceKey = 32, deleteKey = 46;

} // namespace dax
