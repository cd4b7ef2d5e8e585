// An event of a component: any number of listeners, called in the order in which they came.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace dax {

// A listener may do anything while it is called: add or remove listeners, raise the event again, destroy the
// component. Listeners added during a call hear the next one; after destruction no further listener is called.
template <typename... Arguments>
class Event {
public:
    using Listener = std::function<void(Arguments...)>;

    // Returns a number for Remove.
    size_t Add(Listener listener) {
        listeners->push_back({++lastNumber, std::make_shared<Listener>(std::move(listener))});
        return lastNumber;
    }

    void Remove(size_t number) {
        std::erase_if(*listeners, [number](const Entry& entry) { return entry.number == number; });
    }

    bool IsEmpty() const { return listeners->empty(); }

    // Arguments of reference type let a listener answer.
    void Raise(Arguments... arguments) const {
        const std::weak_ptr<std::vector<Entry>> alive = listeners;
        const std::vector<Entry> calling = *listeners;
        for (const Entry& entry : calling) {
            const auto list = alive.lock();
            if (!list) return;
            const bool isStillThere = std::any_of(
                list->begin(), list->end(), [&entry](const Entry& other) { return other.number == entry.number; });
            if (isStillThere) (*entry.listener)(arguments...);
        }
    }

private:
    struct Entry {
        size_t number;
        std::shared_ptr<Listener> listener;
    };

    std::shared_ptr<std::vector<Entry>> listeners = std::make_shared<std::vector<Entry>>();
    size_t lastNumber = 0;
};

} // namespace dax
