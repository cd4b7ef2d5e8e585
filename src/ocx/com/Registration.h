// Entering the library's classes and its type library in the registry, and removing every trace of them.
#pragma once

#include <windows.h>

namespace dax {

enum class Scope { Machine, User };

// Throw ComError; a registration that fails half-way has been undone.
void RegisterLibrary(Scope scope);
// Removes what is there, whatever is missing.
void UnregisterLibrary(Scope scope);

} // namespace dax
