// A map: which storyboard of a lesson lies under which, in which order. It exchanges this layout with a tree.
#pragma once

#include "base/Text.h"

#include <cstdint>

namespace dax {

// A tree as a map sees it, independent of who owns the nodes.
class MapTree {
public:
    enum class NodeRef : std::uintptr_t { None = 0 };

    virtual ~MapTree() = default;
    virtual bool Contains(const Text& key) const = 0; // anywhere in the tree
    // As the last child. Throws Error when a node of the tree has the key already.
    virtual NodeRef AddChild(NodeRef parent, const Text& key, const Text& caption) = 0;
    virtual Text Key(NodeRef node) const = 0;
    virtual NodeRef FirstChild(NodeRef node) const = 0;
    virtual NodeRef Next(NodeRef node) const = 0; // the next sibling
};

// It may be a host's object: every call may throw Error and may call back.
class StoryboardMap {
public:
    virtual ~StoryboardMap() = default;
    virtual Text Name() const = 0;
    virtual void SetName(const Text& name) = 0;
    // Adds a node for each storyboard of the map below `mapRoot`, keyed by SBID.
    virtual void FillTree(MapTree& nodes, MapTree::NodeRef mapRoot) = 0;
    // Reads the layout back from the nodes below `mapRoot`.
    virtual void ReadLayout(const MapTree& nodes, MapTree::NodeRef mapRoot) = 0;
    // Two references to one map have the same identity, also when each call makes a new wrapper.
    virtual const void* Identity() const { return this; }
};

} // namespace dax
