#include "ocx/latebound/HostLesson.h"

#include "base/Error.h"

namespace dax {

void HostMap::RequireMakers() const {
    if (!makers.makeNodes || !makers.makeNode)
        throw Error(ErrorNumbers::Automation,
                    u"The map '" + Name() + u"' belongs to the host, and only the host can read it.");
}

void HostMap::FillTree(MapTree& nodes, MapTree::NodeRef mapRoot) {
    RequireMakers();
    const auto collection = makers.makeNodes(nodes);
    const auto root = makers.makeNode(nodes, mapRoot);
    Call(L"FillTree", {Variant(collection.Get()), Variant(root.Get())});
}

void HostMap::ReadLayout(const MapTree& nodes, MapTree::NodeRef mapRoot) {
    RequireMakers();
    Call(L"ReadLayout", {Variant(makers.makeNode(nodes, mapRoot).Get())});
}

std::shared_ptr<Storyboard> HostStoryboards::Item(const Text& sbid) const {
    const auto found = ObjectFrom(TryGetItem(L"Item", Variant(TextView(sbid))));
    return found ? std::make_shared<HostStoryboard>(found.Get()) : nullptr;
}

void HostStoryboards::Add(const std::shared_ptr<Storyboard>& storyboard) {
    IDispatch* const added = HostObjectOf(storyboard);
    if (!added) throw Error(ErrorNumbers::Automation, u"The storyboard is not a COM object.");
    Call(L"Add", {Variant(added)});
}

std::vector<std::shared_ptr<Storyboard>> HostStoryboards::All() const {
    std::vector<std::shared_ptr<Storyboard>> all;
    for (const auto& each : Elements()) {
        if (each) all.push_back(std::make_shared<HostStoryboard>(each.Get()));
    }
    return all;
}

std::shared_ptr<StoryboardMap> HostMaps::MapFrom(const Variant& value) const {
    const auto map = ObjectFrom(value);
    return map ? std::make_shared<HostMap>(map.Get(), makers) : nullptr;
}

void HostMaps::Add(const std::shared_ptr<StoryboardMap>& map) {
    ComPtr<IDispatch> added = HostObjectOf(map);
    if (!added && map && makers.makeMap) added = makers.makeMap(*map);
    if (!added) throw Error(ErrorNumbers::Automation, u"The map is not a COM object.");
    Call(L"Add", {Variant(added.Get())});
}

void HostMaps::SetDefaultMap(const std::shared_ptr<StoryboardMap>& map) { PutObject(L"DefaultMap", HostObjectOf(map)); }

std::shared_ptr<StoryboardMaps> HostLesson::Maps() const {
    const auto maps = ObjectFrom(Call(L"Maps"));
    return maps ? std::make_shared<HostMaps>(maps.Get(), makers) : nullptr;
}

std::shared_ptr<Storyboards> HostLesson::Storyboards() const {
    const auto storyboards = ObjectFrom(Call(L"Storyboards"));
    return storyboards ? std::make_shared<HostStoryboards>(storyboards.Get()) : nullptr;
}

} // namespace dax
