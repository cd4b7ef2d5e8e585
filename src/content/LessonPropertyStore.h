// The property collections of all lessons of a database, keyed by lesson. Most are never asked for, so that what was
// loaded is kept packed and a collection is made on demand.
#pragma once

#include "content/PropertyCollection.h"

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
    // For a look in passing: as Get, but a collection that nobody asked for before is not kept.
    std::shared_ptr<PropertyCollection> Peek(TextView lessonID) const;
    size_t Count() const { return entries.size(); }

private:
    static constexpr uint32_t none = UINT32_MAX;

    struct Entry {
        size_t place; // of ID, title, identifier and stored text, one after the other in `texts`
        size_t hash;
        uint32_t idLength, titleLength, identifierLength, propertiesLength;
        int32_t lessonType;
        uint32_t nextInBucket;
    };

    uint32_t Find(TextView lessonID, size_t hash) const;
    std::shared_ptr<PropertyCollection> Make(const Entry& entry) const;
    void Rehash();

    PropertyCollectionFactory factory;
    Text texts;
    std::vector<Entry> entries;
    std::vector<uint32_t> buckets;
    std::unordered_map<uint32_t, std::shared_ptr<PropertyCollection>> made;
};

} // namespace dax
