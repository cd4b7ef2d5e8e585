// A NodeTree as the maps of a lesson see it, for one call of a map.
#pragma once

#include "content/StoryboardMap.h"
#include "tree/NodeTree.h"

#include <memory>

namespace dax {

// A map may change the tree in other ways, too: once nodes were removed during the call, no reference is valid
// any more, and every use of one throws Error.
class NodeMapTree : public MapTree, private TreeListener {
public:
    explicit NodeMapTree(NodeTree& tree);
    // A tree shared for this call; a host that keeps one of its nodes keeps it, too.
    explicit NodeMapTree(std::shared_ptr<NodeTree> tree);
    ~NodeMapTree() override;
    NodeMapTree(const NodeMapTree&) = delete;
    NodeMapTree& operator=(const NodeMapTree&) = delete;

    // For a host's map, which gets the nodes themselves.
    NodeTree& Nodes() const { return tree; }
    const std::shared_ptr<NodeTree>& Shared() const { return shared; } // null: the tree is not owned
    Node* NodeOf(NodeRef ref) const;
    static NodeRef RefOf(const Node* node) { return NodeRef{reinterpret_cast<std::uintptr_t>(node)}; }

    bool Contains(const Text& key) const override { return tree.Find(key) != nullptr; }
    NodeRef AddChild(NodeRef parent, const Text& key, const Text& caption) override;
    Text Key(NodeRef node) const override { return NodeOf(node)->Key(); }
    NodeRef FirstChild(NodeRef node) const override { return RefOf(NodeOf(node)->FirstChild()); }
    NodeRef Next(NodeRef node) const override { return RefOf(NodeOf(node)->Next()); }

private:
    void NodeRemoving(Node&) override { areNodesRemoved = true; }
    void AllRemoving() override { areNodesRemoved = true; }

    const std::shared_ptr<NodeTree> shared;
    NodeTree& tree;
    bool areNodesRemoved = false;
};

} // namespace dax
