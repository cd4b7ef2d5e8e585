#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

using namespace modTVW;

// root > (a > (a1, a2 > a21), b)
class ModTVW : public testing::Test {
protected:
    NodeTree tree;
    Node& root = tree.Add(nullptr, Place::LastChild, u"");
    Node& a = tree.Add(&root, Place::LastChild, u"a");
    Node& a1 = tree.Add(&a, Place::LastChild, u"a1");
    Node& a2 = tree.Add(&a, Place::LastChild, u"a2");
    Node& a21 = tree.Add(&a2, Place::LastChild, u"a21");
    Node& b = tree.Add(&root, Place::LastChild, u"b");

    static Text Joined(const IDCollection& keys) {
        Text all;
        for (const Text& key : keys) all += key + u" ";
        return all;
    }
};

TEST_F(ModTVW, NothingIsAnswered) {
    EXPECT_TRUE(IsRootNode(nullptr) && GetNodeKey(nullptr).empty() && GetDescendantKeys(nullptr).IsEmpty());
    EXPECT_TRUE(!GetRootNode(nullptr) && !GetNextNode(nullptr) && !NodeExists(tree, u""));
    EXPECT_EQ(CountDescendants(nullptr) + GetSortPosition(nullptr) + GetIndentLevel(nullptr), -1);
    MoveTreeNodeTo(tree, &a, nullptr, true);
    ExpandSubtree(nullptr);
}

TEST_F(ModTVW, WalksAndNumbers) {
    EXPECT_EQ(GetNextNode(&a21, &a), nullptr);
    IDCollection keys;
    keys.Add(u"a2");
    AddSubtreeKeys(&a, keys);
    EXPECT_EQ(Joined(keys), u"a2 a a1 a21 ");
    EXPECT_EQ(GetSortPosition(&b), 2);
    EXPECT_EQ(MakeUniqueKey(tree, u""), u"key");
    EXPECT_EQ(MakeUniqueKey(tree, u"new"), u"new");
    tree.Add(&b, Place::LastChild, u"a_1");
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
