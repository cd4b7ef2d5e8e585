// What the checking helpers of this module share: the error convention and the structure probes.
#pragma once

#include "base/Secrets.h"
#include "data/modDB.h"

#include <span>

namespace dax {

// Runs `action` under the connection-test convention: number 0, an empty description and true, or the error's.
template <typename Action>
bool Guarded(int32_t& errorNumber, Text& errorDescription, Action action) noexcept {
    try {
        action();
        errorNumber = 0;
        errorDescription.clear();
        return true;
    } catch (const Error& error) {
        errorNumber = error.Number();
        errorDescription = error.Description();
    } catch (const std::exception& error) {
        errorNumber = ErrorNumbers::Unspecified;
        errorDescription = MaskPasswords(FromUtf8(error.what()));
    }
    return false;
}

// All probes on one connection; throws at the first that fails.
inline void ProbeAll(const Text& connectionString, std::span<const TextView> statements) {
    Connection connection;
    connection.Open(connectionString);
    for (const TextView statement : statements) modDB::Probe(connection, Text(statement));
    connection.Close();
}

} // namespace dax
