// Paths of SQLite files: what is refused before it is opened, and the names that SQLite takes.
#pragma once

#include "data/FileKind.h"

#include <string>

namespace dax {

// Throws Error for what cannot be a database: nothing there, a folder, a pipe or device, an Access file.
void RequireDatabaseFile(const Text& path);

// The path in a form that SQLite cannot take for a URI or the name of a database in memory.
std::string SQLiteName(const Text& path);

} // namespace dax
