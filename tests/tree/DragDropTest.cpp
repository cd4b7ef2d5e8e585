#include "tree/FakeTreeWindow.h"

#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

// Two maps, all open: m > (p > (p1, p2), q, r), n > (s); and an empty third one, e.
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
         &q = Child(&m, u"q"), &r = Child(&m, u"r"), &n = Child(nullptr, u"n"), &s = Child(&n, u"s"),
         &e = Child(nullptr, u"e");
    test::FakeTreeWindow window{tree};
    LMEDragDropSupport support;
    LMESubclasser subclasser;
};

TEST_F(TreeInput, DropTargets) {
    struct Case {
        Node &dragged, &over;
        int part; // of the row's height, in percent
        Node* target;
        bool after;
        Node* mark;
    };
    const Case cases[] = {
        {q, p1, 45, &p1, false, &p1},         // upper half
        {q, p1, 50, &p1, true, &p1},          // lower half
        {p, p2, 20, nullptr, false, nullptr}, // inside the dragged branch
        {q, q, 80, nullptr, false, nullptr},
        {q, r, 20, nullptr, false, nullptr}, // the next sibling's upper half: it would not move
        {q, r, 80, &r, true, &r},
        {r, q, 80, nullptr, false, nullptr}, // the previous sibling's lower half
        {r, q, 20, &q, false, &q},
        {q, p, 80, &p1, false, &p1},          // open with children: before the first child
        {p1, p, 80, nullptr, false, nullptr}, // where it is
        {s, m, 50, &m, false, &p},            // the first map: before its first child
        {p, m, 50, nullptr, false, nullptr},
        {q, n, 50, &n, true, &n}, // another map, open
        {s, n, 50, nullptr, false, nullptr},
        {q, e, 50, &e, true, &e}, // an empty map
    };
    for (const Case& each : cases) {
        const Point pointer = window.At(each.over, each.part);
        const DropTarget found =
            FindDropTarget(tree, window.HitTest(pointer), *window.RowRect(each.over), pointer, each.dragged);
        const Text what = each.dragged.Key() + u" over " + each.over.Key();
        EXPECT_EQ(found, (DropTarget{each.target, each.after, each.mark, each.after})) << ToUtf8(what) << each.part;
    }
    n.SetExpanded(false);
    EXPECT_EQ(FindDropTarget(tree, {&n, 4}, *window.RowRect(n), {}, q), (DropTarget{&n, false, &n, false}));
    m.SetExpanded(false);
    EXPECT_EQ(FindDropTarget(tree, {&m, 4}, *window.RowRect(m), {}, s), (DropTarget{&m, true, &m, true}));
    EXPECT_EQ(FindDropTarget(tree, {nullptr, 1}, {}, {}, q), (DropTarget{&e, true, &e, true})); // below the last row
    EXPECT_EQ(FindDropTarget(tree, {nullptr, 0x100}, {}, {}, q), DropTarget{});
    tree.Remove(e);
    n.SetExpanded(true);
    EXPECT_EQ(FindDropTarget(tree, {nullptr, 1}, {}, {}, s), DropTarget{}); // the last row is the dragged one
}

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

TEST_F(TreeInput, PressBecomesADrag) {
    const auto press = [&](Point from, Point to) {
        support.CancelDrag();
        window.MoveTo(from);
        support.OnMouseDown();
        window.MoveTo(to);
        return support.ShouldBeginDrag();
    };
    const Point at = window.At(q);
    EXPECT_FALSE(press(at, {at.x + 3, at.y - 3}));
    EXPECT_TRUE(press(at, {at.x + 4, at.y}));
    EXPECT_TRUE(press(at, {at.x, at.y - 4}));
    EXPECT_TRUE(press(window.AtBox(q), {at.x, at.y + 9}));
    EXPECT_FALSE(press({window.AtBox(q).x - 8, at.y}, {at.x, at.y + 9})); // button
    EXPECT_FALSE(press(window.At(m), {0, 300}));                          // a map root
    EXPECT_FALSE(press({100, 390}, {100, 300}));                          // no item
    support.CancelDrag();
    EXPECT_FALSE(support.ShouldBeginDrag()); // not armed
}

TEST_F(TreeInput, DragShowsAndReportsTheDrop) {
    Text dropped;
    support.Drop().Add([&](bool after, Node& node, Node& target) {
        dropped = node.Key() + (after ? u" after " : u" before ") + target.Key();
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
    EXPECT_EQ(window.highlight, &p1);
    EXPECT_EQ(window.mark, std::pair(&p1, false));
    EXPECT_EQ(window.running.size(), 2u);
    support.FinishDrag();
    EXPECT_EQ(dropped, u"q before p1");
    EXPECT_EQ(tree.Selected(), &p1);
    EXPECT_FALSE(window.hasDragImage || window.highlight || window.mark.first);
    EXPECT_TRUE(window.running.empty());

    dropped.clear();
    drag(p, window.At(p2));
    support.FinishDrag(); // no target
    drag(q, window.At(p2));
    support.CancelDrag();
    support.FinishDrag();
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

TEST_F(TreeInput, TimersOpenAndScroll) {
    Node* wanted = nullptr;
    support.AutoExpand().Add([&](Node& node) { wanted = &node; });
    p.SetExpanded(false);
    window.MoveTo(window.At(r));
    support.OnMouseDown();
    support.BeginDrag();
    support.OnTimer(TreeTimer::AutoExpand);
    EXPECT_EQ(wanted, nullptr); // no target yet
    window.MoveTo(window.At(p, 80));
    const int starts = window.running[TreeTimer::AutoExpand];
    support.OnItemDrag();
    EXPECT_EQ(window.running[TreeTimer::AutoExpand], starts + 1); // the rest begins anew on a new target
    support.OnTimer(TreeTimer::AutoExpand);
    EXPECT_EQ(wanted, &p);
    window.topRow = 3;
    window.MoveTo({150, 10});
    support.OnTimer(TreeTimer::Autoscroll);
    support.OnTimer(TreeTimer::Autoscroll);
    window.MoveTo({150, 200});
    support.OnTimer(TreeTimer::Autoscroll);
    EXPECT_EQ(window.topRow, 1);
    support.CancelDrag();
    window.MoveTo({150, 10});
    support.OnTimer(TreeTimer::Autoscroll);
    EXPECT_EQ(window.scrolled.size(), 2u);
}

TEST_F(TreeInput, Checks) {
    int told = 0;
    subclasser.CheckStateChanged().Add([&] { ++told; });
    const auto checked = [&] {
        Text keys;
        for (Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) {
            if (node->IsChecked()) keys += node->Key() + u" ";
        }
        return keys;
    };
    subclasser.OnClick(window.At(p), false); // the label is no box
    EXPECT_EQ(checked(), u"");
    subclasser.OnClick(window.AtBox(p), false);
    EXPECT_EQ(checked(), u"p p1 p2 ");
    subclasser.OnClick(window.AtBox(p), true);
    EXPECT_EQ(checked(), u"p1 p2 ");
    subclasser.OnClick(window.AtBox(p), false);
    subclasser.OnDblClick(window.At(p), false);
    EXPECT_EQ(checked(), u"");
    subclasser.OnDblClick(window.At(p), true);
    EXPECT_EQ(checked(), u"");
    tree.Select(&s);
    window.topRow = 1;
    subclasser.OnKeyDown(32); // the top row's branch, whatever is selected
    EXPECT_EQ(checked(), u"p p1 p2 ");
    EXPECT_TRUE(window.running.contains(TreeTimer::Checkstate));
    subclasser.OnTimer(TreeTimer::Checkstate);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(window.running.empty());
    subclasser.SetActive(false);
    subclasser.OnKeyDown(32);
    window.hasCheckBoxes = false;
    subclasser.SetActive(true);
    subclasser.OnClick(window.AtBox(p), false);
    EXPECT_EQ(checked(), u"p p1 p2 ");
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
