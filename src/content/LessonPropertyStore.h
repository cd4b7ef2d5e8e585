// The property collections of all lessons of a database, keyed by lesson. Most are never asked for, so that what was
// loaded is kept packed and a collection is made on demand.
#pragma once

#include "content/PropertyCollection.h"

#include <deque>
#include <unordered_map>

namespace dax {

class LessonPropertyStore {
public:
    // New collections come from the factory.
    explicit LessonPropertyStore(PropertyCollectionFactory factory = NewPropertyCollection);

    // `properties` is the stored text; the other four override what it says. Throws Error when the lesson is there.
    void Add(TextView lessonID, TextView properties, TextView title, TextView identifier, int32_t lessonType);
    // The same collection at every call, so that changes to it stay; null for an unknown lesson.
    std::shared_ptr<PropertyCollection> Get(TextView lessonID);
    // For a look in passing at what was stored: the collection that Get gave, or else `scratch`, filled from the stored
    // text alone; null for an unknown lesson.
    std::shared_ptr<PropertyCollection> Peek(TextView lessonID,
                                             const std::shared_ptr<PropertyCollection>& scratch) const;
    size_t Count() const { return entries.size(); }

private:
    static constexpr uint32_t none = UINT32_MAX;

    // ID, title, identifier and stored text stand one after the other: one byte for each unit when no unit of them
    // needs two, as nearly always.
    struct Entry {
        const char* bytes;
        uint32_t hash;
        uint32_t idLength, titleLength, identifierLength, propertiesLength; // in units
        int32_t lessonType;
        uint32_t nextInBucket;
        bool isWide;
    };

    uint32_t Find(TextView lessonID, uint32_t hash) const;
    std::shared_ptr<PropertyCollection> Make(const Entry& entry) const;
    char* Allocate(size_t bytes);
    void Rehash();

    PropertyCollectionFactory factory;
    std::vector<std::unique_ptr<char[]>> blocks;
    char* free = nullptr;
    size_t freeBytes = 0;
    std::deque<Entry> entries; // grows without copying or spare room
    std::vector<uint32_t> buckets;
    std::unordered_map<uint32_t, std::shared_ptr<PropertyCollection>> made;
};

} // namespace dax
