#include "tree/win32/RowsInView.h"

#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

namespace dax {

void RowsInView::Store(const NodeTree& tree, const Node* first, int count, const Node* added) {
    size_t used = 0;
    heldSelection = areSeveral = false;
    moved = nullptr;
    for (const Node* row = first; row && count > 0; row = modTreeviewAPI::NextVisible(*row)) {
        if (row == added) continue;
        if (used == keys.size()) keys.emplace_back();
        keys[used++] = row->Key();
        heldSelection |= row == tree.Selected();
        --count;
    }
    keys.resize(used);
}

void RowsInView::NodeMoved(const Node& node) {
    areSeveral |= moved && moved != &node;
    moved = areSeveral ? nullptr : &node;
}

void RowsInView::OnNodesRemoved() {
    moved = nullptr;
    areSeveral = true;
}

Node* RowsInView::First(const NodeTree& tree) const {
    Node* const other = moved ? Find(tree, false) : nullptr;
    return other ? other : Find(tree, true);
}

// For a row in a collapsed branch, the visible ancestor is taken.
Node* RowsInView::Find(const NodeTree& tree, bool withMoved) const {
    for (const Text& key : keys) {
        Node* const node = key.empty() ? tree.First() : tree.Find(key);
        if (!node || (!withMoved && modTVW::IsInBranch(node, moved))) continue;
        Node* shown = node;
        for (Node* above = node->Parent(); above; above = above->Parent())
            if (!above->IsExpanded()) shown = above;
        return shown;
    }
    return nullptr;
}

} // namespace dax
