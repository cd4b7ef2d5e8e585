// The tree inside a control as automation objects: the tree, the collection of its nodes, and each node.
#pragma once

#include "DAXControls.h"

#include "ocx/late/ContentLessonAdapters.h"
#include "tree/NodeTree.h"

#include <memory>
#include <unordered_map>

namespace dax {

class NodeObject;

// Holds the tree. A node has one object as long as somebody holds it; when the node goes, the object answers errors.
class TreeObjects final : public NodeObjects, public std::enable_shared_from_this<TreeObjects>, private TreeListener {
public:
    // `pictureOf` answers the number of the picture with that key; it may be missing.
    explicit TreeObjects(std::shared_ptr<NodeTree> tree, std::function<int(const Text&)> pictureOf = nullptr);
    ~TreeObjects() override;
    TreeObjects(const TreeObjects&) = delete;
    TreeObjects& operator=(const TreeObjects&) = delete;

    NodeTree& Tree() const { return *tree; }
    _TreeView* NewView(); // these three answer one reference
    _Nodes* NewNodes();
    _Node* ObjectOf(Node* node); // null for null
    ComPtr<IDispatch> Nodes(const MapTree& nodes) override;
    ComPtr<IDispatch> NodeOf(const MapTree& nodes, MapTree::NodeRef node) override;

    // A node by itself, its key or its place in the order of adding. Null for what is left out or Nothing; throws Error
    // for what is not in the tree.
    Node* Resolve(const VARIANT& reference);
    int PictureOf(const VARIANT& numberOrKey) const;
    void Forget(const Node* node) { objects.erase(node); }

private:
    Node* AtPlace(int64_t place);
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;

    const std::shared_ptr<NodeTree> tree;
    const std::function<int(const Text&)> pictureOf;
    std::unordered_map<const Node*, NodeObject*> objects;
    Node* lastAsked = nullptr; // by its place; so that asking for one after the other is linear
    int64_t lastPlace = 0;
};

} // namespace dax
