// The parts of a lesson: storyboards and maps.
#include "ocx/content/LessonObject.h"

#include "base/Error.h"
#include "com/Forwarding.h"

namespace dax {

namespace {

// Private IIDs that identify this library's objects among those that a host passes.
constexpr IID ownStoryboardID{0x41ea4f92, 0xa57e, 0x4277, {0x93, 0x96, 0x8d, 0xa9, 0x35, 0x3d, 0x67, 0xb4}};
constexpr IID ownMapID{0xdddb5e0e, 0x8e23, 0x420d, {0xa4, 0x9c, 0x44, 0x73, 0x83, 0x5a, 0x49, 0xbd}};

template <typename Core>
struct PrivateInterface : IUnknown {
    virtual const std::shared_ptr<Core>& WrappedCore() const = 0;
};

// The base of an object that wraps an object of the core.
template <typename Core, const IID& iid>
class CoreObject : public ClassObject, public PrivateInterface<Core> {
public:
    const std::shared_ptr<Core>& WrappedCore() const override { return core; }

protected:
    CoreObject(const ClassEntry& entry, std::shared_ptr<Core> core) : ClassObject(entry), core(std::move(core)) {}
    void* Find(REFIID requested) override {
        return requested == iid ? static_cast<PrivateInterface<Core>*>(this) : ClassObject::Find(requested);
    }

private:
    const std::shared_ptr<Core> core;
};

using StoryboardCoreObject = CoreObject<ContentStoryboard, ownStoryboardID>;
using MapCoreObject = CoreObject<ContentMap, ownMapID>;

class StoryboardObject final : public Forwarding<DualObject<_Storyboard, StoryboardCoreObject>, ContentStoryboard> {
public:
    StoryboardObject(const ClassEntry& entry, std::shared_ptr<ContentStoryboard> storyboard)
        : Forwarding(entry, std::move(storyboard)) {}

    STDMETHODIMP get_SBID(BSTR* value) override { return Get(value, &Core::SBID); }
    STDMETHODIMP put_SBID(BSTR value) override { return Put(&Core::SetSBID, value); }
    STDMETHODIMP get_Title(BSTR* value) override { return Get(value, &Core::Title); }
    STDMETHODIMP put_Title(BSTR value) override { return Put(&Core::SetTitle, value); }
    STDMETHODIMP get_Identifier(BSTR* value) override { return Get(value, &Core::Identifier); }
    STDMETHODIMP put_Identifier(BSTR value) override { return Put(&Core::SetIdentifier, value); }
    STDMETHODIMP get_StoryboardType(BSTR* value) override { return Get(value, &Core::StoryboardType); }
    STDMETHODIMP put_StoryboardType(BSTR value) override { return Put(&Core::SetStoryboardType, value); }

private:
    Core& Target() const override { return *WrappedCore(); }
};

// The nodes of a host's tree, as a map fills and reads them. A reference is the place in `held`, counted from 1.
class HostNodes final : public MapTree {
public:
    // `nodes` may be null where only the nodes below the root are read.
    HostNodes(IDispatch* nodes, IDispatch* root) : nodes(nodes) {
        if (!root) throw Error(ErrorNumbers::InvalidCall, u"The map's node is missing.");
        held.emplace_back(root);
        knowsKeys = nodes && this->nodes.Has(L"Contains");
    }
    NodeRef Root() const { return NodeRef{1}; }

    bool Contains(const Text& key) const override {
        const Variant requested{TextView(key)};
        if (!knowsKeys) return ObjectFrom(nodes.TryGetItem(L"Item", requested)).Get() != nullptr;
        const Value isThere = ToValue(nodes.Call(L"Contains", {requested}), false);
        return isThere == Value(true);
    }
    NodeRef AddChild(NodeRef parent, const Text& key, const Text& caption) override {
        constexpr int32_t asChild = 4; // a relation of tree views
        return Hold(nodes.Call(L"Add", {Variant(At(parent).Object()), Variant(asChild), Variant(TextView(key)),
                                        Variant(TextView(caption))}));
    }
    Text Key(NodeRef node) const override { return TextFrom(At(node).Call(L"Key")); }
    NodeRef FirstChild(NodeRef node) const override { return Hold(At(node).Call(L"Child")); }
    NodeRef Next(NodeRef node) const override { return Hold(At(node).Call(L"Next")); }

private:
    HostObject At(NodeRef node) const {
        const auto place = static_cast<size_t>(node);
        if (place == 0 || place > held.size())
            throw Error(ErrorNumbers::InvalidCall, u"The host's tree did not add the node.");
        return held[place - 1];
    }
    NodeRef Hold(const Variant& answer) const {
        const auto node = ObjectFrom(answer);
        if (!node) return NodeRef::None;
        held.emplace_back(node.Get());
        return NodeRef{held.size()};
    }

    HostObject nodes;
    bool knowsKeys = false;
    mutable std::vector<HostObject> held;
};

class MapObject final : public Forwarding<DualObject<_StoryboardMap, MapCoreObject>, ContentMap> {
public:
    MapObject(const ClassEntry& entry, std::shared_ptr<ContentMap> map) : Forwarding(entry, std::move(map)) {}

    STDMETHODIMP get_Name(BSTR* value) override { return Get(value, &Core::Name); }
    STDMETHODIMP put_Name(BSTR value) override { return Put(&Core::SetName, value); }
    STDMETHODIMP FillTree(IDispatch* nodes, IDispatch* mapRoot) override {
        return Call([&] {
            if (!nodes) throw Error(ErrorNumbers::InvalidCall, u"The nodes to be filled are missing.");
            HostNodes tree(nodes, mapRoot);
            WrappedCore()->FillTree(tree, tree.Root());
        });
    }
    STDMETHODIMP ReadLayout(IDispatch* mapRoot) override {
        return Call([&] {
            const HostNodes tree(nullptr, mapRoot);
            WrappedCore()->ReadLayout(tree, tree.Root());
        });
    }

private:
    Core& Target() const override { return *WrappedCore(); }
};

// In a lesson: the host's reference, and direct access to the object that it wraps.
class OwnStoryboard final : public HostStoryboard {
public:
    OwnStoryboard(IDispatch* object, std::shared_ptr<ContentStoryboard> core)
        : HostStoryboard(object), core(std::move(core)) {}
    Text SBID() const override { return core->SBID(); }
    Text Title() const override { return core->Title(); }
    Text Identifier() const override { return core->Identifier(); }
    Text StoryboardType() const override { return core->StoryboardType(); }

private:
    const std::shared_ptr<ContentStoryboard> core;
};

class OwnMap final : public HostMap {
public:
    OwnMap(IDispatch* object, std::shared_ptr<ContentMap> core) : HostMap(object), core(std::move(core)) {}
    Text Name() const override { return core->Name(); }
    void SetName(const Text& name) override { core->SetName(name); }
    void FillTree(MapTree& nodes, MapTree::NodeRef mapRoot) override { core->FillTree(nodes, mapRoot); }
    void ReadLayout(const MapTree& nodes, MapTree::NodeRef mapRoot) override { core->ReadLayout(nodes, mapRoot); }

private:
    const std::shared_ptr<ContentMap> core;
};

const ClassEntry& EntryOf(const CLSID& clsid) {
    for (const ClassEntry& entry : ThisLibrary().classes) {
        if (*entry.clsid == clsid) return entry;
    }
    throw ComError(CLASS_E_CLASSNOTAVAILABLE);
}

} // namespace

IUnknown* CreateStoryboard(const ClassEntry& entry) {
    return static_cast<_Storyboard*>(new StoryboardObject(entry, std::make_shared<ContentStoryboard>()));
}

IUnknown* CreateStoryboardMap(const ClassEntry& entry) {
    return static_cast<_StoryboardMap*>(new MapObject(entry, std::make_shared<ContentMap>()));
}

std::shared_ptr<Storyboard> WrapStoryboard(IDispatch* object) {
    if (!object) throw Error(ErrorNumbers::InvalidCall, u"There is no storyboard to add.");
    if (const auto own = Query<PrivateInterface<ContentStoryboard>>(object, ownStoryboardID))
        return std::make_shared<OwnStoryboard>(object, own->WrappedCore());
    return std::make_shared<HostStoryboard>(object);
}

std::shared_ptr<StoryboardMap> WrapMap(IDispatch* object) {
    if (!object) throw Error(ErrorNumbers::InvalidCall, u"There is no map to add.");
    if (const auto own = Query<PrivateInterface<ContentMap>>(object, ownMapID))
        return std::make_shared<OwnMap>(object, own->WrappedCore());
    return std::make_shared<HostMap>(object);
}

std::shared_ptr<Storyboard> WrapNewStoryboard(std::shared_ptr<ContentStoryboard> storyboard) {
    const ComPtr<IDispatch> object = MakeCom<StoryboardObject>(EntryOf(CLSID_Storyboard), storyboard);
    return std::make_shared<OwnStoryboard>(object.Get(), std::move(storyboard));
}

std::shared_ptr<StoryboardMap> WrapNewMap(std::shared_ptr<ContentMap> map) {
    const ComPtr<IDispatch> object = MakeCom<MapObject>(EntryOf(CLSID_StoryboardMap), map);
    return std::make_shared<OwnMap>(object.Get(), std::move(map));
}

} // namespace dax
