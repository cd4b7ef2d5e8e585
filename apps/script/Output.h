// What scripts print, as UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace dax {

// A line to the standard output or, for errors and without passwords, the standard error; written at once.
void PrintLine(std::wstring_view text);
void PrintErrorLine(std::wstring_view text);

// The whole text of a file: UTF-8, or UTF-16 with its mark. Throws std::runtime_error.
std::wstring ReadScript(const wchar_t* path);

} // namespace dax
