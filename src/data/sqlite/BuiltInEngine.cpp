#include "data/BuiltInEngine.h"

#include "data/sqlite/SQLite.h"

namespace dax {

Text BuiltInEngine() { return u"SQLite " + FromUtf8(sqlite3_libversion()); }

} // namespace dax
