// Dragging one node inside its tree: when a press becomes a drag, where it would drop, what the window shows
// meanwhile, and the drop, which the component carries out. Idle, armed (after a press), dragging.
#pragma once

#include "tree/DropTarget.h"

namespace dax {

class LMEDragDropSupport : private TreeListener {
public:
    LMEDragDropSupport() = default;
    ~LMEDragDropSupport() override;
    LMEDragDropSupport(const LMEDragDropSupport&) = delete;
    LMEDragDropSupport& operator=(const LMEDragDropSupport&) = delete;

    // Null unbinds; a drag in progress ends without a drop.
    void Bind(NodeTree* tree, TreeWindow* window);

    bool Active() const { return isActive; } // a drag is in progress
    void OnMouseDown();
    bool ShouldBeginDrag() const;
    void BeginDrag();  // drags the node under the point of the press
    void OnItemDrag(); // the pointer has moved, or Ctrl went down or came up
    // The target, when there is one, becomes the selected node; then Drop is raised.
    void FinishDrag();
    void CancelDrag();
    void OnTimer(TreeTimer timer);

    const DropTarget& Target() const { return target; }

    Event<Node&> AutoExpand; // the pointer hovers over a collapsed node
    Event<> Ended;           // a drag is over, however it ended; before Drop
    // The dragged node and its target, which is never in its own branch.
    Event<Node&, const DropTarget&> Drop;

private:
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;
    void ShowTarget(const DropTarget& newTarget);

    NodeTree* tree = nullptr;
    TreeWindow* window = nullptr;
    bool isArmed = false;
    bool isActive = false;
    Point pressed;
    Node* dragged = nullptr;
    DropTarget target;
};

} // namespace dax
