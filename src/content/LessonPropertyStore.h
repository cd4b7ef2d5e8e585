// The property collections of all lessons of a database, keyed by lesson. Most are never used: what was loaded is
// kept packed, a collection is made on demand, and nothing is sorted before the first lookup. With four
// std::u16string instead, a lesson in the editor takes 636 bytes, not 377, and the load of 100,000 1.7 times as long.
#pragma once

#include "content/PropertyCollection.h"

#include <deque>
#include <unordered_map>

namespace dax {

class LessonPropertyStore {
public:
    // New collections come from the factory.
    explicit LessonPropertyStore(PropertyCollectionFactory factory = NewPropertyCollection);

    // `properties` is the stored text; the other four override what it says. Each lesson comes once.
    void Add(TextView lessonID, TextView properties, TextView title, TextView identifier, int32_t lessonType);
    // The same collection at every call, so that changes to it stay; null for an unknown lesson.
    std::shared_ptr<PropertyCollection> Get(TextView lessonID);
    // To read stored properties once: the collection that Get returned, or else `scratch`, filled from the stored
    // text alone; null for an unknown lesson.
    std::shared_ptr<PropertyCollection> Peek(TextView lessonID,
                                             const std::shared_ptr<PropertyCollection>& scratch) const;
    size_t Count() const { return entries.size(); }

private:
    // ID, title, identifier and stored text, one after the other: one byte for each unit when no unit of them
    // needs two, as nearly always.
    struct Entry {
        const char* bytes;
        uint32_t idLength, titleLength, identifierLength, propertiesLength; // in units
        int32_t lessonType;
        bool isWide;
    };
    struct Slot {
        uint32_t hash, entry;
    };

    const Entry* Find(TextView lessonID) const;
    std::shared_ptr<PropertyCollection> Make(const Entry& entry) const;
    char* Allocate(size_t bytes);

    PropertyCollectionFactory factory;
    std::vector<std::unique_ptr<char[]>> blocks;
    char* free = nullptr;
    size_t freeBytes = 0;
    std::deque<Entry> entries;       // grows without copying and without unused capacity
    mutable std::vector<Slot> slots; // of the entries by the hashes of their IDs; incomplete until the first lookup
    std::unordered_map<const Entry*, std::shared_ptr<PropertyCollection>> made;
};

} // namespace dax
