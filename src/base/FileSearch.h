// What a listing of a folder finds under a path.
#pragma once

#include "base/Text.h"

#include <functional>

namespace dax {

struct FoundEntry {
    bool isFolder = false;
    bool isReadOnly = false; // the attribute on Windows; elsewhere: no write permission for anyone
};

// Calls back with each entry that a listing of `path` finds, until one is accepted; false when none is. The last
// part of the path may hold wildcards: "*" any units, "?" one, or none before a dot or at the end; ".*" at the end
// finds names that end before it, too. Case matters where it does for the file system. Throws when the search fails.
bool FindEntry(const Text& path, const std::function<bool(const FoundEntry&)>& accepts);

} // namespace dax
