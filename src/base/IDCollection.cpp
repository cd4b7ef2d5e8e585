#include "base/IDCollection.h"

namespace dax {

IDCollection::IDCollection(const IDCollection& other) {
    for (const Text& id : other) Add(id);
}

IDCollection& IDCollection::operator=(IDCollection other) noexcept {
    // Swapping lists keeps the places valid.
    items.swap(other.items);
    places.swap(other.places);
    return *this;
}

bool IDCollection::Add(const Text& id) { return Insert(id, items.end()); }

bool IDCollection::Insert(const Text& id, const Text& next) {
    const auto place = places.find(next);
    return Insert(id, place == places.end() ? items.end() : place->second);
}

Text IDCollection::NextOf(const Text& id) const {
    const auto place = places.find(id);
    if (place == places.end() || std::next(place->second) == items.end()) return {};
    return *std::next(place->second);
}

bool IDCollection::Insert(const Text& id, std::list<Text>::iterator before) {
    if (places.contains(id)) return false;
    std::list<Text> made(1, id);
    places.emplace(made.front(), made.begin()); // may fail; then nothing has changed
    items.splice(before, made);
    return true;
}

bool IDCollection::Remove(const Text& id) {
    const auto place = places.find(id);
    if (place == places.end()) return false;
    // `id` may be the text that is removed: the list is changed last.
    const auto item = place->second;
    places.erase(place);
    items.erase(item);
    return true;
}

void IDCollection::Clear() {
    places.clear();
    items.clear();
}

} // namespace dax
