// The expected state of a tree after any sequence of edits, in the simplest form.
#pragma once

#include "base/Enumerations.h"
#include "tree/modTVW.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace dax::test {

// For each key the keys of its children. The root is "".
class ReferenceTree {
public:
    ReferenceTree() { children[u""]; }
    // As it is in a tree; a node without a key is the root.
    explicit ReferenceTree(const NodeTree& tree) : ReferenceTree() {
        for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node))
            if (!node->Key().empty()) Insert(node->Key(), modTVW::GetNodeKey(node->Parent()), SIZE_MAX);
    }
    void Insert(const Text& key, const Text& under, size_t at) {
        auto& list = children[under];
        list.insert(list.begin() + static_cast<ptrdiff_t>(std::min(at, list.size())), key);
        children[key];
        parents[key] = under;
    }
    void Erase(const Text key) { // a copy: its original may be destroyed
        while (!children[key].empty()) Erase(children[key].front());
        Unlink(key);
        children.erase(key);
        parents.erase(key);
    }
    void Unlink(const Text& key) { std::erase(children[parents[key]], key); }
    void Place(const Text& key, const Text& under, size_t at) {
        Unlink(key);
        auto& list = children[under];
        list.insert(list.begin() + static_cast<ptrdiff_t>(std::min(at, list.size())), key);
        parents[key] = under;
    }
    bool Has(const Text& key) const { return parents.contains(key); }
    size_t Index(const Text& key) const {
        const auto& list = children.at(parents.at(key));
        return static_cast<size_t>(std::find(list.begin(), list.end(), key) - list.begin());
    }
    bool Contains(const Text& top, Text key) const { // the top itself, too
        while (!key.empty() && key != top) key = parents.at(key);
        return key == top;
    }
    void Keys(const Text& top, std::vector<Text>& out) const {
        for (const Text& key : children.at(top)) {
            out.push_back(key);
            Keys(key, out);
        }
    }
    // Removes a key, with what is under it or replaced by that in reverse order, and returns the removed keys.
    // Where the selected one was, the next sibling is selected, else the one before, else the parent.
    std::vector<Text> Remove(const Text key, bool withChildren, Text& selected) {
        const Text parent = parents.at(key);
        std::vector<Text> gone{key};
        if (withChildren) Keys(key, gone);
        while (!withChildren && !children[key].empty()) Place(Text(children[key].front()), parent, Index(key) + 1);
        const auto& siblings = children[parent];
        const size_t index = Index(key);
        const Text next = index + 1 < siblings.size() ? siblings[index + 1] : index > 0 ? siblings[index - 1] : parent;
        if (std::find(gone.begin(), gone.end(), selected) != gone.end()) selected = next;
        Erase(key);
        return gone;
    }
    std::optional<std::pair<Text, size_t>> Destination(const Text& key, int movement) const {
        const Text parent = parents.at(key);
        const auto& siblings = children.at(parent);
        const size_t index = Index(key);
        const bool isTop = parent.empty();
        if (movement == gmtUp && index > 0) return {{parent, index - 1}};
        if (movement == gmtDown && index + 1 < siblings.size()) return {{parent, index + 1}};
        if (movement == gmtIndent && index > 0) return {{siblings[index - 1], SIZE_MAX}};
        if (movement == gmtOutdent && !isTop) return {{parents.at(parent), Index(parent) + 1}};
        if ((movement != gmtUp && movement != gmtDown) || isTop) return {};
        const auto& parentSiblings = children.at(parents.at(parent));
        const size_t place = Index(parent);
        if (movement == gmtUp && place > 0) return {{parentSiblings[place - 1], SIZE_MAX}};
        if (movement == gmtDown && place + 1 < parentSiblings.size()) return {{parentSiblings[place + 1], 0}};
        return {};
    }

    std::map<Text, std::vector<Text>> children;
    std::map<Text, Text> parents;
};

} // namespace dax::test
