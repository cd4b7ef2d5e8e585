// The visible rows, found again after the tree has changed: the first of them stays the first.
#pragma once

#include "tree/NodeTree.h"

#include <vector>

namespace dax {

class RowsInView {
public:
    // `first` and the rows below it, as many as are visible; `added` is new and none of them.
    void Store(const NodeTree& tree, const Node* first, int count, const Node* added);
    // A single moved node is ignored; when several move, or some are removed, each counts at its new place.
    void NodeMoved(const Node& node);
    void OnNodesRemoved();

    // The row that is to be the first now; null when none of them is left.
    Node* First(const NodeTree& tree) const;
    bool HeldSelection() const { return heldSelection; }

private:
    Node* Find(const NodeTree& tree, bool withMoved) const;

    std::vector<Text> keys; // nodes may be removed and added again under their keys
    const Node* moved = nullptr;
    bool areSeveral = false, heldSelection = false;
};

} // namespace dax
