#include "content/LessonPropertyStore.h"

#include "base/Error.h"
#include "base/PackedText.h"

#include <utility>

namespace dax {

namespace {

constexpr int32_t duplicateKey = 457; // the number that hosts know for a key that a collection has already

constexpr size_t blockBytes = 65536;

uint32_t HashOf(TextView key) { return static_cast<uint32_t>(std::hash<TextView>()(key)); }

} // namespace

LessonPropertyStore::LessonPropertyStore(PropertyCollectionFactory factory)
    : factory(std::move(factory)), buckets(64, none) {}

void LessonPropertyStore::Add(TextView lessonID, TextView properties, TextView title, TextView identifier,
                              int32_t lessonType) {
    const uint32_t hash = HashOf(lessonID);
    if (Find(lessonID, hash) != none) {
        throw Error(duplicateKey, u"The lesson '" + Text(Shorten(lessonID, 100)) + u"' has properties already.");
    }
    const bool isWide = PackedText::NeedsTwoBytes(lessonID) || PackedText::NeedsTwoBytes(title) ||
                        PackedText::NeedsTwoBytes(identifier) || PackedText::NeedsTwoBytes(properties);
    const size_t units = lessonID.size() + title.size() + identifier.size() + properties.size();
    char* const bytes = Allocate(PackedText::BytesOf(units, isWide));
    char* to = bytes;
    for (const TextView text : {lessonID, title, identifier, properties}) to = PackedText::Pack(text, isWide, to);
    const auto length = [](TextView text) { return static_cast<uint32_t>(text.size()); };
    entries.push_back({bytes, hash, length(lessonID), length(title), length(identifier), length(properties), lessonType,
                       none, isWide});
    if (entries.size() > buckets.size()) {
        Rehash();
    } else {
        uint32_t& bucket = buckets[hash & (buckets.size() - 1)];
        entries.back().nextInBucket = std::exchange(bucket, static_cast<uint32_t>(entries.size() - 1));
    }
}

char* LessonPropertyStore::Allocate(size_t bytes) {
    // A long one has a block of its own; what is free of the block before it stays in use.
    if (bytes > blockBytes / 8) return blocks.emplace_back(std::make_unique_for_overwrite<char[]>(bytes)).get();
    if (bytes > freeBytes) {
        blocks.push_back(std::make_unique_for_overwrite<char[]>(blockBytes));
        free = blocks.back().get();
        freeBytes = blockBytes;
    }
    freeBytes -= bytes;
    return std::exchange(free, free + bytes);
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Get(TextView lessonID) {
    const uint32_t index = Find(lessonID, HashOf(lessonID));
    if (index == none) return nullptr;
    if (const auto found = made.find(index); found != made.end()) return found->second;
    return made[index] = Make(entries[index]);
}

std::shared_ptr<PropertyCollection>
LessonPropertyStore::Peek(TextView lessonID, const std::shared_ptr<PropertyCollection>& scratch) const {
    const uint32_t index = Find(lessonID, HashOf(lessonID));
    if (index == none) return nullptr;
    if (const auto found = made.find(index); found != made.end()) return found->second;
    const Entry& entry = entries[index];
    const size_t units = size_t{entry.idLength} + entry.titleLength + entry.identifierLength;
    const char* from = entry.bytes + PackedText::BytesOf(units, entry.isWide);
    scratch->Load(PackedText::Unpack(from, entry.propertiesLength, entry.isWide));
    return scratch;
}

uint32_t LessonPropertyStore::Find(TextView lessonID, uint32_t hash) const {
    uint32_t index = buckets[hash & (buckets.size() - 1)];
    for (; index != none; index = entries[index].nextInBucket) {
        const Entry& entry = entries[index];
        if (entry.hash == hash && entry.idLength == lessonID.size() &&
            PackedText::IsPacked(lessonID, entry.bytes, entry.isWide))
            break;
    }
    return index;
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Make(const Entry& entry) const {
    const char* from = entry.bytes;
    const auto next = [&](uint32_t length) { return PackedText::Unpack(from, length, entry.isWide); };
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
