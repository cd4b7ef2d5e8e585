// Queries about the tree window, answered from the model: checks, and the visible rows, top to bottom.
#pragma once

#include "tree/NodeTree.h"

namespace dax::modTreeviewAPI {

// The part of the window at a point, under the system's names and values.
namespace HitFlags {
inline constexpr unsigned Nowhere = 0x1; // below the last row
inline constexpr unsigned OnItemIcon = 0x2;
inline constexpr unsigned OnItemLabel = 0x4;
inline constexpr unsigned OnItemIndent = 0x8;
inline constexpr unsigned OnItemButton = 0x10;
inline constexpr unsigned OnItemRight = 0x20;
inline constexpr unsigned OnItemStateIcon = 0x40; // the check box
inline constexpr unsigned OnItem = OnItemIcon | OnItemLabel | OnItemStateIcon;
} // namespace HitFlags

void SetSubtreeCheck(Node& node, bool checked); // the node and its whole branch
int32_t CountChecked(const NodeTree& tree);
int32_t CountChecked(const Node* top); // in the branch, `top` included

// Rows as an open tree shows them, whether scrolled into view or not. The given node must be such a row.
Node* NextVisible(const Node& node);
Node* PreviousVisible(const Node& node);
Node* LastVisible(const NodeTree& tree); // the last row of all

} // namespace dax::modTreeviewAPI
