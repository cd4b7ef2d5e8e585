#include "tree/FakeTreeWindow.h"

#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

// Where drops go, what begins a drag and what is ticked is tested with the mouse in real windows.
// Two maps, all open: m > (p > (p1, p2), q, r), n > (s).
class TreeInput : public testing::Test {
protected:
    TreeInput() {
        for (Node* node : {&m, &p, &n}) node->SetExpanded(true);
        support.Bind(&tree, &window);
        subclasser.RegisterWindows(&tree, &window);
        subclasser.SetActive(true);
    }
    Node& Child(Node* parent, TextView key) { return tree.Add(parent, Place::LastChild, key, key); }

    NodeTree tree;
    Node &m = Child(nullptr, u"m"), &p = Child(&m, u"p"), &p1 = Child(&p, u"p1"), &p2 = Child(&p, u"p2"),
         &q = Child(&m, u"q"), &r = Child(&m, u"r"), &n = Child(nullptr, u"n"), &s = Child(&n, u"s");
    test::FakeTreeWindow window{tree};
    LMEDragDropSupport support;
    LMESubclasser subclasser;
};

TEST_F(TreeInput, ScrollBandsOfAWindow) {
    const struct {
        Point pointer;
        unsigned bands;
    } cases[] = {{{150, 200}, 0}, {{32, 32}, 0},   {{31, 200}, 4},   {{-32, 200}, 4}, {{-33, 200}, 0},
                 {{150, 31}, 1},  {{268, 200}, 8}, {{267, 200}, 0},  {{150, 368}, 2}, {{150, 431}, 2},
                 {{150, 432}, 0}, {{5, 5}, 5},     {{299, 399}, 10}, {{5, 399}, 6}};
    for (const auto& each : cases) {
        EXPECT_EQ(FindScrollBands(window.client, each.pointer), each.bands) << each.pointer.x << "," << each.pointer.y;
    }
}

TEST_F(TreeInput, ADragOutlivesEverythingButItsNode) {
    Text dropped;
    support.Drop().Add([&](Node& node, const DropTarget& target) {
        dropped = node.Key() + (target.insertAfter ? u" after " : u" before ") + target.node->Key();
        EXPECT_FALSE(support.Active());
    });
    const auto drag = [&](Node& node, Point to) {
        window.MoveTo(window.At(node));
        support.OnMouseDown();
        window.MoveTo(to);
        support.BeginDrag();
        support.OnItemDrag();
    };
    drag(q, window.At(p1, 10));
    EXPECT_TRUE(support.Active() && window.hasDragImage);
    EXPECT_EQ(window.mark, std::pair(&p1, false));
    EXPECT_EQ(window.running.size(), 2u);
    const int starts = window.running[TreeTimer::AutoExpand];
    window.MoveTo(window.At(p2, 80));
    support.OnItemDrag();
    EXPECT_EQ(window.running[TreeTimer::AutoExpand], starts + 1) << "the rest begins anew on a new target";
    support.FinishDrag();
    EXPECT_EQ(dropped, u"q after p2");
    EXPECT_EQ(tree.Selected(), &p2);
    EXPECT_FALSE(window.hasDragImage || window.highlight || window.mark.first);
    EXPECT_TRUE(window.running.empty());

    dropped.clear();
    drag(q, window.At(p1));
    tree.Remove(q); // the dragged node goes
    EXPECT_FALSE(support.Active() || window.hasDragImage);
    support.FinishDrag();
    drag(r, window.At(p1));
    tree.Remove(p); // the target goes
    EXPECT_TRUE(support.Active());
    EXPECT_EQ(window.highlight, nullptr);
    support.FinishDrag();
    EXPECT_EQ(dropped, u"");
    drag(r, window.At(s));
    tree.Clear();
    EXPECT_FALSE(support.Active());
}

// Nothing but a collapsed node with children opens, and not under the drag's image.
TEST_F(TreeInput, ADragOpensWhatCanBeOpened) {
    Text opened;
    support.AutoExpand().Add([&](Node& node) {
        opened += node.Key();
        EXPECT_FALSE(window.hasDragImage);
    });
    n.SetExpanded(false);
    window.MoveTo(window.At(r));
    support.OnMouseDown();
    support.BeginDrag();
    for (const Node* node : {&q, &p, &n, &p1}) {
        window.MoveTo(window.At(*node, 10));
        support.OnItemDrag();
        support.OnTimer(TreeTimer::AutoExpand);
        EXPECT_TRUE(window.hasDragImage);
    }
    EXPECT_EQ(opened, u"n");
}

// Whatever lies under the pointer, and whether or not a box has changed.
TEST_F(TreeInput, EveryDoubleClickIsTold) {
    for (const auto& [point, isCtrlDown] :
         {std::pair{window.At(q), true}, {window.AtBox(q), true}, {Point{20, 390}, false}}) {
        subclasser.OnDblClick(point, isCtrlDown);
        EXPECT_TRUE(window.running.contains(TreeTimer::Checkstate));
        subclasser.OnTimer(TreeTimer::Checkstate);
    }
}

TEST_F(TreeInput, SelectionIsToldWhileActive) {
    int told = 0;
    subclasser.SelectionChanged().Add([&] { ++told; });
    tree.Select(&q);
    subclasser.SetActive(false);
    tree.Select(&r);
    subclasser.SetActive(true);
    tree.Select(&r);
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace dax
