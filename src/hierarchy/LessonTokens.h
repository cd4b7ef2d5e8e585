// The texts about a lesson that hosts put into templates: titles, identifiers and paths.
#pragma once

#include "content/PropertyCollection.h"
#include "tree/Node.h"

namespace dax {

// Sets the thirteen tokens of a lesson's node in `tokens`; nothing for the root or no node. Path components are safe
// for file names and joined by a backslash; the root adds none.
void SetLessonTokens(const Node* lesson, PropertyCollection& tokens);

} // namespace dax
