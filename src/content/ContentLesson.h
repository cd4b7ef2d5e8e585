// The lesson of our own content objects, for hosts that have none: everything is kept in memory.
#pragma once

#include "content/ContentMap.h"
#include "content/Lesson.h"

#include <list>
#include <unordered_map>

namespace dax {

class ContentStoryboard : public Storyboard {
public:
    ContentStoryboard(); // with a new SBID
    explicit ContentStoryboard(Text sbid, Text title = {}, Text identifier = {}, Text storyboardType = {});

    Text SBID() const override { return sbid; }
    Text Title() const override { return title; }
    Text Identifier() const override { return identifier; }
    Text StoryboardType() const override { return storyboardType; }
    // A collection keeps the SBID under which a storyboard was added.
    void SetSBID(const Text& newSBID) { sbid = newSBID; }
    void SetTitle(const Text& newTitle) { title = newTitle; }
    void SetIdentifier(const Text& newIdentifier) { identifier = newIdentifier; }
    void SetStoryboardType(const Text& newType) { storyboardType = newType; }

private:
    Text sbid, title, identifier, storyboardType;
};

class ContentStoryboards : public Storyboards {
public:
    int32_t Count() const override { return static_cast<int32_t>(order.size()); }
    std::shared_ptr<Storyboard> Item(const Text& sbid) const override;
    // Throws Error for null, for an empty SBID and for one that is there already.
    void Add(const std::shared_ptr<Storyboard>& storyboard) override;
    void Remove(const Text& sbid) override; // nothing when none has it
    std::vector<std::shared_ptr<Storyboard>> All() const override { return {order.begin(), order.end()}; }

private:
    using Order = std::list<std::shared_ptr<Storyboard>>;
    Order order;
    std::unordered_map<Text, Order::iterator> iterators;
};

class ContentMaps : public StoryboardMaps {
public:
    int32_t Count() const override { return static_cast<int32_t>(maps.size()); }
    std::shared_ptr<StoryboardMap> Item(int32_t index) const override;    // null outside the list
    std::shared_ptr<StoryboardMap> Item(const Text& name) const override; // the first of that name, or null
    // Throws Error for null and for a map that is there already.
    void Add(const std::shared_ptr<StoryboardMap>& map) override;
    std::shared_ptr<StoryboardMap> DefaultMap() const override { return defaultMap; }
    void SetDefaultMap(const std::shared_ptr<StoryboardMap>& map) override; // throws Error unless in the list

private:
    std::vector<std::shared_ptr<StoryboardMap>> maps;
    std::unordered_map<const void*, std::shared_ptr<StoryboardMap>> byIdentity;
    std::shared_ptr<StoryboardMap> defaultMap;
};

class ContentLesson : public Lesson {
public:
    std::shared_ptr<StoryboardMaps> Maps() const override { return maps; }
    std::shared_ptr<dax::Storyboards> Storyboards() const override { return storyboards; }
    Text CurrentSBID() const override { return currentSBID; }
    void SetCurrentSBID(const Text& sbid) override { currentSBID = sbid; }

private:
    std::shared_ptr<ContentMaps> maps = std::make_shared<ContentMaps>();
    std::shared_ptr<ContentStoryboards> storyboards = std::make_shared<ContentStoryboards>();
    Text currentSBID;
};

} // namespace dax
