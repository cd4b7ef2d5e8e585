// A tree's window as a screen reader finds it: one flat list of all nodes, each with its level, state and check.
#pragma once

#include "controls/win32/Accessible.h"
#include "tree/NodeTree.h"

#include <unordered_map>

namespace dax {

class TreeViewWindow;

class TreeAccessible : public Accessible, private TreeListener {
public:
    TreeAccessible(NodeTree& model, TreeViewWindow& window) : tree(model), view(window) {}
    ~TreeAccessible() override { Unbind(); }

    void Bind(); // after the window was created; follows the model from then on
    void Unbind();
    void OnFocusGained();

    std::vector<Element> Elements() override;
    LONG Count() const override { return tree.Count(); }
    bool Has(Element element) const override { return nodes.contains(element); }
    LONG Role(Element element) const override;
    LONG State(Element element) const override;
    Text Name(Element element) const override { return NodeOf(element).Caption(); }
    Text Value(Element element) const override; // its level: 0 for the top
    RECT Place(Element element) const override;
    Element ElementAt(POINT point) override;
    Element Focused() override { return ElementOf(tree.Selected()); }
    std::vector<Element> Selected() override;
    Element Navigate(Element from, LONG direction) override;
    bool Select(Element element, LONG flags) override;
    Text Action(Element element) const override;
    void DoDefaultAction(Element element) override;

private:
    void UpdateStarted() override;
    void UpdateEnded() override;
    void NodeAdded(Node&) override { Reordered(); }
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;
    void NodeMoved(Node&) override { Reordered(); }
    void NodeChanged(Node& node, NodeAspect aspect) override;
    void SelectionMoved() override;

    Node& NodeOf(Element element) const { return *nodes.at(element); }
    Element ElementOf(const Node* node); // gives it its number when it has none yet; Self for null
    void Reordered();
    void Changed(DWORD event, const Node& node);

    NodeTree& tree;
    TreeViewWindow& view;
    bool isBound = false;
    // Numbers are assigned at the first use, and never reused.
    std::unordered_map<Element, Node*> nodes;
    std::unordered_map<const Node*, Element> elements;
    Element last = 0;
    bool isUpdating = false, isReordered = false;
    int changes = 0; // reported in this update
};

} // namespace dax
