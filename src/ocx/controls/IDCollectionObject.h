// Collections of identifiers as automation objects: those that the library returns, and those that hosts pass.
#pragma once

#include "DAXControls.h"

#include "base/IDCollection.h"
#include "base/KeyedCollection.h"

#include <memory>

namespace dax {

// Returns one reference.
_IDCollection* ToInterface(IDCollection identifiers);

// A host's collection, null for null; it is not called before the first lookup. One of ours, live; a dictionary,
// by Exists; whatever has an Item, by its key, which counts as not contained when Item fails with "no such element" or
// returns Nothing; otherwise the texts that a script's array or an enumeration has when the reading begins. Every
// other failure is an Error with a number of ErrorNumbers.h.
std::shared_ptr<KeyedCollection> KeysOf(IDispatch* collection);

} // namespace dax
