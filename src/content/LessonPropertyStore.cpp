#include "content/LessonPropertyStore.h"

#include "base/PackedText.h"

#include <algorithm>
#include <utility>

namespace dax {

namespace {

constexpr size_t blockBytes = 65536;

uint32_t HashOf(TextView key) { return static_cast<uint32_t>(std::hash<TextView>()(key)); }

} // namespace

LessonPropertyStore::LessonPropertyStore(PropertyCollectionFactory factory) : factory(std::move(factory)) {}

void LessonPropertyStore::Add(TextView lessonID, TextView properties, TextView title, TextView identifier,
                              int32_t lessonType) {
    const bool isWide = PackedText::NeedsTwoBytes(lessonID) || PackedText::NeedsTwoBytes(title) ||
                        PackedText::NeedsTwoBytes(identifier) || PackedText::NeedsTwoBytes(properties);
    const size_t units = lessonID.size() + title.size() + identifier.size() + properties.size();
    char* const bytes = Allocate(PackedText::BytesOf(units, isWide));
    char* to = bytes;
    for (const TextView text : {lessonID, title, identifier, properties}) to = PackedText::Pack(text, isWide, to);
    const auto length = [](TextView text) { return static_cast<uint32_t>(text.size()); };
    entries.push_back(
        {bytes, length(lessonID), length(title), length(identifier), length(properties), lessonType, isWide});
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
    const Entry* const entry = Find(lessonID);
    if (!entry) return nullptr;
    if (const auto found = made.find(entry); found != made.end()) return found->second;
    return made.emplace(entry, Make(*entry)).first->second;
}

std::shared_ptr<PropertyCollection>
LessonPropertyStore::Peek(TextView lessonID, const std::shared_ptr<PropertyCollection>& scratch) const {
    const Entry* const found = Find(lessonID);
    if (!found) return nullptr;
    if (const auto collection = made.find(found); collection != made.end()) return collection->second;
    const Entry& entry = *found;
    const size_t units = size_t{entry.idLength} + entry.titleLength + entry.identifierLength;
    const char* from = entry.bytes + PackedText::BytesOf(units, entry.isWide);
    scratch->Load(PackedText::Unpack(from, entry.propertiesLength, entry.isWide));
    return scratch;
}

const LessonPropertyStore::Entry* LessonPropertyStore::Find(TextView lessonID) const {
    if (slots.size() < entries.size()) {
        slots.clear();
        slots.reserve(entries.size());
        for (uint32_t index = 0; index < entries.size(); ++index) {
            const char* from = entries[index].bytes;
            const Text id = PackedText::Unpack(from, entries[index].idLength, entries[index].isWide);
            slots.push_back({HashOf(id), index});
        }
        std::ranges::sort(slots, {}, &Slot::hash);
    }
    const uint32_t hash = HashOf(lessonID);
    auto slot = std::ranges::lower_bound(slots, hash, {}, &Slot::hash);
    for (; slot != slots.end() && slot->hash == hash; ++slot) {
        const Entry& entry = entries[slot->entry];
        if (entry.idLength == lessonID.size() && PackedText::EqualsPacked(lessonID, entry.bytes, entry.isWide))
            return &entry;
    }
    return nullptr;
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

} // namespace dax
