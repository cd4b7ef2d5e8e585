#include "ocx/lessonmap/LessonMapNode.h"

#include "base/Error.h"
#include "tree/modTVW.h"

#include <vector>

namespace dax {

namespace {

constexpr IID ownNodeID{0x76f0dc1f, 0x688e, 0x494f, {0x94, 0xd1, 0xf4, 0x46, 0x7d, 0x4b, 0x9a, 0x22}};

const ClassEntry nodeEntry{&CLSID_Node, &IID__Node, nullptr, L"Node", L"", nullptr, 0};

[[noreturn]] void RefuseGone() { throw Error(ErrorNumbers::ElementNotFound, u"The node is no longer in the tree."); }

} // namespace

void* NodeBase::Find(REFIID iid) { return iid == ownNodeID ? static_cast<OwnNode*>(this) : ClassObject::Find(iid); }

NodeObject::NodeObject(std::shared_ptr<TreeObjects> owner, Node& node)
    : Automation(nodeEntry), owner(std::move(owner)), node(&node) {}

NodeObject::~NodeObject() {
    if (node) owner->Forget(node);
}

Node& NodeObject::RequireNode() const {
    if (!node) RefuseGone();
    return *node;
}

Node& NodeObject::NodeBehind(IUnknown* object, const TreeObjects& wanted) {
    const auto own = Query<OwnNode>(object, ownNodeID);
    if (!own) throw Error(ErrorNumbers::TypeMismatch, u"The object is not a node of this tree.");
    const NodeObject& found = own->Object();
    if (found.owner.get() != &wanted) throw Error(ErrorNumbers::TypeMismatch, u"The node belongs to another tree.");
    return found.RequireNode();
}

HRESULT NodeObject::get_Text(BSTR* value) {
    return Answer(value, [this] { return RequireNode().Caption(); });
}

HRESULT NodeObject::put_Text(BSTR value) {
    return Run([&] { RequireNode().SetCaption(FromBstr(value)); });
}

HRESULT NodeObject::get_Key(BSTR* value) {
    return Answer(value, [this] { return RequireNode().Key(); });
}

HRESULT NodeObject::put_Key(BSTR value) {
    return Run([&] { RequireNode().SetKey(FromBstr(value)); });
}

HRESULT NodeObject::get_Tag(BSTR* value) {
    return Answer(value, [this] { return RequireNode().Tag(); });
}

HRESULT NodeObject::put_Tag(BSTR value) {
    return Run([&] { RequireNode().SetTag(FromBstr(value)); });
}

HRESULT NodeObject::get_Image(VARIANT* value) {
    if (!value) return E_POINTER;
    VariantInit(value);
    return Run([&] {
        value->lVal = RequireNode().Image();
        value->vt = VT_I4;
    });
}

HRESULT NodeObject::put_Image(VARIANT value) {
    return Run([&] { RequireNode().SetImage(owner->PictureOf(value)); });
}

HRESULT NodeObject::get_Expanded(VARIANT_BOOL* value) {
    return Answer(value, [this] { return RequireNode().IsExpanded(); });
}

HRESULT NodeObject::put_Expanded(VARIANT_BOOL value) {
    return Run([&] { RequireNode().SetExpanded(value != VARIANT_FALSE); });
}

HRESULT NodeObject::get_Checked(VARIANT_BOOL* value) {
    return Answer(value, [this] { return RequireNode().IsChecked(); });
}

HRESULT NodeObject::put_Checked(VARIANT_BOOL value) {
    return Run([&] { RequireNode().SetChecked(value != VARIANT_FALSE); });
}

HRESULT NodeObject::get_Selected(VARIANT_BOOL* value) {
    return Answer(value, [this] { return RequireNode().IsSelected(); });
}

HRESULT NodeObject::put_Selected(VARIANT_BOOL value) {
    return Run([&] {
        Node& mine = RequireNode();
        const bool isWanted = value != VARIANT_FALSE;
        if (isWanted != mine.IsSelected()) owner->Tree().Select(isWanted ? &mine : nullptr);
    });
}

HRESULT NodeObject::get_Parent(_Node** value) {
    return Related(value, [](const Node& mine) { return mine.Parent(); });
}

HRESULT NodeObject::get_Child(_Node** value) {
    return Related(value, [](const Node& mine) { return mine.FirstChild(); });
}

HRESULT NodeObject::get_Children(LONG* value) {
    return Answer(value, [this] {
        int32_t count = 0;
        for (const Node* child = RequireNode().FirstChild(); child; child = child->Next()) ++count;
        return count;
    });
}

HRESULT NodeObject::get_Next(_Node** value) {
    return Related(value, [](const Node& mine) { return mine.Next(); });
}

HRESULT NodeObject::get_Previous(_Node** value) {
    return Related(value, [](const Node& mine) { return mine.Previous(); });
}

HRESULT NodeObject::get_FirstSibling(_Node** value) {
    return Related(value,
                   [](const Node& mine) { return mine.Parent() ? mine.Parent()->FirstChild() : mine.Tree().First(); });
}

HRESULT NodeObject::get_LastSibling(_Node** value) {
    return Related(value,
                   [](const Node& mine) { return mine.Parent() ? mine.Parent()->LastChild() : mine.Tree().Last(); });
}

HRESULT NodeObject::get_Root(_Node** value) {
    return Related(value, [](Node& mine) { return modTVW::GetRootNode(&mine); });
}

HRESULT NodeObject::EnsureVisible(VARIANT_BOOL* isChanged) {
    return Answer(isChanged, [this] { return owner->EnsureVisible(RequireNode()); });
}

HRESULT NodeObject::get_Index(LONG* value) {
    return Answer(value, [this] { return owner->PlaceOf(RequireNode()); });
}

HRESULT NodeObject::get_FullPath(BSTR* value) {
    return Answer(value, [this] {
        std::vector<Text> captions;
        for (const Node* each = &RequireNode(); each; each = each->Parent()) captions.push_back(each->Caption());
        Text path = captions.back();
        for (auto caption = captions.rbegin() + 1; caption != captions.rend(); ++caption) {
            path += u'\\';
            path += *caption;
        }
        return path;
    });
}

} // namespace dax
