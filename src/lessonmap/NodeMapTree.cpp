#include "lessonmap/NodeMapTree.h"

#include "base/Error.h"

namespace dax {

NodeMapTree::NodeMapTree(NodeTree& tree) : tree(tree) { tree.AddListener(*this); }

NodeMapTree::NodeMapTree(std::shared_ptr<NodeTree> newTree) : shared(std::move(newTree)), tree(*shared) {
    tree.AddListener(*this);
}

NodeMapTree::~NodeMapTree() { tree.RemoveListener(*this); }

Node* NodeMapTree::NodeOf(NodeRef ref) const {
    if (areNodesRemoved || ref == NodeRef::None) {
        throw Error(ErrorNumbers::Automation, u"The nodes of the map were removed meanwhile.");
    }
    return reinterpret_cast<Node*>(static_cast<std::uintptr_t>(ref));
}

MapTree::NodeRef NodeMapTree::AddChild(NodeRef parent, const Text& key, const Text& caption) {
    return RefOf(&tree.Add(NodeOf(parent), InsertPosition::LastChild, key, caption));
}

} // namespace dax
