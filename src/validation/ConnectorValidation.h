// Checks that a connector database is complete and lets a user open at least one catalog.
#pragma once

#include "base/Text.h"

#include <cstdint>

namespace dax {

// Follows the connection-test convention (data/Guarded.h): nothing is thrown.
bool ProbeConnectorTables(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept;

// These two return false after every error.
bool ConnectorHasUsers(const Text& connectionString) noexcept;
// True for a super user without looking at rights, and for a rights row of any value.
bool UserHasListedDatabase(const Text& connectionString, const Text& username) noexcept;

} // namespace dax
