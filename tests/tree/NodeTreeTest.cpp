#include "tree/NodeTree.h"

#include "base/Error.h"
#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

// A node keeps its texts together: one that needs more room for each unit must not change the others.
TEST(NodeTree, TextsOfEveryWidth) {
    const Text texts[] = {u"plain ü", u"漢字😀", u"", Text(1, u'\0') + u"x", Text(5000, u'a')};
    NodeTree tree;
    Node& node = tree.Add(nullptr, InsertPosition::LastChild, u"first", u"", 0, u"ü");
    for (const Text& key : texts)
        for (const Text& caption : texts)
            for (const Text& tag : texts) {
                node.SetKey(key);
                node.SetCaption(caption);
                node.SetTag(tag);
                EXPECT_TRUE(node.Key() == key && node.Caption() == caption && node.Tag() == tag);
                EXPECT_EQ(tree.Find(key), key.empty() ? nullptr : &node);
                EXPECT_FALSE(tree.Find(u"first") || node.HasKey(key + u"x"));
            }
}

// Shapes in which a walk per node or a call per level would never end or overflow the stack.
TEST(NodeTree, DeepAndWideTrees) {
    for (const bool isChain : {true, false}) {
        const int size = isChain ? 1'000'000 : 100'000;
        NodeTree tree;
        Node* node = &tree.Add(nullptr, InsertPosition::LastChild, u"");
        Node* const root = node;
        for (int i = 0; i < size; ++i) {
            Node& added = tree.Add(node, InsertPosition::LastChild, ToText(i));
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
    } // and the tree is destroyed as a whole
}

TEST(NodeTree, KeysAreUniqueExceptTheEmptyOne) {
    NodeTree tree;
    for (int i = 0; i < 2; ++i) tree.Add(nullptr, InsertPosition::LastChild, u"");
    Node& a = tree.Add(nullptr, InsertPosition::LastChild, u"a");
    EXPECT_THROW(tree.Add(&a, InsertPosition::LastChild, u"a"), Error);
    // Many that change theirs, and are removed.
    std::vector<Node*> nodes;
    for (int i = 0; i < 500; ++i) nodes.push_back(&tree.Add(&a, InsertPosition::LastChild, ToText(i)));
    EXPECT_THROW(nodes[0]->SetKey(u"a"), Error);
    const auto newKey = [](size_t i) { return u"n" + ToText(i % 3 ? i : i + 1000); };
    for (size_t i = 0; i < nodes.size(); ++i) nodes[i]->SetKey(newKey(i));
    for (size_t i = 0; i < nodes.size(); i += 2) tree.Remove(*nodes[i]);
    for (size_t i = 0; i < nodes.size(); ++i) {
        EXPECT_EQ(tree.Find(newKey(i)), i % 2 ? nodes[i] : nullptr);
        EXPECT_FALSE(tree.Find(ToText(i)));
    }
    tree.Number();
    EXPECT_EQ(nodes[499]->Position(), 250);
    nodes[499]->SetKey(u"");
    EXPECT_FALSE(tree.Find(newKey(499)) || tree.Find(u""));
    EXPECT_EQ(tree.Count(), 253);
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
    void NodeMoving(Node& node) override { said += u"<" + node.Key(); }
    void NodeMoved(Node& node) override { said += u">" + node.Key(); }
    void NodeChanged(Node& node, NodeAspect aspect) override {
        said += u"~" + node.Key() + (aspect == NodeAspect::Expanded ? Text() : ToText(static_cast<int>(aspect)));
    }
    void SelectionMoved() override { said += u"!"; }
    Text Take() { return std::exchange(said, {}); }

    NodeTree& tree;
    Text said;
};

TEST(NodeTree, ListenersReceiveEveryChangeAndOneSelection) {
    NodeTree tree;
    Recorder recorder(tree);
    int selections = 0;
    tree.SelectionChanged.AddPermanent([&] { ++selections; });
    Node& r = tree.Add(nullptr, InsertPosition::LastChild, u"r");
    Node& a = tree.Add(&r, InsertPosition::LastChild, u"a");
    Node& b = tree.Add(&a, InsertPosition::LastChild, u"b");
    EXPECT_EQ(recorder.Take(), u"+r+a+b");
    tree.Select(&b); // opens its ancestors
    EXPECT_EQ(recorder.Take(), u"(~a~r)!");
    for (int round = 0; round < 2; ++round) {
        b.SetCaption(u"x");
        b.SetTag(u"y");
        b.SetImage(3);
        b.SetChecked(true);
        b.SetKey(u"d");
    }
    EXPECT_EQ(recorder.Take(), u"~b1~b2~b3~b5~d0");
    b.SetKey(u"b");
    tree.Move(b, &r, InsertPosition::FirstChild);
    tree.Move(b, &b, InsertPosition::After);
    tree.Move(b, &a, InsertPosition::LastChild);
    EXPECT_EQ(recorder.Take(), u"~b0(<b>b)(<b>b)");
    {
        const TreeUpdate update(tree);
        tree.Select(&a);
        tree.Select(&r);
        a.SetExpanded(false);
        EXPECT_EQ(selections, 1);
    }
    EXPECT_EQ(recorder.Take(), u"(~a)!");
    EXPECT_EQ(selections, 2);
    r.SetExpanded(false);
    r.SetExpanded(true);
    tree.Select(&a);
    tree.Remove(a); // the parent is selected
    EXPECT_EQ(recorder.Take(), u"(~r)(~r)()!(-a)!");
    {
        const TreeUpdate update(tree);
        tree.Clear();
        tree.Select(&tree.Add(nullptr, InsertPosition::LastChild, u"n")); // perhaps where the other one was
    }
    EXPECT_EQ(recorder.Take(), u"(0+n)!");
    EXPECT_FALSE(tree.Find(u"b"));
    for (const char16_t* key : {u"m", u"p"}) tree.Add(nullptr, InsertPosition::LastChild, key);
    tree.Remove(*tree.Find(u"m")); // which was not selected
    EXPECT_EQ(recorder.Take(), u"+m+p(-m)");
    {
        const TreeUpdate update(tree);
        tree.Remove(*tree.Selected());
        tree.Select(&tree.Add(nullptr, InsertPosition::LastChild, u"o"));
    }
    EXPECT_EQ(recorder.Take(), u"(-n+o)!");
}

TEST(NodeTree, ListenerOfTheSelectionMayDestroyTheTree) {
    auto tree = std::make_unique<NodeTree>();
    Node& a = tree->Add(nullptr, InsertPosition::LastChild, u"a");
    tree->Add(nullptr, InsertPosition::LastChild, u"b");
    tree->Select(&a);
    int later = 0;
    tree->SelectionChanged.AddPermanent([&tree] { tree.reset(); });
    tree->SelectionChanged.AddPermanent([&later] { ++later; });
    tree->Remove(a);
    EXPECT_FALSE(tree);
    EXPECT_EQ(later, 0);
}

using namespace modTVW;

// root > (a > (a1, a2 > a21), b)
class ModTVW : public testing::Test {
protected:
    NodeTree tree;
    Node& root = tree.Add(nullptr, InsertPosition::LastChild, u"");
    Node& a = tree.Add(&root, InsertPosition::LastChild, u"a");
    Node& a1 = tree.Add(&a, InsertPosition::LastChild, u"a1");
    Node& a2 = tree.Add(&a, InsertPosition::LastChild, u"a2");
    Node& a21 = tree.Add(&a2, InsertPosition::LastChild, u"a21");
    Node& b = tree.Add(&root, InsertPosition::LastChild, u"b");
};

TEST_F(ModTVW, AcceptsNullNodes) {
    EXPECT_TRUE(IsRootNode(nullptr) && GetNodeKey(nullptr).empty() && GetDescendantKeys(nullptr).IsEmpty());
    EXPECT_TRUE(!GetRootNode(nullptr) && !GetNextNode(nullptr) && !NodeExists(tree, u""));
    EXPECT_EQ(CountDescendants(nullptr) + GetSortPosition(nullptr) + GetIndentLevel(nullptr), -1);
    MoveTreeNodeTo(tree, &a, nullptr, true);
    ExpandSubtree(nullptr);
}

TEST_F(ModTVW, MovesWhatCanMove) {
    const std::pair<Node*, std::string> possible[] = {{nullptr, "------"}, {&root, "------"}, {&a, "--d---"},
                                                      {&b, "-u-i--"},      {&a1, "--d-o-"},   {&a2, "-udio-"}};
    for (const auto& [node, movements] : possible)
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(CanMoveTreeNode(tree, node, static_cast<GroupMovementTypes>(i)), movements[i] != '-') << i;
    EXPECT_FALSE(MoveTreeNode(tree, &a, gmtUp));
    EXPECT_TRUE(MoveTreeNode(tree, &a1, gmtOutdent));
    EXPECT_EQ(a.Next(), &a1);
}

TEST_F(ModTVW, WalksAndNumbers) {
    EXPECT_EQ(GetNextNode(&a21, &a), nullptr);
    IDCollection keys;
    keys.Add(u"a2");
    AddSubtreeKeys(&a, keys);
    EXPECT_EQ(std::vector<Text>(keys.begin(), keys.end()), (std::vector<Text>{u"a2", u"a", u"a1", u"a21"}));
    EXPECT_EQ(GetSortPosition(&b), 2);
    EXPECT_EQ(MakeUniqueKey(tree, u""), u"key");
    EXPECT_EQ(MakeUniqueKey(tree, u"new"), u"new");
    tree.Add(&b, InsertPosition::LastChild, u"a_1");
    EXPECT_EQ(MakeUniqueKey(tree, u"a"), u"a_2");
}

TEST_F(ModTVW, RowsAndChecks) {
    using namespace modTreeviewAPI;
    const auto rows = [&] { // in order, forwards and backwards
        Text down, up;
        for (const Node* node = tree.First(); node; node = NextVisible(*node)) down += node->Key() + u" ";
        for (const Node* node = LastVisible(tree); node; node = PreviousVisible(*node)) up = node->Key() + u" " + up;
        EXPECT_EQ(down, up);
        return down;
    };
    root.SetExpanded(true);
    b.SetExpanded(true); // no children: still the last row
    EXPECT_EQ(rows(), u" a b ");
    a.SetExpanded(true);
    EXPECT_EQ(rows(), u" a a1 a2 b ");
    SetSubtreeCheck(a, true);
    EXPECT_EQ(CountChecked(tree), 4);
    EXPECT_EQ(CountChecked(&a2), 2);
    EXPECT_FALSE(b.IsChecked());
}

} // namespace
} // namespace dax
