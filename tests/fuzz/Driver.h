// What both drivers share: bytes that decide what is done, and what every tree must be at every moment.
#pragma once

#include "data/Error.h"
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

// Links agree in both directions, keys find their nodes, the selected node is in the tree, the count is right.
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
        Require(node->Key() != u"temp", "no passing key is left");
    }
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) ++collected;
    Require(hasSelected, "the selected node is in the tree");
    Require(walked == tree.Count() && collected == tree.Count(), "the nodes are counted right");
}

// Each does what the bytes say to a component and to what it should have become; throws Finding.
// The first byte says whether listeners call back, and then only what holds in any case is looked at.
void DriveHierarchy(Input input, const test::TestDatabase& database); // with the tables, whatever their rows
void DriveLessonMap(Input input);

} // namespace dax::fuzz
