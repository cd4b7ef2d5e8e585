// The connection-test convention: on success number 0, an empty description and true; every error goes into the two
// outputs and returns false; nothing is thrown.
#pragma once

#include "base/Error.h"

namespace dax {

template <typename Action>
bool Guarded(int32_t& errorNumber, Text& errorDescription, Action action) noexcept {
    try {
        try {
            action();
            errorNumber = 0;
            errorDescription.clear();
            return true;
        } catch (...) {
            const Error error = CurrentError();
            errorNumber = error.Number();
            errorDescription = error.Description();
        }
    } catch (...) { // no memory for the description
        errorNumber = ErrorNumbers::OutOfMemory;
    }
    return false;
}

} // namespace dax
