#include "tree/DropTarget.h"

#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

namespace dax {

using namespace modTreeviewAPI;

namespace {

constexpr int scrollBand = 32;

DropTarget NextTo(Node* node, bool after) {
    return {.node = node, .insertAfter = after, .markNode = node, .markAfter = after};
}

DropTarget FindOnRoot(const NodeTree& tree, Node* root, const Node& dragged) {
    Node* const child = root->FirstChild();
    if (child && child == &dragged) return {};
    if (root == tree.First()) {
        if (child && root->IsExpanded()) return {.node = root, .markNode = child};
        return NextTo(root, true);
    }
    if (child && !root->IsExpanded()) return NextTo(root, false);
    return NextTo(root, true);
}

} // namespace

DropTarget FindDropTarget(const NodeTree& tree, const TreeHit& hit, const Rect& row, Point pointer,
                          const Node& dragged) {
    if (!hit.node) {
        Node* const last = hit.flags & HitFlags::Nowhere ? LastVisible(tree) : nullptr;
        // A drop into the dragged branch itself is refused.
        if (!last || modTVW::IsInBranch(last, &dragged)) return {};
        return NextTo(last, true);
    }
    if (!hit.node->Parent()) return FindOnRoot(tree, hit.node, dragged);
    if (modTVW::IsInBranch(hit.node, &dragged)) return {};

    const bool after = pointer.y - row.top >= row.Height() / 2;
    if (!after && hit.node == NextVisible(dragged) && hit.node == dragged.Next()) return {};
    if (after && hit.node == PreviousVisible(dragged) && hit.node == dragged.Previous()) return {};
    Node* const child = hit.node->FirstChild();
    if (after && child && child == NextVisible(*hit.node)) {
        if (child == &dragged) return {}; // it is there already
        return NextTo(child, false);
    }
    return NextTo(hit.node, after);
}

DropTarget FindDropInto(const TreeHit& hit, const Node& dragged) {
    if (!hit.node || modTVW::IsInBranch(hit.node, &dragged) || hit.node->FirstChild() == &dragged) return {};
    return {.node = hit.node, .isInto = true};
}

void DropNode(NodeTree& tree, Node& node, const DropTarget& target) {
    if (target.isInto) {
        tree.Move(node, target.node, InsertPosition::FirstChild);
    } else {
        modTVW::MoveTreeNodeTo(tree, &node, target.node, target.insertAfter);
    }
}

unsigned FindScrollBands(const Rect& client, Point pointer) {
    const auto isIn = [pointer](const Rect& rect) {
        return pointer.x >= rect.left && pointer.x < rect.right && pointer.y >= rect.top && pointer.y < rect.bottom;
    };
    const Rect inner{client.left + scrollBand, client.top + scrollBand, client.right - scrollBand,
                     client.bottom - scrollBand};
    const Rect outer{client.left - scrollBand, client.top - scrollBand, client.right + scrollBand,
                     client.bottom + scrollBand};
    if (isIn(inner) || !isIn(outer)) return 0;
    unsigned bands = 0;
    if (pointer.x < inner.left) bands |= ScrollBands::Left;
    if (pointer.y < inner.top) bands |= ScrollBands::Top;
    if (pointer.x >= inner.right) bands |= ScrollBands::Right;
    if (pointer.y >= inner.bottom) bands |= ScrollBands::Bottom;
    return bands;
}

} // namespace dax
