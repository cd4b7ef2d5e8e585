#include "content/LessonPropertyStore.h"

#include "data/Error.h"

#include <utility>

namespace dax {

namespace {

constexpr int32_t duplicateKey = 457; // the number that hosts know for a key that a collection has already

size_t HashOf(TextView key) { return std::hash<TextView>()(key); }

} // namespace

LessonPropertyStore::LessonPropertyStore(PropertyCollectionFactory factory)
    : factory(std::move(factory)), buckets(64, none) {}

void LessonPropertyStore::Add(TextView lessonID, TextView properties, TextView title, TextView identifier,
                              int32_t lessonType) {
    const size_t hash = HashOf(lessonID);
    if (Find(lessonID, hash) != none) {
        throw Error(duplicateKey, u"The lesson '" + Text(Shorten(lessonID, 100)) + u"' has properties already.");
    }
    const auto length = [](TextView text) { return static_cast<uint32_t>(text.size()); };
    Entry entry{texts.size(), hash, length(lessonID), length(title), length(identifier), length(properties),
                lessonType,   none};
    texts.append(lessonID).append(title).append(identifier).append(properties);
    entries.push_back(entry);
    if (entries.size() > buckets.size()) {
        Rehash();
    } else {
        uint32_t& bucket = buckets[hash & (buckets.size() - 1)];
        entries.back().nextInBucket = std::exchange(bucket, static_cast<uint32_t>(entries.size() - 1));
    }
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Get(TextView lessonID) {
    const uint32_t index = Find(lessonID, HashOf(lessonID));
    if (index == none) return nullptr;
    if (const auto found = made.find(index); found != made.end()) return found->second;
    return made[index] = Make(entries[index]);
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Peek(TextView lessonID) const {
    const uint32_t index = Find(lessonID, HashOf(lessonID));
    if (index == none) return nullptr;
    const auto found = made.find(index);
    return found != made.end() ? found->second : Make(entries[index]);
}

uint32_t LessonPropertyStore::Find(TextView lessonID, size_t hash) const {
    uint32_t index = buckets[hash & (buckets.size() - 1)];
    for (; index != none; index = entries[index].nextInBucket) {
        const Entry& entry = entries[index];
        if (entry.hash == hash && TextView(texts).substr(entry.place, entry.idLength) == lessonID) break;
    }
    return index;
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Make(const Entry& entry) const {
    size_t place = entry.place;
    const auto next = [&](uint32_t length) {
        const TextView text = TextView(texts).substr(place, length);
        place += length;
        return Text(text);
    };
    const Text id = next(entry.idLength), title = next(entry.titleLength), identifier = next(entry.identifierLength);
    const auto properties = factory();
    properties->Load(next(entry.propertiesLength));
    properties->SetValue(u"LessonID", id);
    properties->SetValue(u"Title", title);
    properties->SetValue(u"Identifier", identifier);
    properties->SetValue(u"LessonType", int64_t(entry.lessonType));
    return properties;
}

void LessonPropertyStore::Rehash() {
    buckets.assign(buckets.size() * 2, none);
    for (uint32_t index = 0; index < entries.size(); ++index) {
        uint32_t& bucket = buckets[entries[index].hash & (buckets.size() - 1)];
        entries[index].nextInBucket = std::exchange(bucket, index);
    }
}

} // namespace dax
