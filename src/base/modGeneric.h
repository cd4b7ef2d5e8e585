// Small helpers used by many modules.
#pragma once

#include "base/IDCollection.h"
#include "base/KeyedCollection.h"
#include "base/Value.h"

namespace dax::modGeneric {

// Whether a listing of the path finds a file: read-only, hidden and system files count, folders do not. The last part
// may hold wildcards (see FileSearch.h); of a folder's path with a separator at its end, every file in it is found.
// False also for no path, and when the search failed (an invalid path, a drive that is not there).
bool FileExists(const Text& path) noexcept;
// The attribute of the file or folder alone, on Windows; elsewhere the same means that nobody has permission to write
// it. The folder it lies in does not count. With wildcards, of the first entry found; false when there is none.
bool IsFileReadOnly(const Text& path) noexcept;
Text MakeValidFileName(Text name, const Text& replacement);
Text Pluralize(const Text& word, long count);
// Numbers are rounded, halves to the even one; True is -1; a date is its number of days; for texts see LongText.h. The
// default for nothing and whatever cannot be converted.
int32_t VariantToLong(const Value& value, int32_t defaultValue);
Text VariantToString(const Value& value, const Text& defaultValue);

void CollectionAddKey(IDCollection& collection, const Text& key);
void CollectionRemoveKey(IDCollection& collection, const Text& key);
void CollectionAddAll(IDCollection& target, const IDCollection& source);
void CollectionRemoveAll(IDCollection& target, const IDCollection& source);
bool CollectionHasKey(const IDCollection& collection, const Text& key);
bool CollectionHasKey(KeyedCollection* collection, const Text& key); // false for null

// Date and time as hosts show them: the short date, a blank, the long time of the locale; "" is the user's. When there
// is no such locale ("C", or a name unknown to the system) it is yyyy-mm-dd hh:mm:ss.
Text FormatLocalDateTime(const DateTime& date, const char* localeName = "");

} // namespace dax::modGeneric
