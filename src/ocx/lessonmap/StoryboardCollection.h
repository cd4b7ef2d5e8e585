// Storyboards of a lesson, as they were when they were asked for, as an automation collection.
#pragma once

#include "DAXControls.h"

#include "content/Storyboard.h"

#include <memory>
#include <vector>

namespace dax {

// Returns one reference.
_StoryboardCollection* ToInterface(std::vector<std::shared_ptr<Storyboard>> storyboards);

} // namespace dax
