// Collections of identifiers as automation objects: those that the library hands out, and those that hosts hand in.
#pragma once

#include "DAXControls.h"

#include "base/IDCollection.h"

#include <memory>

namespace dax {

// Answers one reference.
_IDCollection* NewIDCollectionObject(IDCollection identifiers);

// What a host's collection holds; null for null. Of one of ours, the same identifiers; of any other, those that it
// enumerates now. Throws Error when it enumerates nothing, or something else than texts.
std::shared_ptr<const IDCollection> ReadIDCollection(IDispatch* collection);

} // namespace dax
