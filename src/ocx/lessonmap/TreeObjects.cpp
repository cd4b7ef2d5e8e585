#include "ocx/lessonmap/TreeObjects.h"

#include "ocx/lessonmap/NodeObject.h"

#include "base/Error.h"
#include "com/Enumerator.h"
#include "com/Forwarding.h"
#include "lessonmap/NodeMapTree.h"
#include "ocx/lessonmap/ControlLink.h"
#include "tree/modTVW.h"

#include <utility>

namespace dax {

namespace {

const ClassEntry treeEntry{&CLSID_TreeView, &IID__TreeView, nullptr, L"TreeView", L"", nullptr, 0};
const ClassEntry nodesEntry{&CLSID_Nodes, &IID__Nodes, nullptr, L"Nodes", L"", nullptr, 0};

class NodesObject final : public Forwarding<DualObject<_Nodes>, NodeTree> {
public:
    explicit NodesObject(std::shared_ptr<TreeObjects> owner) : Forwarding(nodesEntry), owner(std::move(owner)) {}

    STDMETHODIMP get_Count(LONG* value) override { return Get(value, &Core::Count); }
    STDMETHODIMP get_Item(VARIANT index, _Node** value) override {
        return Get(value, [&] { return owner->ObjectOf(&Named(index)); });
    }
    STDMETHODIMP Add(VARIANT relative, VARIANT relationship, VARIANT key, VARIANT text, VARIANT image, VARIANT,
                     _Node** added) override {
        return Get(added, [&] {
            Node* const beside = owner->Resolve(relative);
            const int32_t relation = IsLeftOut(relationship) ? nrNext : NumberFrom(PlainOf(relationship));
            const int picture = IsLeftOut(image) ? 0 : owner->PictureOf(image);
            const auto [to, position] = PositionFor(beside, relation);
            return owner->ObjectOf(
                &owner->Tree().Add(to, position, TextFrom(PlainOf(key)), TextFrom(PlainOf(text)), picture));
        });
    }
    STDMETHODIMP Remove(VARIANT index) override {
        return Call([&] { owner->Tree().Remove(Named(index)); });
    }
    STDMETHODIMP Clear() override { return Call(&Core::Clear); }
    STDMETHODIMP Contains(BSTR key, VARIANT_BOOL* isThere) override {
        return Get(isThere, [&] { return owner->Tree().Find(FromBstr(key)) != nullptr; });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Get(value, [this] {
            std::vector<ComPtr<IDispatch>> nodes;
            for (Node* node = owner->Tree().FirstInCollection(); node; node = node->NextInCollection())
                nodes.emplace_back(ComPtr<_Node>::Adopt(owner->ObjectOf(node)));
            return EnumerateVariants(std::move(nodes));
        });
    }

private:
    Core& Target() const override { return owner->Tree(); }
    Node& Named(const VARIANT& index) const {
        Node* const node = owner->Resolve(index);
        if (!node) throw Error(ErrorNumbers::ElementNotFound, u"Element not found");
        return *node;
    }

    static std::pair<Node*, InsertPosition> PositionFor(Node* beside, int32_t relation) {
        switch (relation) {
        case nrFirst:
            return {beside ? beside->Parent() : nullptr, InsertPosition::FirstChild};
        case nrLast:
            return {beside ? beside->Parent() : nullptr, InsertPosition::LastChild};
        case nrNext:
            return {beside, InsertPosition::After};
        case nrPrevious:
            return {beside, InsertPosition::Before};
        case nrChild:
            return {beside, InsertPosition::LastChild};
        default:
            throw Error(ErrorNumbers::InvalidCall, u"There is no relation " + ToText(relation) + u" between nodes.");
        }
    }

    const std::shared_ptr<TreeObjects> owner;
};

class TreeObject final : public DualObject<_TreeView> {
public:
    explicit TreeObject(std::shared_ptr<TreeObjects> owner) : DualObject(treeEntry), owner(std::move(owner)) {}

    STDMETHODIMP get_Nodes(_Nodes** value) override {
        return Get(value, [this] { return owner->NewNodes(); });
    }
    STDMETHODIMP get_SelectedItem(_Node** value) override {
        return Get(value, [this] { return owner->ObjectOf(owner->Tree().Selected()); });
    }
    STDMETHODIMP put_SelectedItem(_Node* value) override { return putref_SelectedItem(value); }
    STDMETHODIMP putref_SelectedItem(_Node* value) override {
        return Call([&] { owner->Tree().Select(owner->Resolve(Variant(value))); });
    }
    STDMETHODIMP get_ImageList(IDispatch** value) override {
        return Get(value, [this] { return owner->Control() ? owner->Control()->ImageList() : ComPtr<IDispatch>(); });
    }
    STDMETHODIMP put_ImageList(IDispatch* value) override { return putref_ImageList(value); }
    STDMETHODIMP putref_ImageList(IDispatch* value) override {
        return Call([&] {
            if (owner->Control()) owner->Control()->SetImageList(Variant(value), Variant());
        });
    }
    STDMETHODIMP get_hWnd(LONG* value) override {
        // The system's handles have no more than 32 bits that count.
        return Get(value, [this] {
            return owner->Control() ? reinterpret_cast<INT_PTR>(owner->Control()->Handle()) : INT_PTR{0};
        });
    }
    STDMETHODIMP HitTest(LONG x, LONG y, _Node** found) override {
        return Get(found, [&] {
            const TreeWindow* const window = owner->Control() ? owner->Control()->Window() : nullptr;
            return owner->ObjectOf(window ? window->HitTest({x, y}).node : nullptr);
        });
    }

private:
    const std::shared_ptr<TreeObjects> owner;
};

} // namespace

TreeObjects::TreeObjects(std::shared_ptr<NodeTree> nodes, std::shared_ptr<ControlLink> newControl)
    : tree(std::move(nodes)), control(std::move(newControl)) {
    tree->AddListener(*this);
}

TreeObjects::~TreeObjects() { tree->RemoveListener(*this); }

_TreeView* TreeObjects::NewView() { return new TreeObject(shared_from_this()); }

_Nodes* TreeObjects::NewNodes() { return new NodesObject(shared_from_this()); }

_Node* TreeObjects::ObjectOf(Node* node) {
    if (!node) return nullptr;
    const auto [place, isNew] = objects.try_emplace(node);
    if (!isNew) {
        place->second->AddRef();
        return place->second;
    }
    try {
        place->second = new NodeObject(shared_from_this(), *node);
    } catch (...) {
        objects.erase(node);
        throw;
    }
    return place->second;
}

ObjectMakers TreeObjects::Makers() {
    ObjectMakers makers;
    makers.makeNodes = [self = shared_from_this()](const MapTree& nodes) -> ComPtr<IDispatch> {
        return ComPtr<_Nodes>::Adopt(self->Of(nodes)->NewNodes());
    };
    makers.makeNode = [self = shared_from_this()](const MapTree& nodes, MapTree::NodeRef node) -> ComPtr<IDispatch> {
        const auto objects = self->Of(nodes);
        if (node == MapTree::NodeRef::None) return {};
        return ComPtr<_Node>::Adopt(objects->ObjectOf(static_cast<const NodeMapTree&>(nodes).NodeOf(node)));
    };
    return makers;
}

std::shared_ptr<TreeObjects> TreeObjects::Of(const MapTree& nodes) {
    const auto* const own = dynamic_cast<const NodeMapTree*>(&nodes);
    if (own && &own->Nodes() == tree.get()) return shared_from_this();
    if (!own || !own->Shared()) throw Error(ErrorNumbers::Automation, u"The nodes belong to another tree.");
    auto objects = mapObjects.lock();
    if (!objects || objects->tree != own->Shared()) {
        objects = std::make_shared<TreeObjects>(own->Shared(), control);
        mapObjects = objects;
    }
    return objects;
}

Node* TreeObjects::Resolve(const VARIANT& reference) {
    const Variant plain = PlainOf(reference);
    if (IsLeftOut(plain)) return nullptr;
    if (plain.vt == VT_DISPATCH || plain.vt == VT_UNKNOWN) {
        if (!plain.punkVal) return nullptr;
        return &NodeObject::NodeFromObject(plain.punkVal, *this);
    }
    if (plain.vt != VT_BSTR) return AtPlace(NumberFrom(plain));
    Node* const node = tree->Find(FromBstr(plain.bstrVal));
    if (!node) throw Error(ErrorNumbers::ElementNotFound, u"Element not found");
    return node;
}

Node* TreeObjects::AtPlace(int64_t place) {
    if (place < 1 || place > tree->Count()) throw Error(ErrorNumbers::IndexOutOfBounds, u"Index out of bounds");
    if (!lastFound || place < lastPlace) {
        lastFound = tree->FirstInCollection();
        lastPlace = 1;
    }
    for (; lastPlace < place; ++lastPlace) lastFound = lastFound->NextInCollection();
    return lastFound;
}

int TreeObjects::PictureOf(const VARIANT& numberOrKey) const {
    const Variant plain = PlainOf(numberOrKey);
    if (plain.vt != VT_BSTR) return NumberFrom(plain);
    return control ? control->PictureOf(FromBstr(plain.bstrVal)) : 0;
}

// Starts at the previous one, so that access in sequence is linear.
int32_t TreeObjects::PlaceOf(const Node& node) {
    if (!lastFound) AtPlace(1);
    Node* at = lastFound;
    int64_t place = lastPlace;
    for (; at != &node; ++place) {
        at = at->NextInCollection();
        if (at) continue;
        at = tree->FirstInCollection();
        place = 0;
    }
    lastFound = at;
    lastPlace = place;
    return static_cast<int32_t>(place);
}

bool TreeObjects::EnsureVisible(Node& node) {
    TreeWindow* const window = control ? control->Window() : nullptr;
    const auto before = window ? window->RowRect(node) : std::nullopt;
    bool isOpened = false;
    {
        const TreeUpdate update(*tree);
        for (Node* above = node.Parent(); above; above = above->Parent()) {
            isOpened = isOpened || !above->IsExpanded();
            above->SetExpanded(true);
        }
    }
    if (!window) return isOpened;
    window->EnsureVisible(node);
    return isOpened || window->RowRect(node) != before;
}

void TreeObjects::NodeRemoving(Node& top) {
    lastFound = nullptr;
    for (const Node* node = &top; node && !objects.empty(); node = modTVW::GetNextNode(node, &top)) {
        const auto found = objects.find(node);
        if (found == objects.end()) continue;
        found->second->OnNodeRemoved();
        objects.erase(found);
    }
}

void TreeObjects::AllRemoving() {
    lastFound = nullptr;
    for (const auto& [node, object] : objects) object->OnNodeRemoved();
    objects.clear();
}

} // namespace dax
