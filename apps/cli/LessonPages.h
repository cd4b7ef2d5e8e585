// The storyboards of one lesson that a content database keeps, in their maps.
#pragma once

#include "Json.h"
#include "StoredLesson.h"
#include "lessonmap/LessonMapEditor.h"

#include <vector>

namespace dax::cli {

class LessonPages {
public:
    // `lessonName` as Course::Find takes it. Throws Error, and Refusal when it is no lesson or holds none of our own.
    LessonPages(const Target& target, const Text& lessonName);

    void Print(bool hasBoxes) const;
    Text Json() const;

    std::vector<Text> Find(const Text& text, bool isExact); // SBIDs in display order
    Text Describe(const Text& sbid) const;
    Text Json(const Text& sbid) const;

    // By SBID, or by what only one storyboard is called. Throws Refusal.
    void Move(const Text& name, StoryboardMovementTypes movement);
    void Save(bool isForced); // as StoredLesson::Replace

private:
    Text Describe(const Node& node) const;
    JsonObject Properties(const Text& sbid) const;

    StoredLesson stored;
    std::shared_ptr<ContentLesson> lesson;
    std::shared_ptr<LessonMapEditor> editor = LessonMapEditor::Create();
};

} // namespace dax::cli
