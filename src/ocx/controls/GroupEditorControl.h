// Access to the editor inside a hierarchy editor's automation object.
#pragma once

#include "DAXControls.h"

#include "hierarchy/GroupEditor.h"

namespace dax {

// Null for null. Throws Error for an editor that is not one of this library's.
std::shared_ptr<GroupEditor> EditorOf(_GroupEditor* editor);

} // namespace dax
