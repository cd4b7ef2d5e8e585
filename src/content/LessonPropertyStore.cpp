#include "content/LessonPropertyStore.h"

#include "base/Error.h"

#include <cstring>
#include <utility>

namespace dax {

namespace {

constexpr int32_t duplicateKey = 457; // the number that hosts know for a key that a collection has already

constexpr size_t blockBytes = 65536;

uint32_t HashOf(TextView key) { return static_cast<uint32_t>(std::hash<TextView>()(key)); }

// Texts are looked at and copied in blocks of a fixed size, which compilers take at once.
constexpr size_t blockUnits = 16;

bool NeedsTwoBytes(TextView text) {
    uint64_t all = 0;
    for (; text.size() >= blockUnits; text.remove_prefix(blockUnits)) {
        uint64_t words[blockUnits / 4];
        std::memcpy(words, text.data(), sizeof words);
        for (const uint64_t word : words) all |= word;
    }
    for (const char16_t unit : text) all |= unit;
    return (all & 0xFF00FF00FF00FF00) != 0;
}

char* Pack(TextView text, bool isWide, char* to) {
    if (isWide) {
        if (!text.empty()) std::memcpy(to, text.data(), text.size() * sizeof(char16_t));
        return to + text.size() * sizeof(char16_t);
    }
    for (; text.size() >= blockUnits; text.remove_prefix(blockUnits), to += blockUnits) {
        char16_t units[blockUnits];
        char packed[blockUnits];
        std::memcpy(units, text.data(), sizeof units);
        for (size_t k = 0; k < blockUnits; ++k) packed[k] = static_cast<char>(units[k]);
        std::memcpy(to, packed, sizeof packed);
    }
    for (const char16_t unit : text) *to++ = static_cast<char>(unit);
    return to;
}

Text Unpack(const char*& from, size_t length, bool isWide) {
    Text text(length, u'\0');
    if (isWide) {
        std::memcpy(text.data(), from, length * sizeof(char16_t));
        from += length * sizeof(char16_t);
    } else {
        for (char16_t& unit : text) unit = static_cast<unsigned char>(*from++);
    }
    return text;
}

bool IsPacked(TextView text, const char* from, bool isWide) {
    if (isWide) return text.empty() || std::memcmp(text.data(), from, text.size() * sizeof(char16_t)) == 0;
    for (const char16_t unit : text) {
        if (unit != static_cast<unsigned char>(*from++)) return false;
    }
    return true;
}

} // namespace

LessonPropertyStore::LessonPropertyStore(PropertyCollectionFactory factory)
    : factory(std::move(factory)), buckets(64, none) {}

void LessonPropertyStore::Add(TextView lessonID, TextView properties, TextView title, TextView identifier,
                              int32_t lessonType) {
    const uint32_t hash = HashOf(lessonID);
    if (Find(lessonID, hash) != none) {
        throw Error(duplicateKey, u"The lesson '" + Text(Shorten(lessonID, 100)) + u"' has properties already.");
    }
    const bool isWide =
        NeedsTwoBytes(lessonID) || NeedsTwoBytes(title) || NeedsTwoBytes(identifier) || NeedsTwoBytes(properties);
    const size_t units = lessonID.size() + title.size() + identifier.size() + properties.size();
    char* const bytes = Allocate(units * (isWide ? sizeof(char16_t) : 1));
    char* to = bytes;
    for (const TextView text : {lessonID, title, identifier, properties}) to = Pack(text, isWide, to);
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
    const char* from = entry.bytes + units * (entry.isWide ? sizeof(char16_t) : 1);
    scratch->Load(Unpack(from, entry.propertiesLength, entry.isWide));
    return scratch;
}

uint32_t LessonPropertyStore::Find(TextView lessonID, uint32_t hash) const {
    uint32_t index = buckets[hash & (buckets.size() - 1)];
    for (; index != none; index = entries[index].nextInBucket) {
        const Entry& entry = entries[index];
        if (entry.hash == hash && entry.idLength == lessonID.size() && IsPacked(lessonID, entry.bytes, entry.isWide))
            break;
    }
    return index;
}

std::shared_ptr<PropertyCollection> LessonPropertyStore::Make(const Entry& entry) const {
    const char* from = entry.bytes;
    const auto next = [&](uint32_t length) { return Unpack(from, length, entry.isWide); };
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
