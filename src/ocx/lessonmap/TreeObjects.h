// The tree inside a control as automation objects: the tree, the collection of its nodes, and each node.
#pragma once

#include "DAXControls.h"

#include "ocx/latebound/HostLesson.h"
#include "tree/NodeTree.h"

#include <memory>
#include <unordered_map>

namespace dax {

class ControlLink;
class NodeObject;

// Owns the tree. A node has one object as long as it is referenced; when the node is removed, the object returns
// errors.
class TreeObjects final : public std::enable_shared_from_this<TreeObjects>, private TreeListener {
public:
    explicit TreeObjects(std::shared_ptr<NodeTree> tree, std::shared_ptr<ControlLink> control = nullptr);
    ~TreeObjects() override;
    TreeObjects(const TreeObjects&) = delete;
    TreeObjects& operator=(const TreeObjects&) = delete;

    NodeTree& Tree() const { return *tree; }
    ControlLink* Control() const { return control.get(); } // null: a tree without a control
    _TreeView* NewView();                                  // these three return one reference
    _Nodes* NewNodes();
    _Node* ObjectOf(Node* node); // null for null
    // For the maps of a host's lesson. They keep these objects.
    ObjectMakers Makers();

    // A node by itself, its key or its place in the order of adding. Null for what is left out or Nothing; throws Error
    // for what is not in the tree.
    Node* Resolve(const VARIANT& reference);
    int PictureOf(const VARIANT& numberOrKey) const;
    int32_t PlaceOf(const Node& node);
    bool EnsureVisible(Node& node); // true when something had to be opened or scrolled
    void Erase(const Node* node) { objects.erase(node); }

private:
    Node* AtPlace(int64_t place);
    std::shared_ptr<TreeObjects> Of(const MapTree& nodes); // throws Error for the nodes of another tree
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;

    const std::shared_ptr<NodeTree> tree;
    const std::shared_ptr<ControlLink> control;
    std::weak_ptr<TreeObjects> mapObjects; // the objects of a tree that a map fills or reads beside this one
    std::unordered_map<const Node*, NodeObject*> objects;
    Node* lastFound = nullptr; // by its place; so that asking for one after the other is linear
    int64_t lastPlace = 0;
};

} // namespace dax
