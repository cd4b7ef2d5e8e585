#include "tree/NodeTree.h"
#include "tree/ReferenceTree.h"

#include "data/Error.h"
#include "tree/modTVW.h"

#include <gtest/gtest.h>

#include <random>

namespace dax {
namespace {

using test::ReferenceTree;

std::vector<Text> InOrder(const IDCollection& keys) { return {keys.begin(), keys.end()}; }

// Every link, count, key and derived number of the tree against the reference.
void ExpectEqual(NodeTree& tree, const ReferenceTree& reference) {
    std::vector<Text> expected;
    reference.Keys(u"", expected);
    ASSERT_EQ(tree.Count(), static_cast<int32_t>(expected.size()) + 1);
    Node* const root = tree.First();
    ASSERT_EQ(InOrder(modTVW::GetDescendantKeys(root)), expected);
    tree.Number();
    size_t collected = 0;
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) ++collected;
    ASSERT_EQ(collected, expected.size() + 1);
    for (const Text& key : expected) {
        Node* const node = tree.Find(key);
        ASSERT_TRUE(node);
        ASSERT_EQ(node->Parent()->Key(), reference.parents.at(key));
        ASSERT_EQ(node->Position(), static_cast<int32_t>(reference.Index(key)) + 1);
        ASSERT_EQ(node->Position(), modTVW::GetSortPosition(node));
        ASSERT_EQ(node->Depth(), modTVW::GetIndentLevel(node));
        const auto& list = reference.children.at(key);
        ASSERT_EQ(node->LastChild() ? node->LastChild()->Key() : Text(), list.empty() ? Text() : list.back());
        ASSERT_EQ(node->Caption(), u"caption " + key);
    }
    if (Node* const selected = tree.Selected()) {
        for (Node* node = selected->Parent(); node; node = node->Parent()) ASSERT_TRUE(node->IsExpanded());
    }
}

TEST(NodeTree, RandomOperationsAgreeWithReference) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        const auto pick = [&random](size_t n) { return static_cast<size_t>(random() % n); };
        NodeTree tree;
        ReferenceTree reference;
        tree.Add(nullptr, Place::LastChild, u"");
        std::vector<Text> keys;
        int next = 0;
        for (int step = 0; step < 300; ++step) {
            const Text key = keys.empty() ? Text() : keys[pick(keys.size())];
            Node* const node = keys.empty() ? tree.First() : tree.Find(key);
            const size_t what = pick(keys.size() < 60 ? 10 : 16);
            if (what < 5 || keys.empty()) {
                const Text fresh = u"k" + ToText(++next);
                const auto place = node == tree.First() ? Place(2 + pick(2)) : Place(pick(4));
                tree.Add(node, place, fresh, u"caption " + fresh);
                switch (place) {
                case Place::Before:
                    reference.Insert(fresh, reference.parents[key], reference.Index(key));
                    break;
                case Place::After:
                    reference.Insert(fresh, reference.parents[key], reference.Index(key) + 1);
                    break;
                case Place::FirstChild:
                    reference.Insert(fresh, key, 0);
                    break;
                case Place::LastChild:
                    reference.Insert(fresh, key, SIZE_MAX);
                    break;
                }
                keys.push_back(fresh);
            } else if (what < 8) {
                const auto movement = GroupMovementTypes(1 + pick(4));
                const auto to = reference.Destination(key, movement);
                Node* const selected = tree.Selected();
                ASSERT_EQ(modTVW::CanMoveTreeNode(tree, node, movement), to.has_value());
                ASSERT_EQ(modTVW::MoveTreeNode(tree, node, movement), to.has_value());
                ASSERT_EQ(tree.Selected(), selected);
                if (to) reference.Place(key, to->first, to->second);
            } else if (what == 8) {
                const Text other = keys[pick(keys.size())];
                const bool after = pick(2);
                modTVW::MoveTreeNodeTo(tree, node, tree.Find(other), after);
                if (!reference.Contains(key, other)) {
                    const Text parent = reference.parents[other];
                    reference.Unlink(key);
                    const size_t at = reference.Index(other) + after;
                    reference.children[parent].insert(reference.children[parent].begin() + static_cast<ptrdiff_t>(at),
                                                      key);
                    reference.parents[key] = parent;
                }
            } else if (what == 9) {
                tree.Select(pick(4) ? node : nullptr);
                tree.Find(keys[pick(keys.size())])->SetExpanded(pick(2));
            } else {
                tree.Remove(*node);
                reference.Erase(key);
                std::erase_if(keys, [&](const Text& each) { return !reference.parents.contains(each); });
            }
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(tree, reference)) << "seed " << seed << " step " << step;
        }
    }
}

// Shapes in which a walk per node or a call per level would never end or overflow the stack.
TEST(NodeTree, DeepAndWideTrees) {
    for (const bool isChain : {true, false}) {
        const int size = isChain ? 1'000'000 : 100'000;
        NodeTree tree;
        Node* node = &tree.Add(nullptr, Place::LastChild, u"");
        Node* const root = node;
        for (int i = 0; i < size; ++i) {
            Node& added = tree.Add(node, Place::LastChild, ToText(i));
            if (isChain) node = &added;
        }
        EXPECT_EQ(modTVW::CountDescendants(root), size);
        tree.Number();
        Node* const last = tree.Find(ToText(size - 1));
        EXPECT_EQ(last->Depth(), isChain ? size : 1);
        EXPECT_EQ(last->Position(), isChain ? 1 : size);
        if (isChain) { // what comes costs a walk up and a walk down, not one for each node
            tree.Remove(*tree.Find(u"100000"));
            EXPECT_EQ(tree.Count(), 100'001);
        }
        Node* const deepest = tree.Find(u"99999");
        tree.Select(deepest);
        modTVW::SetAllExpanded(tree, true);
        modTVW::CollapseSubtree(root);
        EXPECT_EQ(tree.Selected(), isChain ? root->FirstChild() : deepest);
        modTVW::ExpandSubtree(root);
        EXPECT_EQ(modTVW::GetExpandedKeys(tree).Count(), 100'001u);
    } // and the tree goes in one piece
}

TEST(NodeTree, KeysAreUniqueExceptTheEmptyOne) {
    NodeTree tree;
    tree.Add(nullptr, Place::LastChild, u"");
    tree.Add(nullptr, Place::LastChild, u"");
    Node& a = tree.Add(nullptr, Place::LastChild, u"a");
    EXPECT_THROW(tree.Add(&a, Place::LastChild, u"a"), Error);
    Node& b = tree.Add(&a, Place::LastChild, u"b");
    EXPECT_THROW(b.SetKey(u"a"), Error);
    b.SetKey(u"c");
    EXPECT_EQ(tree.Find(u"c"), &b);
    EXPECT_FALSE(tree.Find(u"b"));
    EXPECT_FALSE(tree.Find(u""));
    EXPECT_EQ(tree.Count(), 4);
    b.SetKey(u"");
    EXPECT_FALSE(tree.Find(u"c"));
}

class Recorder : public TreeListener {
public:
    explicit Recorder(NodeTree& tree) : tree(tree) { tree.AddListener(*this); }
    ~Recorder() override { tree.RemoveListener(*this); }
    void UpdateStarted() override { said += u"("; }
    void UpdateEnded() override { said += u")"; }
    void NodeAdded(Node& node) override { said += u"+" + node.Key(); }
    void NodeRemoving(Node& node) override { said += u"-" + node.Key(); }
    void AllRemoving() override { said += u"0"; }
    void NodeMoved(Node& node) override { said += u">" + node.Key(); }
    void NodeChanged(Node& node, NodeAspect) override { said += u"~" + node.Key(); }
    void SelectionMoved() override { said += u"!"; }
    Text Take() { return std::exchange(said, {}); }

    NodeTree& tree;
    Text said;
};

TEST(NodeTree, ListenersHearEveryChangeAndOneSelection) {
    NodeTree tree;
    Recorder recorder(tree);
    int selections = 0;
    tree.SelectionChanged().Add([&] { ++selections; });
    Node& r = tree.Add(nullptr, Place::LastChild, u"r");
    Node& a = tree.Add(&r, Place::LastChild, u"a");
    Node& b = tree.Add(&a, Place::LastChild, u"b");
    EXPECT_EQ(recorder.Take(), u"+r+a+b");
    tree.Select(&b); // opens its ancestors
    EXPECT_EQ(recorder.Take(), u"(~a~r)!");
    b.SetCaption(u"x");
    b.SetCaption(u"x");
    EXPECT_EQ(recorder.Take(), u"~b");
    {
        const TreeUpdate update(tree);
        tree.Select(&a);
        tree.Select(&r);
        a.SetExpanded(false);
        EXPECT_EQ(selections, 1);
    }
    EXPECT_EQ(recorder.Take(), u"(~a)!");
    EXPECT_EQ(selections, 2);
    tree.Select(&b);
    recorder.Take();
    r.SetExpanded(false); // takes the selection
    EXPECT_EQ(tree.Selected(), &r);
    tree.Select(&a);
    Node& c = tree.Add(&r, Place::LastChild, u"c");
    recorder.Take();
    tree.Remove(a); // the next sibling inherits
    EXPECT_EQ(tree.Selected(), &c);
    EXPECT_EQ(recorder.Take(), u"(-a)!");
    tree.Remove(c); // else the parent
    EXPECT_EQ(tree.Selected(), &r);
    recorder.Take();
    tree.Clear();
    EXPECT_EQ(recorder.Take(), u"(0)!");
    EXPECT_FALSE(tree.Selected());
}

TEST(NodeTree, ListenerOfTheSelectionMayDestroyTheTree) {
    auto tree = std::make_unique<NodeTree>();
    Node& a = tree->Add(nullptr, Place::LastChild, u"a");
    tree->Add(nullptr, Place::LastChild, u"b");
    tree->Select(&a);
    int later = 0;
    tree->SelectionChanged().Add([&tree] { tree.reset(); });
    tree->SelectionChanged().Add([&later] { ++later; });
    tree->Remove(a);
    EXPECT_FALSE(tree);
    EXPECT_EQ(later, 0);
}

} // namespace
} // namespace dax
