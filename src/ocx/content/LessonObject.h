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

// How a lesson holds what a host has added: an object of this library with the object that it wraps, or the host's own.
std::shared_ptr<Storyboard> HoldStoryboard(IDispatch* object); // throw Error for null
std::shared_ptr<StoryboardMap> HoldMap(IDispatch* object);
// A new automation object that wraps one that was read from a text, held likewise.
std::shared_ptr<Storyboard> HoldNewStoryboard(std::shared_ptr<ContentStoryboard> storyboard);
std::shared_ptr<StoryboardMap> HoldNewMap(std::shared_ptr<ContentMap> map);

} // namespace dax
