// A content database with its hierarchy loaded, and the entries in it by the names that people use for them.
#pragma once

#include "Target.h"
#include "hierarchy/GroupEditor.h"

#include <unordered_map>

namespace dax::cli {

// How a command line names the database itself, the top of the hierarchy.
inline constexpr TextView TopName = u"/";

class Course {
public:
    // Loads. Throws Error.
    explicit Course(const Target& target);

    GroupEditor& Editor() { return *editor; }
    NodeTree& Tree() { return editor->Tree(); }
    Node& Root() { return *Tree().First(); }

    // By lessonID or, when no entry has that, by the identifier that exactly one entry has; TopName is the root.
    // Throws RefusedError when there is none, or more than one.
    Node& Find(const Text& name);
    // The same, but null instead of RefusedError.
    Node* TryFind(const Text& name);
    // The node has another identifier now.
    void IdentifierChanged(const Node& node);

    // Throws Error.
    void Save();

private:
    std::vector<Node*> WithIdentifier(const Text& identifier);
    [[noreturn]] void Fail();

    std::shared_ptr<GroupEditor> editor;
    Error failure{0, {}};
    // LessonIDs by identifier; made when first needed. Removed or changed entries are detected at lookup.
    std::unordered_multimap<Text, Text> identifiers;
    bool hasIdentifiers = false;
};

Text TypeName(LessonTypes type);

// What lies under an entry, at every depth.
struct Contents {
    int32_t groups = 0, lessons = 0, others = 0;
    void Add(LessonTypes type);
    void Add(const Contents& more);
};
// For all entries that hold others, in one pass.
std::unordered_map<const Node*, Contents> CountContents(const NodeTree& tree);
// "2 groups, 17 lessons", or "empty".
Text ContentsText(const Contents& contents);
// "1 lesson", "2 lessons", "0 lessons".
Text CountText(int64_t count, const Text& word);

} // namespace dax::cli
