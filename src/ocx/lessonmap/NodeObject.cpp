#include "ocx/lessonmap/NodeObject.h"

#include "base/Error.h"
#include "tree/modTVW.h"

#include <vector>

namespace dax {

namespace {

constexpr IID ownNodeID{0x76f0dc1f, 0x688e, 0x494f, {0x94, 0xd1, 0xf4, 0x46, 0x7d, 0x4b, 0x9a, 0x22}};

const ClassEntry nodeEntry{&CLSID_Node, &IID__Node, nullptr, L"Node", L"", nullptr, 0};

[[noreturn]] void ThrowRemoved() { throw Error(ErrorNumbers::ElementNotFound, u"The node is no longer in the tree."); }

} // namespace

void* NodeBase::Find(REFIID iid) { return iid == ownNodeID ? static_cast<OwnNode*>(this) : ClassObject::Find(iid); }

NodeObject::NodeObject(std::shared_ptr<TreeObjects> owner, Node& node)
    : Forwarding(nodeEntry), owner(std::move(owner)), node(&node) {}

NodeObject::~NodeObject() {
    if (node) owner->Erase(node);
}

Node& NodeObject::Target() const {
    if (!node) ThrowRemoved();
    return *node;
}

Node& NodeObject::NodeFromObject(IUnknown* object, const TreeObjects& requested) {
    const auto own = Query<OwnNode>(object, ownNodeID);
    if (!own) throw Error(ErrorNumbers::TypeMismatch, u"The object is not a node of this tree.");
    const NodeObject& found = own->Object();
    if (found.owner.get() != &requested) throw Error(ErrorNumbers::TypeMismatch, u"The node belongs to another tree.");
    return found.Target();
}

HRESULT NodeObject::get_Image(VARIANT* value) {
    return Get(value, [this] { return Target().Image(); });
}

HRESULT NodeObject::put_Image(VARIANT value) {
    return Call([&] { Target().SetImage(owner->PictureOf(value)); });
}

HRESULT NodeObject::put_Selected(VARIANT_BOOL value) {
    return Call([&] {
        Node& own = Target();
        const bool isWanted = value != VARIANT_FALSE;
        if (isWanted != own.IsSelected()) owner->Tree().Select(isWanted ? &own : nullptr);
    });
}

HRESULT NodeObject::get_Children(LONG* value) {
    return Get(value, [this] {
        int32_t count = 0;
        for (const Node* child = Target().FirstChild(); child; child = child->Next()) ++count;
        return count;
    });
}

HRESULT NodeObject::get_FirstSibling(_Node** value) {
    return Related(value,
                   [](const Node& own) { return own.Parent() ? own.Parent()->FirstChild() : own.Tree().First(); });
}

HRESULT NodeObject::get_LastSibling(_Node** value) {
    return Related(value, [](const Node& own) { return own.Parent() ? own.Parent()->LastChild() : own.Tree().Last(); });
}

HRESULT NodeObject::get_Root(_Node** value) {
    return Related(value, [](Node& own) { return modTVW::GetRootNode(&own); });
}

HRESULT NodeObject::EnsureVisible(VARIANT_BOOL* isChanged) {
    return Get(isChanged, [this] { return owner->EnsureVisible(Target()); });
}

HRESULT NodeObject::get_Index(LONG* value) {
    return Get(value, [this] { return owner->PlaceOf(Target()); });
}

HRESULT NodeObject::get_FullPath(BSTR* value) {
    return Get(value, [this] {
        std::vector<Text> captions;
        for (const Node* each = &Target(); each; each = each->Parent()) captions.push_back(each->Caption());
        Text path = captions.back();
        for (auto caption = captions.rbegin() + 1; caption != captions.rend(); ++caption) {
            path += u'\\';
            path += *caption;
        }
        return path;
    });
}

} // namespace dax
