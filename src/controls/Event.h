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

// Removes a listener when destroyed or assigned; it may exist longer than the event.
class Subscription {
public:
    Subscription() = default;
    Subscription(std::weak_ptr<ListenerList> list, size_t number) : list(std::move(list)), number(number) {}
    Subscription(Subscription&& other) noexcept : list(std::move(other.list)), number(other.number) {}
    Subscription& operator=(Subscription other) noexcept {
        std::swap(list, other.list);
        std::swap(number, other.number);
        return *this;
    }
    ~Subscription() {
        if (const auto held = list.lock()) held->Remove(number);
    }

private:
    std::weak_ptr<ListenerList> list;
    size_t number = 0;
};

// A listener may do anything while it is called: add or remove listeners, raise the event again, destroy the
// component. Listeners added during a call receive the next one; after destruction no further listener is called.
template <typename... Arguments>
class Event {
public:
    using Listener = std::function<void(Arguments...)>;

    // The listener is called as long as the result exists.
    [[nodiscard]] Subscription Add(Listener listener) {
        AddPermanent(std::move(listener));
        return {listeners, listeners->lastNumber};
    }
    // The listener is called as long as the event exists; what it uses must exist as long.
    void AddPermanent(Listener listener) {
        listeners->entries.push_back({++listeners->lastNumber, std::make_shared<Listener>(std::move(listener))});
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
