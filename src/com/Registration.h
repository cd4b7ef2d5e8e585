// Entering the library's classes and its type library in the registry, and removing every trace of them.
#pragma once

#include <windows.h>

#include <string>

namespace dax {

enum class Scope { Machine, User };

// Throw ComError; a registration that fails half-way has been undone.
void RegisterLibrary(Scope scope);
// Removes what is there, whatever is missing.
void UnregisterLibrary(Scope scope);
// Writes what a registration of the file `path` enters below Software\Classes, the system's part included, to a file of
// UTF-8 text, and registers nothing: per value one line with key, name (empty: the default value) and text,
// separated by tabs. For authors of installers. Throws ComError.
void ListRegistration(const std::wstring& file, const std::wstring& path);

} // namespace dax
