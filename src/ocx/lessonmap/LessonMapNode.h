// One node of a tree as an automation object.
#pragma once

#include "com/ClassObject.h"
#include "ocx/lessonmap/LessonMapTree.h"

namespace dax {

// By this a tree knows the objects of its own nodes.
struct OwnNode : IUnknown {
    virtual NodeObject& Object() = 0;
};

class NodeBase : public ClassObject, public OwnNode {
protected:
    using ClassObject::ClassObject;
    void* Find(REFIID iid) override;
};

class NodeObject final : public Automation<_Node, NodeBase> {
public:
    NodeObject(std::shared_ptr<TreeObjects> owner, Node& node);

    // Throws Error for anything but a node that is in the tree of that maker.
    static Node& NodeBehind(IUnknown* object, const TreeObjects& owner);
    void NodeGone() { node = nullptr; }
    NodeObject& Object() override { return *this; }

    STDMETHODIMP get_Text(BSTR* value) override;
    STDMETHODIMP put_Text(BSTR value) override;
    STDMETHODIMP get_Key(BSTR* value) override;
    STDMETHODIMP put_Key(BSTR value) override;
    STDMETHODIMP get_Tag(BSTR* value) override;
    STDMETHODIMP put_Tag(BSTR value) override;
    STDMETHODIMP get_Image(VARIANT* value) override;
    STDMETHODIMP put_Image(VARIANT value) override;
    STDMETHODIMP get_Expanded(VARIANT_BOOL* value) override;
    STDMETHODIMP put_Expanded(VARIANT_BOOL value) override;
    STDMETHODIMP get_Checked(VARIANT_BOOL* value) override;
    STDMETHODIMP put_Checked(VARIANT_BOOL value) override;
    STDMETHODIMP get_Selected(VARIANT_BOOL* value) override;
    STDMETHODIMP put_Selected(VARIANT_BOOL value) override;
    STDMETHODIMP get_Parent(_Node** value) override;
    STDMETHODIMP get_Child(_Node** value) override;
    STDMETHODIMP get_Children(LONG* value) override;
    STDMETHODIMP get_Next(_Node** value) override;
    STDMETHODIMP get_Previous(_Node** value) override;
    STDMETHODIMP get_FirstSibling(_Node** value) override;
    STDMETHODIMP get_LastSibling(_Node** value) override;
    STDMETHODIMP get_Root(_Node** value) override;
    STDMETHODIMP EnsureVisible(VARIANT_BOOL* isChanged) override;
    STDMETHODIMP get_Index(LONG* value) override;
    STDMETHODIMP get_FullPath(BSTR* value) override;

private:
    ~NodeObject() override;
    Node& RequireNode() const; // throws Error when the node is gone
    // A relation that answers a node, or null.
    template <typename Relation>
    HRESULT Related(_Node** value, Relation relation) {
        return Answer(value, [&] { return owner->ObjectOf(relation(RequireNode())); });
    }

    const std::shared_ptr<TreeObjects> owner;
    Node* node; // null: it is gone
};

// A reference that a maker has answered.
template <typename Interface>
ComPtr<Interface> Owned(Interface* made) {
    ComPtr<Interface> result;
    *result.Out() = made;
    return result;
}

} // namespace dax
