// The rows that the author has before him, found again after the tree has changed: the first of them stays the first.
#pragma once

#include "tree/NodeTree.h"

#include <vector>

namespace dax {

class RowsInView {
public:
    // `first` and the rows below it, as many as show; `added` has come since and is none of them.
    void Remember(const NodeTree& tree, const Node* first, int count, const Node* added);
    void Forget() { *this = {}; }
    // A node that is moved alone goes where the others are; when several move, or some go, each counts as it stands.
    void NodeMoved(const Node& node);
    void NodesGone();

    // The row that comes first now; null when none of them is left.
    Node* First(const NodeTree& tree) const;
    bool HeldSelection() const { return heldSelection; }

private:
    Node* Find(const NodeTree& tree, bool withMoved) const;

    std::vector<Text> keys; // nodes may go and come again under their keys
    const Node* moved = nullptr;
    bool areSeveral = false, heldSelection = false;
};

} // namespace dax
