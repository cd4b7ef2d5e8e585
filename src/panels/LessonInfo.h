// A summary of the entry selected in a GroupEditor: title, kind, number of entries below it, who changed it.
#pragma once

#include "hierarchy/GroupEditor.h"
#include "panels/PanelLayout.h"

#include <functional>

namespace dax {

// The texts of one entry. Lines that do not belong to the kind of entry are empty.
struct LessonInfoTexts {
    int32_t displayKind = ltInvalid; // a LessonTypes value; ltInvalid: nothing to show
    Text title, kindLine, identifierLine, classification, storyboardLine;
    Text groupsLine, lessonsLine;                                    // groups and databases
    Text modifiedLine, modifiedByLine, exportedLine, exportedByLine; // lessons
    bool operator==(const LessonInfoTexts&) const = default;
};

class LessonInfo {
public:
    // The summary of the editor's current entry; nothing for null. The sample stays. Failures of the editor reach the
    // caller.
    void UpdateFrom(GroupEditor* editor);
    // What a host sees while it is being designed, until Clear.
    void ShowDesignSample(const DateTime& now);
    void Clear();

    bool ShowIdentifier() const { return showIdentifier; }
    void SetShowIdentifier(bool value);

    const LessonInfoTexts& Texts() const { return texts; }
    // The lines at a level of detail from 1 (all) to 3 (least).
    PanelLayout Layout(int level) const;
    // Draws the first level that fits; level 3 when none does.
    void Paint(Surface& surface) const;

    std::function<void()> Changed; // repaint

private:
    void Show(LessonInfoTexts newTexts);

    LessonInfoTexts texts;
    bool showIdentifier = true, isSample = false;
};

// "no lessons", "1 lesson", "12 lessons".
Text CountPhrase(int32_t count, const Text& word);

} // namespace dax
