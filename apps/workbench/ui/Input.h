// What people type: a file or a connection string.
#pragma once

#include <string>

namespace dax::workbench {

std::wstring Trim(const std::wstring& text);

// A path rather than a connection string: it names an existing file, or has no key=value pair.
bool IsFile(const std::wstring& text);

// What the controls take. A file's path becomes absolute; a file of Access's format gets the provider it needs, any
// other path is a complete connection string. A connection string stays as it is.
std::wstring ConnectionFor(const std::wstring& text);

// The same with dots for passwords, for fields that others see. ConnectionFor takes it as it takes the whole.
std::wstring HidePassword(const std::wstring& connection);

// What opens a catalog that a connector lists; see data/CatalogConnection.h.
std::wstring CatalogOn(const std::wstring& connector, const std::wstring& catalog, const std::wstring& login,
                       const std::wstring& password);

// The value of the first of these keys (separated by bars, letter case ignored) that a connection string has.
std::wstring ValueOf(const std::wstring& connection, const wchar_t* keys);

// The file that is meant: the path itself, or the data source that a connection string names.
std::wstring FileOf(const std::wstring& text);
// The machine or data source, and the catalog, for the fields that people may leave empty.
std::wstring SourceOf(const std::wstring& text);
std::wstring CatalogOf(const std::wstring& text);

} // namespace dax::workbench
