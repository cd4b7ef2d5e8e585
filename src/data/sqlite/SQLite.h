// The only file that includes the SQLite header, and handles that free themselves.
#pragma once

#include <memory>

#include <sqlite3.h>

namespace dax {

struct SQLiteCloser {
    void operator()(sqlite3* file) const noexcept { sqlite3_close_v2(file); }
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};

using SQLiteHandle = std::unique_ptr<sqlite3, SQLiteCloser>;
using SQLiteStatementHandle = std::unique_ptr<sqlite3_stmt, SQLiteCloser>;

} // namespace dax
