// Helpers for nodes of any tree, with documented names. "Nothing" is a null pointer; none
// of these throws unless its comment says so. All are linear in the nodes that they touch, whatever the tree's shape.
#pragma once

#include "base/Enumerations.h"
#include "base/IDCollection.h"
#include "tree/NodeTree.h"

namespace dax::modTVW {

bool IsRootNode(const Node* node); // true for nothing too
Node* GetRootNode(Node* node);
Node* GetFirstRootNode(const NodeTree& tree);
Node* GetNodeByKey(const NodeTree& tree, TextView key);
bool NodeExists(const NodeTree& tree, TextView key);
Text GetNodeKey(const Node* node);

int32_t CountDescendants(const Node* node);
IDCollection GetDescendantKeys(const Node* node);
void AddSubtreeKeys(const Node* node, IDCollection& keys);
Text MakeUniqueKey(const NodeTree& tree, const Text& base);
int32_t GetSortPosition(const Node* node); // 1 for the first sibling, 0 for nothing
int32_t GetIndentLevel(const Node* node);  // 0 for a root, -1 for nothing
Node* GetNextNode(const Node* node);       // in pre-order, through the whole tree
// The same within the branch of `top`: nothing after its last node.
Node* GetNextNode(const Node* node, const Node* top);
bool IsInBranch(const Node* node, const Node* top); // `top` itself is in its branch

void ExpandSubtree(Node* node); // the descendants, not the node itself
void CollapseSubtree(Node* node);
void SetAllExpanded(NodeTree& tree, bool expanded);
IDCollection GetExpandedKeys(const NodeTree& tree);
void RestoreExpanded(NodeTree& tree, const IDCollection& keys);

bool CanMoveTreeNode(const NodeTree& tree, const Node* node, GroupMovementTypes movement);
// Up from a first child leads to the end of the parent's previous sibling, down from a last child to the beginning of
// the parent's next one. False, and nothing done, when the node cannot move so.
bool MoveTreeNode(NodeTree& tree, Node* node, GroupMovementTypes movement);
// Moves the node's children after it, one level higher and in their order.
void MoveChildrenAfter(NodeTree& tree, Node& node);
// A drop. On a node without a parent: as its first child; else next to the target. Nothing is done when the target
// lies in the node's own branch.
void MoveTreeNodeTo(NodeTree& tree, Node* node, Node* target, bool insertAfter);

} // namespace dax::modTVW
