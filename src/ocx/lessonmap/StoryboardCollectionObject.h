// A snapshot of storyboards of a lesson as an automation collection.
#pragma once

#include "DAXControls.h"

#include "content/Storyboard.h"

#include <memory>
#include <vector>

namespace dax {

// Returns one reference.
_StoryboardCollection* ToInterface(std::vector<std::shared_ptr<Storyboard>> storyboards);

} // namespace dax
