// From SQLite's result codes to the one exception: the numbers of ErrorNumbers.h, and what the user can do.
#pragma once

#include "base/Error.h"
#include "data/sqlite/SQLite.h"

namespace dax {

// The last error on this connection. `result` is an extended code, `path` the file as the host named it.
Error SQLiteError(sqlite3* file, int result, const Text& path);
// An error of ours, with the number that the engine's would have.
Error SQLiteSyntaxError(Text description);

} // namespace dax
