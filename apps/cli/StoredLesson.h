// The text of one lesson's storyboards and maps in a content database.
#pragma once

#include "Target.h"

namespace dax::cli {

class StoredLesson {
public:
    // `lessonName` as Course::Find takes it. Throws Error, and Refusal when it is no lesson.
    StoredLesson(const Target& target, const Text& lessonName);

    const Text& LessonID() const { return lessonID; }
    const Text& Data() const { return data; } // as it was read; empty for a lesson that nobody has worked on
    // Throws Error, and Refusal when the lesson was changed since it was read or, unless forced, somebody edits it.
    void Replace(const Text& newData, bool isForced);

private:
    Text Read(Connection& connection) const;

    Text connectionString, lessonID, data;
};

// UTF-8, or UTF-16 with a mark at its beginning. Throws Error.
Text ReadTextFile(const Text& path);
// UTF-8, or UTF-16 with a mark. Throws Error.
void WriteTextFile(const Text& path, const Text& text, bool isUtf16);

} // namespace dax::cli
