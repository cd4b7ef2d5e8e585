// The text of one lesson's storyboards and maps in a content database.
#pragma once

#include "Target.h"

namespace dax::cli {

// Why a lesson is not changed while somebody edits it.
inline constexpr TextView LockedNotice = u"saving now could overwrite their work, or they could overwrite yours. "
                                         u"Nothing was saved. With --force it is saved all the same.";

class StoredLesson {
public:
    // `lessonName` as Course::Find takes it. Throws Error, and RefusedError when it is no lesson.
    StoredLesson(const Target& target, const Text& lessonName);

    const Text& LessonID() const { return lessonID; }
    const Text& Data() const { return data; } // as it was read; empty for a lesson that has no content yet
    // Throws Error, and RefusedError when the lesson was changed since it was read or, unless forced, somebody edits
    // it.
    void Replace(const Text& newData, bool isForced);

private:
    Text Read(Connection& connection) const;

    Text connectionString, lessonID, data;
};

} // namespace dax::cli
