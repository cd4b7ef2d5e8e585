#include "lessonmap/DetachedMap.h"

#include "lessonmap/MapBuilder.h"
#include "lessonmap/NodeMapTree.h"
#include "tree/modTVW.h"

#include <unordered_set>

namespace dax {

DetachedMap::DetachedMap(std::shared_ptr<StoryboardMap> newMap, Text key)
    : map(std::move(newMap)), rootKey(std::move(key)) {
    NodeMapTree nodes(tree);
    map->FillTree(nodes, NodeMapTree::RefOf(&tree->Add(nullptr, InsertPosition::LastChild, rootKey, rootKey)));
    Root();
}

DetachedMap::~DetachedMap() { tree->Clear(); }

Node& DetachedMap::Root() const {
    Node* const root = tree->Find(rootKey);
    if (!root || root->Parent() || root->Next() || root->Previous()) {
        Refuse(u"The map '" + rootKey + u"' changed the nodes at the top of the tree.");
    }
    return *root;
}

Node* DetachedMap::Find(const Text& sbid) const {
    Node* const node = tree->Find(sbid);
    return node && node->Parent() ? node : nullptr;
}

void DetachedMap::Remove(Node& page, bool includeChildren) {
    if (!includeChildren) modTVW::MoveChildrenAfter(*tree, page);
    tree->Remove(page);
    isChanged = true;
}

void DetachedMap::WriteBack() {
    if (isChanged) map->ReadLayout(NodeMapTree(tree), NodeMapTree::RefOf(&Root()));
}

namespace {

// A key that no page of the lesson has.
Text RootKeyFor(const StoryboardMap& map, const Storyboards& storyboards) {
    const Text name = map.Name(), base = name.empty() ? Text(u"key") : name;
    Text key = base;
    for (int32_t n = 1; storyboards.Item(key); ++n) key = base + u"_" + ToText(n);
    return key;
}

} // namespace

bool RemoveFromHiddenMaps(const NodeTree& shown, const Lesson& lesson, IDCollection& sbids, bool includeChildren) {
    const auto storyboards = lesson.Storyboards();
    if (!storyboards) return false;
    bool isListed = false;
    std::unordered_set<Text> names; // the first of a name is the one that is shown
    for (const auto& map : MapBuilder::ListMaps(lesson)) {
        const Text name = map->Name();
        const Node* const root = shown.Find(name);
        if (names.insert(name).second && root && !root->Parent()) continue;
        DetachedMap hidden(map, RootKeyFor(*map, *storyboards));
        IDCollection branches;
        for (const Text& sbid : sbids) {
            Node* const page = hidden.Find(sbid);
            if (!page) continue;
            isListed = true;
            if (includeChildren) modTVW::AddSubtreeKeys(page, branches);
            hidden.Remove(*page, includeChildren);
        }
        hidden.WriteBack();
        for (const Text& sbid : branches) {
            if (!shown.Find(sbid)) sbids.Add(sbid);
        }
    }
    return isListed;
}

} // namespace dax
