// The structure probes of the checking helpers of this module.
#pragma once

#include "data/Guarded.h"
#include "data/modDB.h"

#include <span>

namespace dax {

// All probes on one connection; throws at the first that fails.
inline void ProbeAll(const Text& connectionString, std::span<const TextView> statements) {
    Connection connection;
    connection.Open(connectionString);
    for (const TextView statement : statements) modDB::Probe(connection, Text(statement));
    connection.Close();
}

} // namespace dax
