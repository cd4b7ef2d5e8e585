// The way from a hierarchy editor as an automation object to the editor inside it.
#pragma once

#include "DAXControls.h"

#include "hierarchy/GroupEditor.h"

namespace dax {

// Null for null. Throws Error for an editor that is not one of this library's.
std::shared_ptr<GroupEditor> HierarchyOf(_GroupEditor* editor);

} // namespace dax
