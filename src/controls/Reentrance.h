// For objects whose listeners may change, reload or release them while they are called. There is one pattern: a call
// that continues after an event creates a RevisionCheck before it, and continues only while that is current;
// where the object is shared, the call also holds it (shared_from_this, or a reference of a COM object).
// LessonMapEditor compares its lesson instead: a listener may set another one and the former again.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

namespace dax {

// A member of such an object: advances when what the object holds is replaced.
class Revision {
public:
    void Advance() { ++*number; }

private:
    friend class RevisionCheck;
    std::shared_ptr<uint64_t> number = std::make_shared<uint64_t>(0);
};

// May outlive the object.
class RevisionCheck {
public:
    explicit RevisionCheck(const Revision& revision)
        : alive(revision.number), number(revision.number.get()), seen(*number) {}

    bool Exists() const { return !alive.expired(); }                       // the object
    bool IsCurrent() const { return !alive.expired() && *number == seen; } // it exists, unreplaced

private:
    std::weak_ptr<uint64_t> alive;
    const uint64_t* number; // locking `alive` would cost more in loops
    uint64_t seen;
};

// Sets a flag for a scope. Only the first of several within each other resets it.
class FlagGuard {
public:
    explicit FlagGuard(bool& flag) : flag(flag), isFirst(!std::exchange(flag, true)) {}
    ~FlagGuard() {
        if (isFirst) flag = false;
    }
    FlagGuard(const FlagGuard&) = delete;
    FlagGuard& operator=(const FlagGuard&) = delete;
    bool IsFirst() const { return isFirst; }

private:
    bool& flag;
    bool isFirst;
};

} // namespace dax
