#include "base/IDCollection.h"

namespace dax {

IDCollection::IDCollection(const IDCollection& other) {
    for (const Text& id : other) Add(id);
}

IDCollection& IDCollection::operator=(IDCollection other) noexcept {
    // Swapping lists keeps the iterators valid.
    items.swap(other.items);
    iterators.swap(other.iterators);
    return *this;
}

bool IDCollection::Add(const Text& id) { return Insert(id, items.end()); }

bool IDCollection::Insert(const Text& id, const Text& next) {
    const auto found = iterators.find(next);
    return Insert(id, found == iterators.end() ? items.end() : found->second);
}

Text IDCollection::NextOf(const Text& id) const {
    const auto found = iterators.find(id);
    if (found == iterators.end() || std::next(found->second) == items.end()) return {};
    return *std::next(found->second);
}

bool IDCollection::Insert(const Text& id, std::list<Text>::iterator before) {
    if (iterators.contains(id)) return false;
    std::list<Text> made(1, id);
    iterators.emplace(made.front(), made.begin()); // may fail; then nothing has changed
    items.splice(before, made);
    return true;
}

bool IDCollection::Remove(const Text& id) {
    const auto found = iterators.find(id);
    if (found == iterators.end()) return false;
    // `id` may be the text that is removed: the list is changed last.
    const auto item = found->second;
    iterators.erase(found);
    items.erase(item);
    return true;
}

void IDCollection::Clear() {
    iterators.clear();
    items.clear();
}

} // namespace dax
