// Receives the changes of a NodeTree as they happen: the window that shows it, a drag in progress.
#pragma once

namespace dax {

class Node;

enum class NodeAspect { Key, Caption, Tag, Image, Expanded, Checked };

// Called in the middle of changes: a listener may read the tree but must not change it. (To react by
// changes, listen to NodeTree::SelectionChanged or to an event of the component.)
class TreeListener {
public:
    virtual ~TreeListener() = default;
    // Between these two many changes may come; SelectionChanged comes once, after the last. Not nested.
    virtual void UpdateStarted() {}
    virtual void UpdateEnded() {}
    // A node added under one that is marked expanded is visible.
    virtual void NodeAdded(Node&) {}
    // The node and its branch are about to be removed.
    virtual void NodeRemoving(Node&) {}
    virtual void AllRemoving() {}
    // The node is about to leave its place with its branch; NodeMoved follows.
    virtual void NodeMoving(Node&) {}
    // The node is in its new place with its branch.
    virtual void NodeMoved(Node&) {}
    virtual void NodeChanged(Node&, NodeAspect) {}
    virtual void SelectionMoved() {}
};

} // namespace dax
