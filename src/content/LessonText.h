// A lesson as text: one record per line, its fields separated by tabs. The format is described in
// docs/content-objects-lesson.md.
#pragma once

#include "content/ContentLesson.h"

namespace dax::LessonText {

// Writes any lesson, also a host's; its exceptions reach the caller.
Text Save(const Lesson& lesson);
// Throws Error with the number of the line that is wrong.
std::shared_ptr<ContentLesson> Load(TextView text);

} // namespace dax::LessonText
