// One node of a tree as an automation object.
#pragma once

#include "com/Forwarding.h"
#include "ocx/lessonmap/TreeObjects.h"

namespace dax {

// A private interface that identifies the objects of this library's nodes.
struct OwnNode : IUnknown {
    virtual NodeObject& Object() = 0;
};

class NodeBase : public ClassObject, public OwnNode {
protected:
    using ClassObject::ClassObject;
    void* Find(REFIID iid) override;
};

class NodeObject final : public Forwarding<DualObject<_Node, NodeBase>, Node> {
public:
    NodeObject(std::shared_ptr<TreeObjects> owner, Node& node);

    // Throws Error for anything but a node that is in the tree of that owner.
    static Node& NodeFromObject(IUnknown* object, const TreeObjects& owner);
    void OnNodeRemoved() { node = nullptr; }
    NodeObject& Object() override { return *this; }

    STDMETHODIMP get_Text(BSTR* value) override { return Get(value, &Core::Caption); }
    STDMETHODIMP put_Text(BSTR value) override { return Put(&Core::SetCaption, value); }
    STDMETHODIMP get_Key(BSTR* value) override { return Get(value, &Core::Key); }
    STDMETHODIMP put_Key(BSTR value) override { return Put(&Core::SetKey, value); }
    STDMETHODIMP get_Tag(BSTR* value) override { return Get(value, &Core::Tag); }
    STDMETHODIMP put_Tag(BSTR value) override { return Put(&Core::SetTag, value); }
    STDMETHODIMP get_Image(VARIANT* value) override;
    STDMETHODIMP put_Image(VARIANT value) override;
    STDMETHODIMP get_Expanded(VARIANT_BOOL* value) override { return Get(value, &Core::IsExpanded); }
    STDMETHODIMP put_Expanded(VARIANT_BOOL value) override { return Put(&Core::SetExpanded, value); }
    STDMETHODIMP get_Checked(VARIANT_BOOL* value) override { return Get(value, &Core::IsChecked); }
    STDMETHODIMP put_Checked(VARIANT_BOOL value) override { return Put(&Core::SetChecked, value); }
    STDMETHODIMP get_Selected(VARIANT_BOOL* value) override { return Get(value, &Core::IsSelected); }
    STDMETHODIMP put_Selected(VARIANT_BOOL value) override;
    STDMETHODIMP get_Parent(_Node** value) override { return Related(value, &Node::Parent); }
    STDMETHODIMP get_Child(_Node** value) override { return Related(value, &Node::FirstChild); }
    STDMETHODIMP get_Children(LONG* value) override;
    STDMETHODIMP get_Next(_Node** value) override { return Related(value, &Node::Next); }
    STDMETHODIMP get_Previous(_Node** value) override { return Related(value, &Node::Previous); }
    STDMETHODIMP get_FirstSibling(_Node** value) override;
    STDMETHODIMP get_LastSibling(_Node** value) override;
    STDMETHODIMP get_Root(_Node** value) override;
    STDMETHODIMP EnsureVisible(VARIANT_BOOL* isChanged) override;
    STDMETHODIMP get_Index(LONG* value) override;
    STDMETHODIMP get_FullPath(BSTR* value) override;

private:
    ~NodeObject() override;
    Node& Target() const override; // throws Error when the node was removed
    // A relation that leads to a node, or null.
    template <typename Relation>
    HRESULT Related(_Node** value, Relation relation) {
        return Get(value, [&] { return owner->ObjectOf(std::invoke(relation, Target())); });
    }

    const std::shared_ptr<TreeObjects> owner;
    Node* node; // null: it was removed
};

} // namespace dax
