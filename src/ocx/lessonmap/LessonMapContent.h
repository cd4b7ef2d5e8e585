// Lessons and maps that the core has made, as objects of the content object library, for the host to keep.
#pragma once

#include "com/ComPtr.h"
#include "content/Lesson.h"

namespace dax {

// These throw Error when the content object library is neither registered nor beside this one.
ComPtr<IDispatch> MakeMapObject(StoryboardMap& map);
// With the host's own storyboard objects; those that no host has made are left out.
ComPtr<IDispatch> MakeLessonObject(const Lesson& lesson);

} // namespace dax
