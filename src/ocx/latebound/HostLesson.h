// Adapters that give a host's lesson objects the core's interfaces (content/Lesson.h). A host's object has
// the members that docs/content-objects.md lists; every fault in it becomes an Error.
#pragma once

#include "content/Lesson.h"
#include "ocx/latebound/HostObject.h"

#include <functional>
#include <type_traits>

namespace dax {

// Automation objects that a host's lesson lacks and the library makes; without the functions there are none. The first
// two throw Error for the nodes of a tree that is not the maker's.
struct ObjectMakers {
    std::function<ComPtr<IDispatch>(const MapTree&)> makeNodes;
    std::function<ComPtr<IDispatch>(const MapTree&, MapTree::NodeRef)> makeNode;
    // A new map object of our own library, for a map that the core has made.
    std::function<ComPtr<IDispatch>(StoryboardMap&)> makeMap;
};

class HostStoryboard : public Storyboard, public HostObject {
public:
    using HostObject::HostObject;
    Text SBID() const override { return TextFrom(Call(L"SBID")); }
    Text Title() const override { return TextFrom(Call(L"Title")); }
    Text Identifier() const override { return TextFrom(Call(L"Identifier")); }
    Text StoryboardType() const override { return TextFrom(Call(L"StoryboardType")); }
};

class HostMap : public StoryboardMap, public HostObject {
public:
    // Without makers the map has a name only: filling and reading it is an Error.
    explicit HostMap(IDispatch* map, ObjectMakers makers = {}) : HostObject(map), makers(std::move(makers)) {}

    Text Name() const override { return TextFrom(Call(L"Name")); }
    void SetName(const Text& name) override { Put(L"Name", Variant(TextView(name))); }
    void FillTree(MapTree& nodes, MapTree::NodeRef mapRoot) override;
    void ReadLayout(const MapTree& nodes, MapTree::NodeRef mapRoot) override;
    const void* Identity() const override { return ObjectIdentity(); }

private:
    void RequireMakers() const;

    ObjectMakers makers;
};

class HostStoryboards : public Storyboards, public HostObject {
public:
    using HostObject::HostObject;
    int32_t Count() const override { return NumberFrom(Call(L"Count")); }
    std::shared_ptr<Storyboard> Item(const Text& sbid) const override;
    void Add(const std::shared_ptr<Storyboard>& storyboard) override;
    void Remove(const Text& sbid) override { HostObject::Call(L"Remove", {Variant(TextView(sbid))}); }
    std::vector<std::shared_ptr<Storyboard>> All() const override;
};

class HostMaps : public StoryboardMaps, public HostObject {
public:
    HostMaps(IDispatch* maps, ObjectMakers makers) : HostObject(maps), makers(std::move(makers)) {}
    int32_t Count() const override { return NumberFrom(Call(L"Count")); }
    std::shared_ptr<StoryboardMap> Item(int32_t index) const override {
        return MapFrom(TryGetItem(L"Item", Variant(index)));
    }
    std::shared_ptr<StoryboardMap> Item(const Text& name) const override {
        return MapFrom(TryGetItem(L"Item", Variant(TextView(name))));
    }
    void Add(const std::shared_ptr<StoryboardMap>& map) override;
    std::shared_ptr<StoryboardMap> DefaultMap() const override { return MapFrom(Call(L"DefaultMap")); }
    void SetDefaultMap(const std::shared_ptr<StoryboardMap>& map) override;

private:
    std::shared_ptr<StoryboardMap> MapFrom(const Variant& value) const;

    ObjectMakers makers;
};

class HostLesson : public Lesson, public HostObject {
public:
    HostLesson(IDispatch* lesson, ObjectMakers makers) : HostObject(lesson), makers(std::move(makers)) {}
    std::shared_ptr<StoryboardMaps> Maps() const override;
    std::shared_ptr<dax::Storyboards> Storyboards() const override;
    Text CurrentSBID() const override { return TextFrom(Call(L"CurrentSBID")); }
    void SetCurrentSBID(const Text& sbid) override { Put(L"CurrentSBID", Variant(TextView(sbid))); }

private:
    ObjectMakers makers;
};

// The host's object that one of these wraps; null for null and for what no host has made.
template <typename Interface>
IDispatch* HostObjectOf(const std::shared_ptr<Interface>& object) {
    const auto* const host = dynamic_cast<const HostObject*>(object.get());
    return host ? host->Object() : nullptr;
}

// The same with a counted reference, for the host to receive.
template <typename Interface>
IDispatch* ToInterface(const std::shared_ptr<Interface>& object) {
    return ComPtr<IDispatch>(HostObjectOf(object)).Detach();
}

// Null for null.
inline std::shared_ptr<Storyboard> FromInterface(std::type_identity<std::shared_ptr<Storyboard>>, IDispatch* object) {
    return object ? std::make_shared<HostStoryboard>(object) : nullptr;
}

} // namespace dax
