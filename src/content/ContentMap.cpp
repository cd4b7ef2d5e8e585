#include "content/ContentMap.h"

#include "base/Error.h"

#include <unordered_set>

namespace dax {

namespace {

using NodeRef = MapTree::NodeRef;

// A host's nodes could be endless.
constexpr size_t maxNodes = 1'000'000;

[[noreturn]] void Refuse(const Text& description) { throw Error(ErrorNumbers::Automation, description); }

} // namespace

void ContentMap::FillTree(MapTree& nodes, NodeRef mapRoot) {
    const auto filling = layout;
    std::vector<NodeRef> parents{mapRoot}; // by the depth of the child, from 1
    for (const LayoutEntry& entry : *filling) {
        parents.resize(static_cast<size_t>(entry.depth));
        const NodeRef parent = parents.back();
        parents.push_back(nodes.Contains(entry.sbid) ? parent : nodes.AddChild(parent, entry.sbid, entry.sbid));
    }
}

void ContentMap::ReadLayout(const MapTree& nodes, NodeRef mapRoot) {
    struct Step {
        NodeRef node;
        int32_t depth;
    };
    std::vector<LayoutEntry> entries;
    std::unordered_set<Text> seen;
    std::vector<Step> path; // ancestors of the node at hand
    Step step{nodes.FirstChild(mapRoot), 1};
    for (size_t count = 0; step.node != NodeRef::None; ++count) {
        if (count == maxNodes) Refuse(u"The map has more nodes than it can hold.");
        Text key = nodes.Key(step.node);
        int32_t below = step.depth;
        if (!key.empty()) {
            if (!seen.insert(key).second) Refuse(u"The storyboard '" + key + u"' occurs twice in the map.");
            entries.push_back({std::move(key), step.depth});
            ++below;
        }
        if (const NodeRef child = nodes.FirstChild(step.node); child != NodeRef::None) {
            path.push_back(step);
            step = {child, below};
            continue;
        }
        step.node = nodes.Next(step.node);
        while (step.node == NodeRef::None && !path.empty()) {
            step = path.back();
            path.pop_back();
            step.node = nodes.Next(step.node);
        }
    }
    layout = std::make_shared<const std::vector<LayoutEntry>>(std::move(entries));
}

void ContentMap::SetLayout(std::vector<LayoutEntry> entries) {
    std::unordered_set<TextView> seen;
    int32_t maxDepth = 1;
    for (const LayoutEntry& entry : entries) {
        if (entry.sbid.empty()) Refuse(u"A storyboard of the map has no SBID.");
        if (entry.depth < 1 || entry.depth > maxDepth) {
            Refuse(u"The storyboard '" + entry.sbid + u"' has no parent at depth " + ToText(entry.depth) + u".");
        }
        if (!seen.insert(entry.sbid).second) Refuse(u"The storyboard '" + entry.sbid + u"' occurs twice in the map.");
        maxDepth = entry.depth + 1;
    }
    layout = std::make_shared<const std::vector<LayoutEntry>>(std::move(entries));
}

} // namespace dax
