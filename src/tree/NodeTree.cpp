#include "tree/NodeTree.h"

#include "base/Error.h"

#include <exception>
#include <functional>

namespace dax {

namespace {

constexpr size_t firstBuckets = 64;

uint32_t HashOf(TextView key) { return static_cast<uint32_t>(std::hash<TextView>()(key)); }

} // namespace

NodeTree::NodeTree() : buckets(firstBuckets) {}

NodeTree::~NodeTree() {
    for (Node* node = firstAdded; node;) {
        Node* const next = node->nextAdded;
        delete node;
        node = next;
    }
}

Node& NodeTree::Add(Node* relative, InsertPosition position, TextView key, TextView caption, int image, TextView tag) {
    const uint32_t hash = HashOf(key);
    CheckKey(key, hash);
    if (count == INT32_MAX) throw Error(ErrorNumbers::Overflow, u"The tree cannot hold more nodes.");
    Node* const node = new Node;
    try {
        node->texts = NodeTexts(key, caption, tag);
        if (!key.empty()) ReserveKey();
    } catch (...) {
        delete node;
        throw;
    }
    node->tree = this;
    node->image = image;
    if (!key.empty()) AddKey(*node, hash);
    Link(*node, relative, position);
    node->previousAdded = lastAdded;
    (lastAdded ? lastAdded->nextAdded : firstAdded) = node;
    lastAdded = node;
    ++count;
    Notify([&](TreeListener& listener) { listener.NodeAdded(*node); });
    return *node;
}

void NodeTree::Move(Node& node, Node* relative, InsertPosition position) {
    if (relative == &node) return;
    const TreeUpdate update(*this);
    Notify([&](TreeListener& listener) { listener.NodeMoving(node); });
    Unlink(node);
    Link(node, relative, position);
    Notify([&](TreeListener& listener) { listener.NodeMoved(node); });
    fix = Fix::Reveal; // the selected node may be in a collapsed branch now
}

void NodeTree::Remove(Node& node) {
    const TreeUpdate update(*this);
    Notify([&](TreeListener& listener) { listener.NodeRemoving(node); });
    Node* const successor = node.next ? node.next : node.previous ? node.previous : node.parent;
    Node* const wasSelected = selected;
    Unlink(node);
    Destroy(node);
    if (wasSelected && !selected) Select(successor);
}

void NodeTree::Clear() {
    const TreeUpdate update(*this);
    Notify([](TreeListener& listener) { listener.AllRemoving(); });
    Node* node = firstAdded;
    firstTop = lastTop = firstAdded = lastAdded = selected = nullptr;
    isSelectedBeforeGone = true;
    count = 0;
    keyCount = 0;
    buckets.assign(firstBuckets, nullptr);
    while (node) {
        Node* const next = node->nextAdded;
        delete node;
        node = next;
    }
}

Node* NodeTree::Find(TextView key) const { return key.empty() ? nullptr : Find(key, HashOf(key)); }

Node* NodeTree::Find(TextView key, uint32_t hash) const {
    Node* node = BucketOf(hash);
    while (node && (node->hash != hash || !node->HasKey(key))) node = node->nextInBucket;
    return node;
}

void NodeTree::Select(Node* node) {
    const TreeUpdate update(*this);
    selected = node;
    fix = Fix::Reveal;
}

void NodeTree::Number() {
    int32_t depth = 0;
    for (Node* node = firstTop; node;) {
        node->depth = depth;
        node->position = node->previous ? node->previous->position + 1 : 1;
        if (node->firstChild) {
            node = node->firstChild;
            ++depth;
            continue;
        }
        while (node && !node->next) {
            node = node->parent;
            --depth;
        }
        if (node) node = node->next;
    }
}

void NodeTree::AddListener(TreeListener& listener) { listeners.push_back(&listener); }

void NodeTree::RemoveListener(TreeListener& listener) { std::erase(listeners, &listener); }

void NodeTree::Link(Node& node, Node* relative, InsertPosition position) {
    const bool isFirst = position == InsertPosition::Before || position == InsertPosition::FirstChild;
    Node* parent = relative;
    Node* before = nullptr; // the sibling that the node follows
    if (relative && (position == InsertPosition::Before || position == InsertPosition::After)) {
        parent = relative->parent;
        before = position == InsertPosition::After ? relative : relative->previous;
    } else if (!isFirst) {
        before = parent ? parent->lastChild : lastTop;
    }
    Node*& first = parent ? parent->firstChild : firstTop;
    Node*& last = parent ? parent->lastChild : lastTop;
    Node* const after = before ? before->next : first;
    node.parent = parent;
    node.previous = before;
    node.next = after;
    (before ? before->next : first) = &node;
    (after ? after->previous : last) = &node;
}

void NodeTree::Unlink(Node& node) {
    Node*& first = node.parent ? node.parent->firstChild : firstTop;
    Node*& last = node.parent ? node.parent->lastChild : lastTop;
    (node.previous ? node.previous->next : first) = node.next;
    (node.next ? node.next->previous : last) = node.previous;
    node.parent = node.previous = node.next = nullptr;
}

// Leaves first, following the links: a branch may be deeper than any stack.
void NodeTree::Destroy(Node& top) {
    for (Node* node = &top; node;) {
        if (node->firstChild) {
            node = node->firstChild;
            continue;
        }
        Node* const parent = node->parent;
        Node* const then = node->next ? node->next : parent;
        if (parent) parent->firstChild = node->next;
        if (node == selected) selected = nullptr;
        if (node == selectedBefore) isSelectedBeforeGone = true;
        RemoveKey(*node);
        (node->previousAdded ? node->previousAdded->nextAdded : firstAdded) = node->nextAdded;
        (node->nextAdded ? node->nextAdded->previousAdded : lastAdded) = node->previousAdded;
        --count;
        delete node;
        node = then;
    }
}

void NodeTree::AddKey(Node& node, uint32_t hash) {
    node.hash = hash;
    node.nextInBucket = std::exchange(BucketOf(hash), &node);
    ++keyCount;
}

void NodeTree::RemoveKey(Node& node) {
    if (node.texts.IsEmpty(NodeTexts::Key)) return;
    Node** place = &BucketOf(node.hash);
    while (*place != &node) place = &(*place)->nextInBucket;
    *place = node.nextInBucket;
    --keyCount;
}

// Room for one more key: about one node to a bucket.
void NodeTree::ReserveKey() {
    if (keyCount < buckets.size()) return;
    const std::vector<Node*> smaller = std::exchange(buckets, std::vector<Node*>(buckets.size() * 2));
    for (Node* node : smaller) {
        while (node) {
            Node* const next = node->nextInBucket;
            node->nextInBucket = std::exchange(BucketOf(node->hash), node);
            node = next;
        }
    }
}

void NodeTree::CheckKey(TextView key, uint32_t hash) const {
    if (key.empty() || !Find(key, hash)) return;
    throw Error(ErrorNumbers::DuplicateKey, u"Two nodes cannot have the same key: '" + Text(Shorten(key, 100)) + u"'.");
}

// No ancestor of the selected node is collapsed: either they expand, or the topmost collapsed one is selected.
void NodeTree::FixSelection() {
    const Fix requested = std::exchange(fix, Fix::None);
    if (!selected || requested == Fix::None) return;
    Node* topmost = nullptr;
    for (Node* node = selected->parent; node; node = node->parent) {
        if (node->isExpanded) continue;
        topmost = node;
        if (requested == Fix::Reveal) {
            node->isExpanded = true;
            Notify([&](TreeListener& listener) { listener.NodeChanged(*node, NodeAspect::Expanded); });
        }
    }
    if (requested == Fix::SelectCollapsed && topmost) selected = topmost;
}

void NodeTree::BeginUpdate() {
    if (updates++ > 0) return;
    selectedBefore = selected;
    isSelectedBeforeGone = false;
    Notify([](TreeListener& listener) { listener.UpdateStarted(); });
}

void NodeTree::EndUpdate(bool isUnwinding) {
    if (updates > 1) {
        --updates;
        return;
    }
    FixSelection();
    updates = 0;
    Notify([](TreeListener& listener) { listener.UpdateEnded(); });
    const bool isOther = isSelectedBeforeGone || selected != selectedBefore;
    const bool wasOrIs = selected || selectedBefore;
    if (!isOther || !wasOrIs) return;
    Notify([](TreeListener& listener) { listener.SelectionMoved(); });
    if (!isUnwinding) SelectionChanged.Raise(); // nothing may follow: the tree may be destroyed
}

void Node::SetKey(const Text& newKey) {
    if (HasKey(newKey)) return;
    const uint32_t newHash = HashOf(newKey);
    tree->CheckKey(newKey, newHash);
    NodeTexts changed(newKey, Caption(), Tag());
    tree->ReserveKey();
    tree->RemoveKey(*this);
    texts = std::move(changed);
    if (!newKey.empty()) tree->AddKey(*this, newHash);
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Key); });
}

void Node::SetCaption(TextView newCaption) {
    if (texts.Is(NodeTexts::Caption, newCaption)) return;
    texts.Set(NodeTexts::Caption, newCaption);
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Caption); });
}

void Node::SetTag(TextView newTag) {
    if (texts.Is(NodeTexts::Tag, newTag)) return;
    texts.Set(NodeTexts::Tag, newTag);
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Tag); });
}

void Node::SetImage(int newImage) {
    if (newImage == image) return;
    image = newImage;
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Image); });
}

void Node::SetExpanded(bool expanded) {
    if (expanded == isExpanded) return;
    const TreeUpdate update(*tree);
    isExpanded = expanded;
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Expanded); });
    if (!expanded) tree->fix = NodeTree::Fix::SelectCollapsed;
}

void Node::SetChecked(bool checked) {
    if (checked == isChecked) return;
    isChecked = checked;
    tree->Notify([&](TreeListener& listener) { listener.NodeChanged(*this, NodeAspect::Checked); });
}

bool Node::IsSelected() const { return tree->Selected() == this; }

TreeUpdate::TreeUpdate(NodeTree& tree) : tree(tree), exceptionsBefore(std::uncaught_exceptions()) {
    tree.BeginUpdate();
}

TreeUpdate::~TreeUpdate() noexcept(false) { tree.EndUpdate(std::uncaught_exceptions() > exceptionsBefore); }

} // namespace dax
