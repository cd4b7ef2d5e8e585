// The storyboards of one lesson that a content database keeps, in their maps.
#pragma once

#include "Json.h"
#include "StoredLesson.h"
#include "lessonmap/LessonMapEditor.h"

#include <optional>
#include <vector>

namespace dax::cli {

class LessonPages {
public:
    // `lessonName` as Course::Find takes it. Throws Error, and RefusedError when it is no lesson or holds none of our
    // own, unless it holds nothing and may.
    LessonPages(const Target& target, const Text& lessonName, bool mayBeEmpty);

    void Print(bool hasBoxes) const;
    Text Json() const;

    std::vector<Text> Find(const Text& text, bool isExact); // SBIDs in display order
    Text Describe(const Text& sbid) const;
    Text Json(const Text& sbid) const;

    // Storyboards are named by SBID, or by what only one of them is called. All throw RefusedError.
    void Move(const Text& name, StoryboardMovementTypes movement);
    struct Fields {
        std::optional<Text> title, identifier, type; // those that are given
    };
    // `where` is "in", "before" or "after", the target a storyboard or, for "in", a map; without a target it becomes
    // the last of the default map. The empty SBID means a new one. Returns the SBID.
    Text Add(const Text& sbid, const Fields& fields, TextView where, const Text& target);
    void Update(const Text& name, const Fields& fields);
    void Remove(const Text& name, bool keepsChildren);
    void Save(bool isForced); // as StoredLesson::Replace

private:
    Text Describe(const Node& node) const;
    JsonObject Properties(const Text& sbid) const;
    Text SbidOf(const Text& name);
    // Outside the maps, too.
    std::shared_ptr<ContentStoryboard> StoryboardOf(const Text& name);
    void Fill(ContentStoryboard& storyboard, const Fields& fields) const;
    Node& PlaceOf(TextView where, const Text& target);

    StoredLesson stored;
    std::shared_ptr<ContentLesson> lesson;
    std::shared_ptr<LessonMapEditor> editor = LessonMapEditor::Create();
};

} // namespace dax::cli
