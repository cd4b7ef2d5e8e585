// Small helpers that many parts call by name.
#pragma once

#include "data/IDCollection.h"
#include "data/Value.h"

namespace dax::modGeneric {

// False also when looking failed (an impossible path, a drive that is not there). A directory is no file.
bool FileExists(const Text& path) noexcept;
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

// Date and time as hosts show them: the user's short date, a blank, the long time.
Text FormatLocalDateTime(const DateTime& date);

} // namespace dax::modGeneric
