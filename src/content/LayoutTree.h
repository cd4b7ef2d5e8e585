// A tree that holds nothing but a layout, for maps that are read without any window or node model.
#pragma once

#include "content/StoryboardMap.h"

#include <unordered_set>
#include <vector>

namespace dax {

class LayoutTree : public MapTree {
public:
    LayoutTree();
    NodeRef Root() const { return NodeRef{1}; }

    bool Contains(const Text& key) const override { return keys.contains(key); }
    NodeRef AddChild(NodeRef parent, const Text& key, const Text& caption) override;
    Text Key(NodeRef node) const override { return At(node).key; }
    NodeRef FirstChild(NodeRef node) const override { return At(node).firstChild; }
    NodeRef Next(NodeRef node) const override { return At(node).next; }

private:
    struct Entry {
        Text key;
        NodeRef firstChild = NodeRef::None, lastChild = NodeRef::None, next = NodeRef::None;
    };
    const Entry& At(NodeRef node) const; // throws Error when there is no such node

    std::vector<Entry> entries; // a reference is the place here, counted from 1
    std::unordered_set<Text> keys;
};

} // namespace dax
