// A lesson as the lesson map needs it: its storyboards, its maps, and which storyboard is the current one. The
// objects may be a host's: every call may throw Error, call back, or return null.
#pragma once

#include "content/Storyboard.h"
#include "content/StoryboardMap.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace dax {

class Storyboards {
public:
    virtual ~Storyboards() = default;
    virtual int32_t Count() const = 0;
    virtual std::shared_ptr<Storyboard> Item(const Text& sbid) const = 0; // null: none has that SBID
    virtual void Add(const std::shared_ptr<Storyboard>& storyboard) = 0;
    virtual void Remove(const Text& sbid) = 0;
    virtual std::vector<std::shared_ptr<Storyboard>> All() const = 0; // in the order of the collection
};

class StoryboardMaps {
public:
    virtual ~StoryboardMaps() = default;
    virtual int32_t Count() const = 0;
    virtual std::shared_ptr<StoryboardMap> Item(int32_t index) const = 0; // from 0
    virtual std::shared_ptr<StoryboardMap> Item(const Text& name) const = 0;
    virtual void Add(const std::shared_ptr<StoryboardMap>& map) = 0;
    virtual std::shared_ptr<StoryboardMap> DefaultMap() const = 0; // with which the lesson opens; null: none yet
    virtual void SetDefaultMap(const std::shared_ptr<StoryboardMap>& map) = 0;
};

class Lesson {
public:
    virtual ~Lesson() = default;
    virtual std::shared_ptr<StoryboardMaps> Maps() const = 0;
    virtual std::shared_ptr<dax::Storyboards> Storyboards() const = 0;
    virtual Text CurrentSBID() const = 0; // empty: none
    virtual void SetCurrentSBID(const Text& sbid) = 0;
};

} // namespace dax
