#include "tree/win32/TreeAccessible.h"

#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"
#include "tree/win32/TreeViewWindow.h"

#include <oleacc.h>

namespace dax {

namespace {

// The system's own trees number their items from 1 and raise events with these numbers: ours must not be among them.
constexpr LONG FirstElement = 0x1000'0000;
// With more changes of nodes in one update, one event for the whole tree replaces them.
constexpr int MaxSingleEvents = 8;

bool IsShown(const Node& node) {
    const Node* above = node.Parent();
    while (above && above->IsExpanded()) above = above->Parent();
    return !above;
}

} // namespace

void TreeAccessible::Bind() {
    Unbind();
    Connect(view.Handle());
    last = FirstElement;
    tree.AddListener(*this);
    isBound = true;
}

void TreeAccessible::Unbind() {
    Disconnect();
    if (!isBound) return;
    isBound = isUpdating = false;
    tree.RemoveListener(*this);
    AllRemoving();
}

TreeAccessible::Element TreeAccessible::ElementOf(const Node* node) {
    if (!node) return Self;
    const auto [place, isNew] = elements.try_emplace(node, last + 1);
    if (isNew) nodes.emplace(++last, const_cast<Node*>(node));
    return place->second;
}

std::vector<TreeAccessible::Element> TreeAccessible::Elements() {
    std::vector<Element> all;
    all.reserve(static_cast<size_t>(tree.Count()));
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) all.push_back(ElementOf(node));
    return all;
}

LONG TreeAccessible::Role(Element element) const {
    return element == Self ? ROLE_SYSTEM_OUTLINE : ROLE_SYSTEM_OUTLINEITEM;
}

LONG TreeAccessible::State(Element element) const {
    if (element == Self) return STATE_SYSTEM_FOCUSABLE;
    const Node& node = NodeOf(element);
    LONG state = STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_SELECTABLE;
    if (node.IsSelected()) state |= STATE_SYSTEM_SELECTED | (HasFocus() ? STATE_SYSTEM_FOCUSED : 0);
    if (node.FirstChild()) state |= node.IsExpanded() ? STATE_SYSTEM_EXPANDED : STATE_SYSTEM_COLLAPSED;
    if (view.HasCheckBoxes() && node.IsChecked()) state |= STATE_SYSTEM_CHECKED;
    if (!IsShown(node)) return state | STATE_SYSTEM_INVISIBLE;
    const RECT place = Place(element);
    const Rect client = view.ClientRect();
    if (place.top >= client.bottom || place.bottom <= client.top) state |= STATE_SYSTEM_OFFSCREEN;
    return state;
}

Text TreeAccessible::Value(Element element) const {
    return element == Self ? Text() : ToText(modTVW::GetIndentLevel(&NodeOf(element)));
}

RECT TreeAccessible::Place(Element element) const {
    const Node& node = NodeOf(element);
    const auto row = IsShown(node) ? view.RowRect(node) : std::nullopt;
    return row ? RECT{row->left, row->top, row->right, row->bottom} : RECT{};
}

TreeAccessible::Element TreeAccessible::ElementAt(POINT point) {
    return ElementOf(view.HitTest({static_cast<int>(point.x), static_cast<int>(point.y)}).node);
}

std::vector<TreeAccessible::Element> TreeAccessible::Selected() {
    if (!tree.Selected()) return {};
    return {ElementOf(tree.Selected())};
}

// Next and previous follow the enumeration, up and down the visible rows, left the parent and
// right the first child.
TreeAccessible::Element TreeAccessible::Navigate(Element from, LONG direction) {
    const auto lastOf = [](Node* node) {
        while (node && node->LastChild()) node = node->LastChild();
        return node;
    };
    if (from == Self) return ElementOf(direction == NAVDIR_FIRSTCHILD ? tree.First() : lastOf(tree.Last()));
    const Node& node = NodeOf(from);
    switch (direction) {
    case NAVDIR_NEXT:
        return ElementOf(modTVW::GetNextNode(&node));
    case NAVDIR_PREVIOUS:
        return ElementOf(node.Previous() ? lastOf(node.Previous()) : node.Parent());
    case NAVDIR_DOWN:
        return IsShown(node) ? ElementOf(modTreeviewAPI::NextVisible(node)) : Self;
    case NAVDIR_UP:
        return IsShown(node) ? ElementOf(modTreeviewAPI::PreviousVisible(node)) : Self;
    case NAVDIR_LEFT:
        return ElementOf(node.Parent());
    case NAVDIR_RIGHT:
        return ElementOf(node.FirstChild());
    default:
        return Self;
    }
}

// Done through the window, as by the user, so that its parent is notified in the same way.
bool TreeAccessible::Select(Element element, LONG flags) {
    if (flags & (SELFLAG_EXTENDSELECTION | SELFLAG_ADDSELECTION | SELFLAG_REMOVESELECTION)) return false;
    view.ApplyChanges();
    SendMessageW(Window(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(TreeItems::ItemOf(NodeOf(element))));
    return true;
}

// With check boxes the box, which the keyboard reaches on the top row alone; else the branch.
Text TreeAccessible::Action(Element element) const {
    if (element == Self) return {};
    const Node& node = NodeOf(element);
    if (view.HasCheckBoxes()) return node.IsChecked() ? u"Uncheck" : u"Check";
    if (!node.FirstChild()) return {};
    return node.IsExpanded() ? u"Collapse" : u"Expand";
}

void TreeAccessible::DoDefaultAction(Element element) {
    if (view.HasCheckBoxes())
        view.PressBox(NodeOf(element));
    else
        view.PressButton(NodeOf(element));
}

void TreeAccessible::OnFocusGained() {
    if (tree.Selected() && HasListener(EVENT_OBJECT_FOCUS)) RaiseEvent(EVENT_OBJECT_FOCUS, ElementOf(tree.Selected()));
}

void TreeAccessible::UpdateStarted() {
    isUpdating = true;
    isReordered = false;
    changes = 0;
}

void TreeAccessible::UpdateEnded() {
    isUpdating = false;
    if (isReordered || changes > MaxSingleEvents) Reordered();
}

void TreeAccessible::Reordered() {
    isReordered = true;
    if (!isUpdating) RaiseEvent(EVENT_OBJECT_REORDER, Self);
}

void TreeAccessible::Changed(DWORD event, const Node& node) {
    if (isUpdating && ++changes > MaxSingleEvents) return;
    if (HasListener(event)) RaiseEvent(event, ElementOf(&node));
}

void TreeAccessible::NodeRemoving(Node& node) {
    if (elements.contains(&node)) Changed(EVENT_OBJECT_DESTROY, node);
    for (const Node* each = &node; each && !elements.empty(); each = modTVW::GetNextNode(each, &node)) {
        const auto place = elements.find(each);
        if (place == elements.end()) continue;
        nodes.erase(place->second);
        elements.erase(place);
    }
    Reordered();
}

void TreeAccessible::AllRemoving() {
    nodes.clear();
    elements.clear();
    Reordered();
}

void TreeAccessible::NodeChanged(Node& node, NodeAspect aspect) {
    if (aspect == NodeAspect::Caption)
        Changed(EVENT_OBJECT_NAMECHANGE, node);
    else if (aspect == NodeAspect::Expanded || (aspect == NodeAspect::Checked && view.HasCheckBoxes()))
        Changed(EVENT_OBJECT_STATECHANGE, node);
}

void TreeAccessible::SelectionMoved() {
    if (HasListener(EVENT_OBJECT_SELECTION)) RaiseEvent(EVENT_OBJECT_SELECTION, ElementOf(tree.Selected()));
    if (HasFocus()) OnFocusGained();
}

} // namespace dax
