// The enumerations of the public interface; names and values are part of it.
#pragma once

#include <cstdint>

namespace dax {

enum LessonTypes : int32_t { ltDatabase = -2, ltInvalid = -1, ltGroup = 0, ltLesson = 1, ltUnknown = 2 };

enum LessonLockTypes : int32_t {
    lltConnectionTest = -2, // only tests the connection, no real lock
    lltNone = -1,
    lltEditLesson = 1,
    lltReadLesson = 2,
    lltEditGuide = 3,
    lltReadGuide = 4,
    lltClosed = 5,
};

enum LockDisplayTypes : int32_t {
    ldtAllLocks = 0,
    ldtUserLocks = 1,
    ldtLessonLocks = 2,
    ldtGroupLocks = 3,
    ldtInvalidLocks = 4,
};

enum LockDeleteTypes : int32_t { ldtCanDelete = 0, ldtNoDelete = 1, ldtMixed = 2 };

enum MapChangeTypes : int32_t {
    mctMapsInitialized = 0,
    mctStoryboardAdded = 1,
    mctStoryboardMoved = 2,
    mctStoryboardDeleted = 3,
};

enum LessonMapEditorCaptionStyles : int32_t { csTitle = 0, csIdentifier = 1 };

enum StoryboardMovementTypes : int32_t {
    smtUp = 1,
    smtDown = 2,
    smtIndent = 3,
    smtOutdent = 4,
    smtNextMap = 5,
    smtPreviousMap = 6,
};

enum GroupMovementTypes : int32_t { gmtUp = 1, gmtDown = 2, gmtIndent = 3, gmtOutdent = 4 };

enum FindTypes : int32_t { ftTitle = 1, ftIdentifier = 2, ftID = 4 };

enum ValidationErrorTypes : int32_t {
    veUnexpectedError = -1,
    veNone = 0,
    veMDBNotSelected = 1,
    veMDBNotFound = 2,
    veMDBReadOnly = 3,
    veCantOpenConnection = 4,
    veInvalidDBStructure = 5,
    veCantWrite = 6,
    veNoCommonUsersExist = 7,
    veNoDBListedForUser = 8,
    veNoCommonConnectionDetails = 9,
};

} // namespace dax
