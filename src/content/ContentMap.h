// The map of our own content objects: the layout as a list in display order.
#pragma once

#include "content/StoryboardMap.h"

#include <memory>
#include <vector>

namespace dax {

struct LayoutEntry {
    Text sbid;
    int32_t depth = 1; // 1 directly under the map's root
    bool operator==(const LayoutEntry&) const = default;
};

class ContentMap : public StoryboardMap {
public:
    explicit ContentMap(Text name = {}) : name(std::move(name)) {}

    Text Name() const override { return name; }
    void SetName(const Text& newName) override { name = newName; }
    // A storyboard that the tree shows already stays where it is; what is under it here moves one level up.
    void FillTree(MapTree& nodes, MapTree::NodeRef mapRoot) override;
    // Nodes without a key are passed over. Throws Error, and keeps the layout, when the nodes form no tree.
    void ReadLayout(const MapTree& nodes, MapTree::NodeRef mapRoot) override;

    const std::vector<LayoutEntry>& Layout() const { return *layout; }
    // Throws Error for an empty or repeated SBID and for an entry more than one level below the one before it.
    void SetLayout(std::vector<LayoutEntry> entries);

private:
    Text name;
    // Replaced as a whole, so that a tree may call back while it is filled.
    std::shared_ptr<const std::vector<LayoutEntry>> layout = std::make_shared<std::vector<LayoutEntry>>();
};

} // namespace dax
