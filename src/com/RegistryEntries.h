// What the registry holds of a library: the one table from which it registers itself and from which an installer does.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace dax {

struct RegistryEntry {
    std::wstring key;  // below Software\Classes
    std::wstring name; // empty: the key's default value
    std::wstring value;
};

// The library's classes, registered for the file at `path`.
std::vector<RegistryEntry> ClassEntries(const std::wstring& path);

// Its type library and the interfaces in it, as the system enters them when it registers a type library. For
// installers; a library that registers itself leaves this to the system. Throws ComError.
std::vector<RegistryEntry> TypeEntries(const std::wstring& path);

std::wstring GuidText(const GUID& guid);

} // namespace dax
