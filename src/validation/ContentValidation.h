// Checks that a content database has the tables we need and lets us write to them.
#pragma once

#include "base/Text.h"

#include <cstdint>

namespace dax {

// Follow the connection-test convention (data/Guarded.h): nothing is thrown.
bool ProbeContentTables(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept;

// Writes one row into each of the five tables inside a transaction and rolls it back, whatever happens. Of all this
// only a counter value of velmoraAutonumbers may stay used up.
bool TestContentWrite(const Text& connectionString, int32_t& errorNumber, Text& errorDescription, bool isMDB) noexcept;

// Whether the optional discussion tables exist; false after every error.
bool ProbeTalkTables(const Text& connectionString) noexcept;

} // namespace dax
