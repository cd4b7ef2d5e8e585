// The commands of "dax edit": words that change the hierarchy of a loaded course.
#pragma once

#include "Course.h"
#include "base/IDCollection.h"

#include <span>
#include <vector>

namespace dax::cli {

struct EditLine {
    size_t number = 0; // of the line in the file, from 1
    std::vector<Text> words;
};

// The words of each line of a file's text; lines that are empty or begin with # are left out. Words with blanks are
// in double quotes, where quotes and backslashes are escaped by a backslash. Throws UsageError.
std::vector<EditLine> ReadEditLines(TextView text);

// What the commands are, for the help.
extern const TextView EditGrammar;

class Editing {
public:
    explicit Editing(Course& editedCourse) : course(editedCourse) {}

    // Throws UsageError when it is no command, RefusedError when it cannot be done.
    void Do(std::span<const Text> words);
    // Throws RefusedError when the result cannot be saved.
    void CheckSaving();
    // Throws RefusedError, with the holders' names, when somebody has a live edit lock on what the commands change or
    // remove, or on what lies in it. Throws Error.
    void CheckLocks(const Target& target);
    const IDCollection& AddedIDs() const { return addedIDs; } // in the order of their commands
    bool IsAnythingDone() const { return added + updated + removed + moved > 0; }
    Text Summary() const; // "1 added, 2 moved"

private:
    class Words;

    void Add(Words& words);
    void Update(Words& words);
    void Remove(Words& words);
    void Move(Words& words);
    Node& FindBelowTop(const Text& name);
    void Put(Node& node, const Text& where, const Text& targetName);

    Course& course;
    // The changed ones themselves; what lies in them is looked up in the end. What a removed group kept counts as
    // changed.
    IDCollection addedIDs, removedIDs, changedIDs;
    size_t added = 0, updated = 0, removed = 0, moved = 0;
};

} // namespace dax::cli
