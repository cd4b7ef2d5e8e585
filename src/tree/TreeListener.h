// Who follows the changes of a NodeTree as they happen: the window that mirrors it, a drag that is under way.
#pragma once

namespace dax {

class Node;

enum class NodeAspect { Key, Caption, Tag, Image, Expanded, Checked };

// Called in the middle of changes: a listener reads the tree, it does not change it. (Whoever wants to react by
// changing things listens to NodeTree::SelectionChanged or to an event of the component.)
class TreeListener {
public:
    virtual ~TreeListener() = default;
    // Between these two many changes may come; SelectionChanged comes once, after the last. Not nested.
    virtual void UpdateStarted() {}
    virtual void UpdateEnded() {}
    // A node added under one that is marked expanded is visible.
    virtual void NodeAdded(Node&) {}
    // The node and its branch are about to go.
    virtual void NodeRemoving(Node&) {}
    virtual void AllRemoving() {}
    // The node is about to leave its place with its branch; NodeMoved follows.
    virtual void NodeMoving(Node&) {}
    // The node stands in a new place with its branch.
    virtual void NodeMoved(Node&) {}
    virtual void NodeChanged(Node&, NodeAspect) {}
    virtual void SelectionMoved() {}
};

} // namespace dax
