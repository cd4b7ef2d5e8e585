#include "tree/modTreeviewAPI.h"

#include "tree/modTVW.h"

namespace dax::modTreeviewAPI {

namespace {

Node* LastRow(Node* node) {
    while (node && node->IsExpanded() && node->LastChild()) node = node->LastChild();
    return node;
}

} // namespace

void SetSubtreeCheck(Node& node, bool checked) {
    const TreeUpdate update(node.Tree());
    for (Node* each = &node; each; each = modTVW::GetNextNode(each, &node)) each->SetChecked(checked);
}

int32_t CountChecked(const NodeTree& tree) {
    int32_t count = 0;
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        count += node->IsChecked();
    }
    return count;
}

int32_t CountChecked(const Node* top) {
    int32_t count = 0;
    for (const Node* node = top; node; node = modTVW::GetNextNode(node, top)) count += node->IsChecked();
    return count;
}

Node* NextVisible(const Node& node) {
    if (node.IsExpanded() && node.FirstChild()) return node.FirstChild();
    const Node* each = &node;
    while (each && !each->Next()) each = each->Parent();
    return each ? each->Next() : nullptr;
}

Node* PreviousVisible(const Node& node) { return node.Previous() ? LastRow(node.Previous()) : node.Parent(); }

Node* LastVisible(const NodeTree& tree) { return LastRow(tree.Last()); }

} // namespace dax::modTreeviewAPI
