// What a listing of a folder finds under a path.
#pragma once

#include "base/Text.h"

#include <functional>

namespace dax {

struct FoundEntry {
    bool isFolder = false;
    bool isReadOnly = false; // the attribute on Windows; elsewhere: no write permission for anyone
};

// Asks about the entries that a listing of `path` finds, in their order, until one is taken; false when none is. The
// last part of the path may hold wildcards: "*" any units, "?" one, or none before a dot and at the end; ".*" at the
// end finds names that end before it, too. Case counts where it counts for the file system. Throws when looking fails.
bool FindEntry(const Text& path, const std::function<bool(const FoundEntry&)>& takes);

} // namespace dax
