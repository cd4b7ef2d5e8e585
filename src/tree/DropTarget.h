// Where a dragged node would be dropped, and when a drag scrolls: pure functions of rows, pointer and node.
#pragma once

#include "controls/Surface.h"
#include "tree/TreeWindow.h"

namespace dax {

struct DropTarget {
    Node* node = nullptr; // null: it cannot be dropped here
    bool insertAfter = false;
    bool isInto = false; // the drop makes it the first child of the node; there is no mark
    // The row at which the insert mark is drawn, and on which side; null for none.
    Node* markNode = nullptr;
    bool markAfter = false;
    bool operator==(const DropTarget&) const = default;
};

// `row` is the rectangle of the hit node's row.
DropTarget FindDropTarget(const NodeTree& tree, const TreeHit& hit, const Rect& row, Point pointer,
                          const Node& dragged);
// Into the hit node, whatever it is and however its branch is shown.
DropTarget FindDropInto(const TreeHit& hit, const Node& dragged);
// Performs the drop. The selection stays, which is the target during a drop.
void DropNode(NodeTree& tree, Node& node, const DropTarget& target);

namespace ScrollBands {
inline constexpr unsigned Top = 1, Bottom = 2, Left = 4, Right = 8;
} // namespace ScrollBands

// The bands within 32 pixels of an edge, inside or outside, that hold the pointer; a corner lies in two.
unsigned FindScrollBands(const Rect& client, Point pointer);

} // namespace dax
