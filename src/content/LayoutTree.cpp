#include "content/LayoutTree.h"

#include "base/Error.h"

namespace dax {

LayoutTree::LayoutTree() : entries(1) {}

MapTree::NodeRef LayoutTree::AddChild(NodeRef parent, const Text& key, const Text&) {
    At(parent);
    if (!key.empty() && !keys.insert(key).second) {
        throw Error(ErrorNumbers::Automation, u"The storyboard '" + key + u"' occurs twice in the map.");
    }
    entries.push_back({key});
    const auto added = NodeRef{entries.size()};
    Entry& above = entries[static_cast<size_t>(parent) - 1];
    if (above.lastChild == NodeRef::None) {
        above.firstChild = added;
    } else {
        entries[static_cast<size_t>(above.lastChild) - 1].next = added;
    }
    above.lastChild = added;
    return added;
}

const LayoutTree::Entry& LayoutTree::At(NodeRef node) const {
    const auto number = static_cast<size_t>(node);
    if (number == 0 || number > entries.size()) throw Error(ErrorNumbers::Automation, u"There is no such node.");
    return entries[number - 1];
}

} // namespace dax
