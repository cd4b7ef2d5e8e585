// A host's collection of any kind, queried for one key at a time.
#pragma once

#include "base/Text.h"

namespace dax {

class KeyedCollection {
public:
    virtual ~KeyedCollection() = default;
    // Whether an item with that key can be fetched now. Throws Error when the collection fails instead of answering.
    virtual bool HasKey(const Text& key) = 0;
    // Called before a series of HasKey; the collection's content may have changed since the last series.
    virtual void BeginReading() {}
};

} // namespace dax
