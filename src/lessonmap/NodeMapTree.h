// A NodeTree as the maps of a lesson see it, for one call of a map.
#pragma once

#include "content/StoryboardMap.h"
#include "tree/NodeTree.h"

#include <memory>

namespace dax {

// A map may get at the tree in other ways, too: once nodes were taken away during the call, no reference is trusted
// any more, and every use of one throws Error.
class NodeMapTree : public MapTree, private TreeListener {
public:
    explicit NodeMapTree(NodeTree& tree);
    // A tree that is there for this call; a host that keeps one of its nodes keeps it, too.
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
    void NodeRemoving(Node&) override { areNodesGone = true; }
    void AllRemoving() override { areNodesGone = true; }

    const std::shared_ptr<NodeTree> shared;
    NodeTree& tree;
    bool areNodesGone = false;
};

} // namespace dax
