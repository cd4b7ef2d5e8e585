// An event of a component: any number of listeners, called in the order in which they came.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace dax {

// A place in an event's list of listeners.
class ListenerList {
public:
    virtual ~ListenerList() = default;
    virtual void Remove(size_t number) = 0;
};

struct AddedListener {
    std::weak_ptr<ListenerList> list;
    size_t number;
};

// Removes a listener when destroyed or assigned; it may exist longer than the event.
class Subscription {
public:
    Subscription() = default;
    Subscription(AddedListener listener) : added(std::move(listener)) {}
    Subscription(Subscription&& other) noexcept : added(std::exchange(other.added, {})) {}
    Subscription& operator=(Subscription other) noexcept {
        std::swap(added, other.added);
        return *this;
    }
    ~Subscription() {
        if (const auto list = added.list.lock()) list->Remove(added.number);
    }

private:
    AddedListener added{};
};

// A listener may do anything while it is called: add or remove listeners, raise the event again, destroy the
// component. Listeners added during a call receive the next one; after destruction no further listener is called.
template <typename... Arguments>
class Event {
public:
    using Listener = std::function<void(Arguments...)>;

    // The listener stays as long as the event, or as long as the Subscription to which the result is assigned.
    AddedListener Add(Listener listener) {
        listeners->entries.push_back({++listeners->lastNumber, std::make_shared<Listener>(std::move(listener))});
        return {listeners, listeners->lastNumber};
    }

    bool IsEmpty() const { return listeners->entries.empty(); }

    // Through arguments of reference type a listener returns values.
    void Raise(Arguments... arguments) const {
        const std::weak_ptr<List> alive = listeners;
        const std::vector<Entry> calling = listeners->entries;
        for (const Entry& entry : calling) {
            const auto list = alive.lock();
            if (!list) return;
            const bool isStillThere =
                std::any_of(list->entries.begin(), list->entries.end(),
                            [&entry](const Entry& other) { return other.number == entry.number; });
            if (isStillThere) (*entry.listener)(arguments...);
        }
    }

private:
    struct Entry {
        size_t number;
        std::shared_ptr<Listener> listener;
    };
    struct List final : ListenerList {
        void Remove(size_t number) override {
            std::erase_if(entries, [number](const Entry& entry) { return entry.number == number; });
        }
        std::vector<Entry> entries;
        size_t lastNumber = 0;
    };

    std::shared_ptr<List> listeners = std::make_shared<List>();
};

} // namespace dax
