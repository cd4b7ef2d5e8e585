#include "content/ContentLesson.h"

#include "base/Error.h"
#include "content/Utility.h"

namespace dax {

ContentStoryboard::ContentStoryboard() : sbid(Utility::NewIdentifier()) {}

ContentStoryboard::ContentStoryboard(Text sbid, Text title, Text identifier, Text storyboardType)
    : sbid(std::move(sbid)), title(std::move(title)), identifier(std::move(identifier)),
      storyboardType(std::move(storyboardType)) {}

std::shared_ptr<Storyboard> ContentStoryboards::Item(const Text& sbid) const {
    const auto found = iterators.find(sbid);
    return found == iterators.end() ? nullptr : *found->second;
}

void ContentStoryboards::Add(const std::shared_ptr<Storyboard>& storyboard) {
    if (!storyboard) throw Error(ErrorNumbers::InvalidCall, u"There is no storyboard to add.");
    const Text sbid = storyboard->SBID();
    if (sbid.empty()) throw Error(ErrorNumbers::InvalidCall, u"A storyboard without an SBID cannot be added.");
    const auto [found, isNew] = iterators.try_emplace(sbid);
    if (!isNew) throw Error(ErrorNumbers::KeyExists, u"The lesson already has a storyboard '" + sbid + u"'.");
    found->second = order.insert(order.end(), storyboard);
}

void ContentStoryboards::Remove(const Text& sbid) {
    const auto found = iterators.find(sbid);
    if (found == iterators.end()) return;
    const auto gone = *found->second; // its destruction may call back: it is destroyed last
    order.erase(found->second);
    iterators.erase(found);
}

std::shared_ptr<StoryboardMap> ContentMaps::Item(int32_t index) const {
    const auto position = static_cast<size_t>(index); // a negative one is beyond the end, too
    return position < maps.size() ? maps[position] : nullptr;
}

std::shared_ptr<StoryboardMap> ContentMaps::Item(const Text& name) const {
    const auto all = maps; // a host's map may call back
    for (const auto& map : all) {
        if (map->Name() == name) return map;
    }
    return nullptr;
}

void ContentMaps::Add(const std::shared_ptr<StoryboardMap>& map) {
    if (!map) throw Error(ErrorNumbers::InvalidCall, u"There is no map to add.");
    if (!byIdentity.emplace(map->Identity(), map).second)
        throw Error(ErrorNumbers::KeyExists, u"The lesson already has this map.");
    maps.push_back(map);
}

void ContentMaps::SetDefaultMap(const std::shared_ptr<StoryboardMap>& map) {
    const auto found = byIdentity.find(map ? map->Identity() : nullptr);
    if (found == byIdentity.end())
        throw Error(ErrorNumbers::InvalidCall, u"The default map must be one of the lesson's maps.");
    defaultMap = found->second;
}

} // namespace dax
