// A map in a tree of its own, apart from the one that is shown: for changing the layout of a hidden map.
#pragma once

#include "base/IDCollection.h"
#include "content/Lesson.h"
#include "tree/NodeTree.h"

namespace dax {

class DetachedMap {
public:
    // Makes the map fill the tree under a root with that key. Throws Error when it changes the root.
    DetachedMap(std::shared_ptr<StoryboardMap> map, Text rootKey);
    ~DetachedMap(); // references that a host holds to the nodes become invalid
    DetachedMap(const DetachedMap&) = delete;
    DetachedMap& operator=(const DetachedMap&) = delete;

    const NodeTree& Tree() const { return *tree; }
    // Null when the map does not list the page.
    Node* Find(const Text& sbid) const;
    // With its branch, or with its children in its place. The map is changed by WriteBack.
    void Remove(Node& page, bool includeChildren);
    void WriteBack();

private:
    Node& Root() const;

    const std::shared_ptr<StoryboardMap> map;
    const std::shared_ptr<NodeTree> tree = std::make_shared<NodeTree>();
    const Text rootKey;
    bool isChanged = false;
};

// Takes pages out of the maps that `shown` does not show. Children stay in the map, in the page's place; with
// `includeChildren` those of a page that only such a map lists go with it and are added to `sbids`.
// True when a map listed one of the pages.
bool RemoveFromHiddenMaps(const NodeTree& shown, const Lesson& lesson, IDCollection& sbids, bool includeChildren);

} // namespace dax
