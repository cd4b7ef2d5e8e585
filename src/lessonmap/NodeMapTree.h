// A NodeTree as the maps of a lesson see it.
#pragma once

#include "content/StoryboardMap.h"
#include "tree/NodeTree.h"

namespace dax {

class NodeMapTree : public MapTree {
public:
    explicit NodeMapTree(NodeTree& tree) : tree(tree) {}

    // For a host's map, which gets the nodes themselves.
    NodeTree& Nodes() const { return tree; }
    static NodeRef RefOf(const Node* node) { return NodeRef{reinterpret_cast<std::uintptr_t>(node)}; }
    static Node* NodeOf(NodeRef ref) { return reinterpret_cast<Node*>(static_cast<std::uintptr_t>(ref)); }

    bool Contains(const Text& key) const override { return tree.Find(key) != nullptr; }
    NodeRef AddChild(NodeRef parent, const Text& key, const Text& caption) override {
        return RefOf(&tree.Add(NodeOf(parent), Place::LastChild, key, caption));
    }
    Text Key(NodeRef node) const override { return NodeOf(node)->Key(); }
    NodeRef FirstChild(NodeRef node) const override { return RefOf(NodeOf(node)->FirstChild()); }
    NodeRef Next(NodeRef node) const override { return RefOf(NodeOf(node)->Next()); }

private:
    NodeTree& tree;
};

} // namespace dax
