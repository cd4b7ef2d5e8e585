// What all targets share: bytes that decide what is done, and what every tree must be at every moment.
#pragma once

#include "base/Error.h"
#include "support/TestDatabases.h"
#include "tree/NodeTree.h"
#include "tree/modTVW.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace dax::fuzz {

using Input = std::span<const uint8_t>;

// Decisions, one byte each; 0 when none is left.
class Bytes {
public:
    explicit Bytes(Input input) : input(input) {}
    bool AtEnd() const { return input.empty(); }
    size_t Below(size_t number) {
        if (input.empty()) return 0;
        const size_t value = input.front() % number;
        input = input.subspan(1);
        return value;
    }
    template <typename Item, size_t count>
    const Item& OneOf(const Item (&items)[count]) {
        return items[Below(count)];
    }

private:
    Input input;
};

// The input as a text: UTF-8, in which ~ and four hexadecimal digits are one unit, whichever. A line end at the end is
// the file's, not the text's.
Text TextOf(Input input);

// A broken promise; what a fuzzer is after.
class Finding : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline void Require(bool condition, const std::string& promise) {
    if (!condition) throw Finding(promise);
}
inline void RequireEqual(const std::string& is, const std::string& shouldBe, const std::string& what) {
    if (is != shouldBe) throw Finding(what + " is\n  " + is + "\nand should be\n  " + shouldBe);
}
inline void RequireEqual(TextView is, TextView shouldBe, const std::string& what) {
    if (is != shouldBe) throw Finding(what + " is\n  " + ToUtf8(is) + "\nand should be\n  " + ToUtf8(shouldBe));
}

// Links agree in both directions, keys find their nodes, the selected node is in the tree and in sight, the count is
// right.
inline void CheckTree(const NodeTree& tree) {
    int32_t walked = 0, collected = 0;
    bool hasSelected = !tree.Selected();
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) {
        ++walked;
        Require(walked <= tree.Count(), "the tree is finite");
        hasSelected = hasSelected || node == tree.Selected();
        Require(node->Key().empty() || tree.Find(node->Key()) == node, "a key finds its node");
        Require(!node->Next() || node->Next()->Previous() == node, "siblings know each other");
        Require(!node->Next() || node->Next()->Parent() == node->Parent(), "siblings have one parent");
        Require(!node->FirstChild() || node->FirstChild()->Parent() == node, "a child knows its parent");
        Require(!node->FirstChild() == !node->LastChild(), "first and last child come together");
        Require(!node->LastChild() || (node->LastChild()->Parent() == node && !node->LastChild()->Next()),
                "the last child is the last");
    }
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) ++collected;
    Require(hasSelected, "the selected node is in the tree");
    Require(walked == tree.Count() && collected == tree.Count(), "the nodes are counted right");
    for (const Node* up = tree.Selected() ? tree.Selected()->Parent() : nullptr; up; up = up->Parent())
        Require(up->IsExpanded(), "the selected node is in sight");
}

// What can be driven. Each does what the input says, and throws a Finding where a promise is broken.
struct Target {
    const char* name;
    void (*drive)(Input);
    unsigned inputs; // at each test run, besides the seeds
    size_t longest;  // of an input made up
};
std::span<const Target> Targets();

void DriveConnectionString(Input input);
void DriveStatement(Input input);
void DriveProperties(Input input);
void DriveLesson(Input input);
// Their first byte says whether listeners call back, and then only what holds in any case is looked at.
void DriveHierarchy(Input input);
void DriveHierarchyOn(Input input, const test::TestDatabase& database); // with the tables, whatever their rows
void DriveLessonMap(Input input);
void DriveLocks(Input input);
// The first byte chooses a course file, what follows changes it.
void DriveFile(Input input);

} // namespace dax::fuzz
