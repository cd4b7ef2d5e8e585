// Small helpers that many parts call by name.
#pragma once

#include "base/IDCollection.h"
#include "base/Value.h"

namespace dax::modGeneric {

// False also when looking failed (an impossible path, a drive that is not there). A directory is no file.
bool FileExists(const Text& path) noexcept;
// The attribute of the file alone, on Windows; elsewhere the same means that nobody has the right to write it.
// The folder it lies in does not count.
bool IsFileReadOnly(const Text& path) noexcept;
Text MakeValidFileName(Text name, const Text& replacement);
Text Pluralize(const Text& word, long count);
int32_t VariantToLong(const Value& value, int32_t defaultValue);
Text VariantToString(const Value& value, const Text& defaultValue);

void CollectionAddKey(IDCollection& collection, const Text& key);
void CollectionRemoveKey(IDCollection& collection, const Text& key);
void CollectionAddAll(IDCollection& target, const IDCollection& source);
void CollectionRemoveAll(IDCollection& target, const IDCollection& source);
bool CollectionHasKey(const IDCollection& collection, const Text& key);

// Date and time as hosts show them: the short date, a blank, the long time of the locale; "" is the user's own. Where
// there is none ("C", or a name that the system does not know) it is yyyy-mm-dd hh:mm:ss.
Text FormatLocalDateTime(const DateTime& date, const char* localeName = "");

} // namespace dax::modGeneric
