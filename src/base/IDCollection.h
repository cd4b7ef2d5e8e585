// An ordered set of identifier texts: each is both item and key, so it occurs at most once.
#pragma once

#include "base/Text.h"

#include <list>
#include <unordered_map>

namespace dax {

class IDCollection {
public:
    IDCollection() = default;
    IDCollection(const IDCollection& other);
    IDCollection(IDCollection&&) noexcept = default;
    IDCollection& operator=(IDCollection other) noexcept;
    ~IDCollection() = default;

    // False, and nothing done, when the text is there already or is not there.
    bool Add(const Text& id);
    bool Remove(const Text& id);
    // Adds a text before another one; at the end when that is not there.
    bool Insert(const Text& id, const Text& next);
    // The text after that one; empty when it is the last or not there.
    Text NextOf(const Text& id) const;
    bool Contains(const Text& id) const { return iterators.contains(id); }
    void Clear();

    size_t Count() const { return items.size(); }
    bool IsEmpty() const { return items.empty(); }
    auto begin() const { return items.begin(); }
    auto end() const { return items.end(); }

private:
    bool Insert(const Text& id, std::list<Text>::iterator before);

    std::list<Text> items;
    std::unordered_map<TextView, std::list<Text>::iterator> iterators; // keyed by the texts in the list
};

} // namespace dax
