// Our own lessons, maps and storyboards as automation objects: wrappers of those in src/content.
#pragma once

#include "ContentObjects.h"

#include "com/Library.h"
#include "content/ContentLesson.h"
#include "ocx/latebound/HostLesson.h"

namespace dax {

IUnknown* CreateLesson(const ClassEntry& entry);
IUnknown* CreateStoryboardMap(const ClassEntry& entry);
IUnknown* CreateStoryboard(const ClassEntry& entry);

// Adapters of what a host has added to a lesson: of an object of this library, with direct access to the object that it
// wraps, or of the host's own.
std::shared_ptr<Storyboard> WrapStoryboard(IDispatch* object); // throw Error for null
std::shared_ptr<StoryboardMap> WrapMap(IDispatch* object);
// The same for a new automation object that wraps one that was read from a text.
std::shared_ptr<Storyboard> WrapNewStoryboard(std::shared_ptr<ContentStoryboard> storyboard);
std::shared_ptr<StoryboardMap> WrapNewMap(std::shared_ptr<ContentMap> map);

} // namespace dax
