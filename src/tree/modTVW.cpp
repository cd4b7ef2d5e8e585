#include "tree/modTVW.h"

#include "base/modGeneric.h"

namespace dax::modTVW {

namespace {

// The node of the branch that post-order visits first.
Node* FirstLeaf(Node* node) {
    while (node->FirstChild()) node = node->FirstChild();
    return node;
}

// Children before their parents.
void SetDescendantsExpanded(Node* top, bool expanded) {
    if (!top || !top->FirstChild()) return;
    const TreeUpdate update(top->Tree());
    for (Node* node = FirstLeaf(top); node != top;) {
        node->SetExpanded(expanded);
        node = node->Next() ? FirstLeaf(node->Next()) : node->Parent();
    }
}

struct Destination {
    Node* relative;
    InsertPosition position;
};

// The target of a movement, which must be possible.
Destination FindDestination(const Node& node, GroupMovementTypes movement) {
    Node* const parent = node.Parent();
    switch (movement) {
    case gmtUp:
        if (node.Previous()) return {node.Previous(), InsertPosition::Before};
        return {parent->Previous(), InsertPosition::LastChild};
    case gmtDown:
        if (node.Next()) return {node.Next(), InsertPosition::After};
        return {parent->Next(), InsertPosition::FirstChild};
    case gmtIndent:
        return {node.Previous(), InsertPosition::LastChild};
    default:
        return {parent, InsertPosition::After};
    }
}

} // namespace

bool IsRootNode(const Node* node) { return !node || !node->Parent(); }

Node* GetRootNode(Node* node) {
    while (node && node->Parent()) node = node->Parent();
    return node;
}

Node* GetFirstRootNode(const NodeTree& tree) { return tree.First(); }

Node* GetNodeByKey(const NodeTree& tree, TextView key) { return tree.Find(key); }

bool NodeExists(const NodeTree& tree, TextView key) { return tree.Find(key) != nullptr; }

Text GetNodeKey(const Node* node) { return node ? node->Key() : Text(); }

int32_t CountDescendants(const Node* node) {
    int32_t count = 0;
    if (!node) return count;
    for (const Node* each = GetNextNode(node, node); each; each = GetNextNode(each, node)) ++count;
    return count;
}

IDCollection GetDescendantKeys(const Node* node) {
    IDCollection keys;
    if (!node) return keys;
    for (const Node* each = GetNextNode(node, node); each; each = GetNextNode(each, node)) keys.Add(each->Key());
    return keys;
}

void AddSubtreeKeys(const Node* node, IDCollection& keys) {
    for (const Node* each = node; each; each = GetNextNode(each, node)) {
        modGeneric::CollectionAddKey(keys, each->Key());
    }
}

Text MakeUniqueKey(const NodeTree& tree, const Text& base) {
    const Text start = base.empty() ? Text(u"key") : base;
    Text key = start;
    for (int32_t n = 1; NodeExists(tree, key); ++n) key = start + u"_" + ToText(n);
    return key;
}

int32_t GetSortPosition(const Node* node) {
    int32_t position = 0;
    for (; node; node = node->Previous()) ++position;
    return position;
}

int32_t GetIndentLevel(const Node* node) {
    int32_t level = -1;
    for (; node; node = node->Parent()) ++level;
    return level;
}

Node* GetNextNode(const Node* node) { return GetNextNode(node, nullptr); }

Node* GetNextNode(const Node* node, const Node* top) {
    if (!node) return nullptr;
    if (node->FirstChild()) return node->FirstChild();
    for (; node && node != top; node = node->Parent()) {
        if (node->Next()) return node->Next();
    }
    return nullptr;
}

bool IsInBranch(const Node* node, const Node* top) {
    while (node && node != top) node = node->Parent();
    return node != nullptr;
}

void ExpandSubtree(Node* node) { SetDescendantsExpanded(node, true); }

void CollapseSubtree(Node* node) { SetDescendantsExpanded(node, false); }

// A window expands many nodes fastest from the leaves up, and collapses them fastest from the top down.
void SetAllExpanded(NodeTree& tree, bool expanded) {
    const TreeUpdate update(tree);
    if (!expanded) {
        for (Node* node = tree.First(); node; node = GetNextNode(node)) {
            if (node->FirstChild()) node->SetExpanded(false);
        }
        return;
    }
    for (Node* top = tree.First(); top; top = top->Next()) {
        for (Node* node = FirstLeaf(top);; node = node->Next() ? FirstLeaf(node->Next()) : node->Parent()) {
            if (node->FirstChild()) node->SetExpanded(true);
            if (node == top) break;
        }
    }
}

IDCollection GetExpandedKeys(const NodeTree& tree) {
    IDCollection keys;
    for (const Node* node = tree.First(); node; node = GetNextNode(node)) {
        if (node->IsExpanded()) keys.Add(node->Key());
    }
    return keys;
}

void RestoreExpanded(NodeTree& tree, const IDCollection& keys) {
    const TreeUpdate update(tree);
    for (const Text& key : keys) {
        if (Node* const node = tree.Find(key)) node->SetExpanded(true);
    }
}

bool CanMoveTreeNode(const NodeTree&, const Node* node, GroupMovementTypes movement) {
    if (IsRootNode(node)) return false;
    const Node* const parent = node->Parent();
    switch (movement) {
    case gmtUp:
        return node->Previous() || (!IsRootNode(parent) && parent->Previous());
    case gmtDown:
        return node->Next() || (!IsRootNode(parent) && parent->Next());
    case gmtIndent:
        return node->Previous() != nullptr;
    case gmtOutdent:
        return parent->Parent() != nullptr;
    }
    return false;
}

// The node itself is relinked: it keeps key, texts, picture, expansion, check and selection, and no
// temporary key can collide with another node's.
bool MoveTreeNode(NodeTree& tree, Node* node, GroupMovementTypes movement) {
    if (!CanMoveTreeNode(tree, node, movement)) return false;
    const Destination to = FindDestination(*node, movement);
    tree.Move(*node, to.relative, to.position);
    return true;
}

void MoveChildrenAfter(NodeTree& tree, Node& node) {
    const TreeUpdate update(tree);
    while (node.LastChild()) tree.Move(*node.LastChild(), &node, InsertPosition::After);
}

void MoveTreeNodeTo(NodeTree& tree, Node* node, Node* target, bool insertAfter) {
    if (!node || !target || IsInBranch(target, node)) return;
    if (!target->Parent()) {
        tree.Move(*node, target, InsertPosition::FirstChild);
    } else {
        tree.Move(*node, target, insertAfter ? InsertPosition::After : InsertPosition::Before);
    }
}

} // namespace dax::modTVW
