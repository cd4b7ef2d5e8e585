#include "tree/FakeTreeWindow.h"

#include "lessonmap/SampleLesson.h"
#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace dax {
namespace {

using testing::EndsWith;

// Two maps, all open: m > (p > (p1, p2), q, r), n > (s).
struct Forest {
    Forest() {
        for (Node* node : {&m, &p, &n}) node->SetExpanded(true);
        support.Bind(&tree, &window);
        subclasser.RegisterWindows(&tree, &window);
        subclasser.SetActive(true);
    }
    Node& Child(Node* parent, TextView key) { return tree.Add(parent, InsertPosition::LastChild, key, key); }
    void Drag(const Node& node, Point to) {
        window.MoveTo(window.At(node));
        support.OnMouseDown();
        window.MoveTo(to);
        support.BeginDrag();
        support.OnItemDrag();
    }
    void ExpectCalls(const char* calls) { EXPECT_EQ(window.TakeCalls(), calls); }

    NodeTree tree;
    Node &m = Child(nullptr, u"m"), &p = Child(&m, u"p"), &p1 = Child(&p, u"p1"), &p2 = Child(&p, u"p2"),
         &q = Child(&m, u"q"), &r = Child(&m, u"r"), &n = Child(nullptr, u"n"), &s = Child(&n, u"s");
    test::FakeTreeWindow window{tree};
    LMEDragDropSupport support;
    LMESubclasser subclasser;
};

class TreeInput : public testing::Test, protected Forest {};

TEST_F(TreeInput, ScrollBandsOfAWindow) {
    const struct {
        Point pointer;
        unsigned bands;
    } cases[] = {{{150, 200}, 0}, {{32, 32}, 0},   {{31, 200}, 4},  {{-32, 200}, 4}, {{-33, 200}, 0},  {{150, 31}, 1},
                 {{150, 32}, 0},  {{268, 200}, 8}, {{267, 200}, 0}, {{332, 200}, 0}, {{331, 200}, 8},  {{150, 368}, 2},
                 {{150, 367}, 0}, {{150, 431}, 2}, {{150, 432}, 0}, {{5, 5}, 5},     {{299, 399}, 10}, {{5, 399}, 6},
                 {{150, -32}, 1}, {{150, -33}, 0}, {{32, 5}, 1},    {{267, 5}, 1},   {{5, 32}, 4},     {{5, 367}, 4}};
    for (const auto& each : cases) {
        EXPECT_EQ(FindScrollBands(window.client, each.pointer), each.bands) << each.pointer.x << "," << each.pointer.y;
    }
    Drag(q, {5, 390});
    window.TakeCalls();
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectCalls("hide scroll6 show");
    window.MoveTo({150, 200});
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectCalls("");
}

TEST(DragAndDrop, DropPositions) {
    const struct {
        const char16_t *dragged, *over;
        int part; // of the row's height in percent, with Ctrl when negative; over no row, the point's height in pixels
        const char* mark;
        const char* after; // null: no drop
        void (*prepare)(Forest&) = [](Forest&) {};
    } cases[] = {
        {u"q", u"p1", 49, "p1-", "m: p( q p1 p2 ) r | n: s"},
        {u"q", u"p1", 50, "p1+", "m: p( p1 q p2 ) r | n: s"},
        {u"q", u"p", 0, "p-", "m: q p( p1 p2 ) r | n: s"},
        {u"q", u"p", 99, "p1-", "m: p( q p1 p2 ) r | n: s"}, // between the node and its first child
        {u"p2", u"p", 99, "p1-", "m: p( p2 p1 ) q r | n: s"},
        {u"p1", u"p", 99, "-", nullptr}, // where it is
        {u"q", u"r", 0, "-", nullptr},
        {u"r", u"q", 99, "-", nullptr},
        {u"q", u"r", 99, "r+", "m: p( p1 p2 ) r q | n: s"},
        {u"q", u"p2", 99, "p2+", "m: p( p1 p2 q ) r | n: s"},
        {u"p", u"q", 0, "q-", "m: p( p1 p2 ) q r | n: s"},
        {u"p2", u"q", 0, "q-", "m: p( p1 ) p2 q r | n: s"},
        {u"p", u"p1", 0, "-", nullptr}, // its own branch
        {u"q", u"q", 99, "-", nullptr},
        {u"q", u"m", 0, "p-", "m: q p( p1 p2 ) r | n: s"},
        {u"p", u"m", 99, "-", nullptr},
        {u"q", u"n", 0, "n+", "m: p( p1 p2 ) r | n: q s"},
        {u"s", u"n", 0, "-", nullptr},
        {u"q", u"n", 0, "n-", "m: p( p1 p2 ) r | n: q s", [](Forest& forest) { forest.n.SetExpanded(false); }},
        {u"q", u"n", 0, "n+", "m: p( p1 p2 ) r | n: q", [](Forest& forest) { forest.tree.Remove(forest.s); }},
        {u"s", u"m", 0, "m+", "m: s p( p1 p2 ) q r | n:", [](Forest& forest) { forest.m.SetExpanded(false); }},
        {u"q", nullptr, 390, "s+", "m: p( p1 p2 ) r | n: s q"}, // below the last row
        {u"s", nullptr, 390, "-", nullptr},
        {u"q", nullptr, -5, "-", nullptr}, // above the window
        {u"q", u"p1", -50, "-", "m: p( p1( q ) p2 ) r | n: s"},
        {u"q", u"p", -1, "-", "m: p( q p1 p2 ) r | n: s"},
        {u"p1", u"p", -1, "-", nullptr},
        {u"p", u"p2", -1, "-", nullptr},
        {u"q", u"n", -1, "-", "m: p( p1 p2 ) r | n: q s"},
    };
    for (const auto& [dragged, over, part, mark, after, prepare] : cases) {
        SCOPED_TRACE(ToUtf8(dragged) + " over " + (over ? ToUtf8(over) : "nothing") + " " + std::to_string(part));
        Forest forest;
        std::string dropped;
        forest.support.Drop.AddPermanent([&](Node& node, const DropTarget& target) {
            EXPECT_FALSE(forest.support.Active());
            EXPECT_EQ(forest.tree.Selected(), target.node);
            DropNode(forest.tree, node, target);
            dropped = test::Print(forest.tree);
        });
        prepare(forest);
        forest.window.isCtrlDown = part < 0;
        const Node& node = *forest.tree.Find(dragged);
        forest.Drag(node, over ? forest.window.At(*forest.tree.Find(over), std::abs(part)) : Point{20, part});
        EXPECT_EQ(forest.support.Target().node != nullptr, after != nullptr);
        EXPECT_THAT(forest.window.TakeCalls(), EndsWith(std::string(" ") + mark + " show"));
        forest.support.FinishDrag();
        EXPECT_EQ(dropped, after ? after : "");
    }
}

TEST_F(TreeInput, WhatBeginsADrag) {
    const Point label = window.At(q), box = window.AtBox(q);
    const struct {
        Point press;
        int x, y;
        bool isDrag;
    } cases[] = {{label, 4, 0, true},
                 {label, -4, 0, true},
                 {label, 0, 4, true},
                 {label, 0, -4, true},
                 {label, 3, 3, false},
                 {box, 4, 0, true},
                 {{box.x - 5, box.y}, 9, 0, false},
                 {window.At(m), 9, 0, false},
                 {{20, 390}, 9, 0, false}};
    for (const auto& [press, x, y, isDrag] : cases) {
        window.MoveTo(press);
        support.OnMouseDown();
        window.MoveTo({press.x + x, press.y + y});
        EXPECT_EQ(support.ShouldBeginDrag(), isDrag) << press.x << "," << press.y << " " << x << "," << y;
    }
    support.BeginDrag(); // nothing is under the press
    EXPECT_FALSE(support.Active());
    support.CancelDrag();
    support.BeginDrag(); // nothing is pressed
    support.OnItemDrag();
    support.FinishDrag();
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectCalls("");
    Drag(q, window.At(p1));
    window.TakeCalls();
    support.Bind(nullptr, nullptr);
    ExpectCalls("stop stop end - light:");
    support.OnMouseDown();
    EXPECT_FALSE(support.ShouldBeginDrag());
    tree.Remove(q);
}

TEST_F(TreeInput, OnlyTheRemovalOfItsNodeEndsADrag) {
    Text dropped;
    int ended = 0;
    support.Ended.AddPermanent([&] { ++ended; });
    support.Drop.AddPermanent([&](Node& node, const DropTarget&) { dropped += node.Key(); });
    Drag(q, window.At(p1, 10));
    ExpectCalls("image:q start:800 start:60 hide start:800 light:p1 p1- show");
    window.MoveTo(window.At(p1, 80));
    support.OnItemDrag();
    ExpectCalls("hide light:p1 p1+ show"); // scrolling continues on the same target
    support.FinishDrag();
    ExpectCalls("stop stop end - light:");
    EXPECT_EQ(std::exchange(dropped, {}), u"q");
    EXPECT_EQ(ended, 1);

    Drag(q, window.At(p1));
    tree.Remove(q); // the dragged node is removed
    EXPECT_FALSE(support.Active());
    support.FinishDrag();
    Drag(r, window.At(m)); // marked at its first child
    tree.Remove(p);
    EXPECT_TRUE(support.Active());
    EXPECT_THAT(window.TakeCalls(), EndsWith("start:800 light: -"));
    support.FinishDrag();
    EXPECT_EQ(dropped, u"");
    Drag(r, window.At(s));
    tree.Remove(n);
    EXPECT_EQ(support.Target(), DropTarget());
    tree.Clear();
    EXPECT_FALSE(support.Active());
    EXPECT_EQ(ended, 4);
}

// Selecting the target may do anything: end the drag, or begin another one.
TEST_F(TreeInput, AListenerMayCancelTheDrag) {
    support.Drop.AddPermanent([](Node&, const DropTarget&) { ADD_FAILURE() << "dropped"; });
    bool begins = false;
    tree.SelectionChanged.AddPermanent([&] {
        support.CancelDrag();
        if (begins) Drag(r, window.At(p1));
    });
    for (Node* const to : {&p1, &p2}) {
        Drag(q, window.At(*to));
        support.FinishDrag();
        EXPECT_EQ(support.Active(), begins);
        begins = true;
    }
    tree.Remove(r); // the dragged node
    EXPECT_FALSE(support.Active());
}

// Only a collapsed node with children is expanded, and not under the drag's image.
TEST_F(TreeInput, ADragExpandsNodes) {
    Text opened;
    bool isCancelled = false;
    support.AutoExpand.AddPermanent([&](Node& node) {
        opened += node.Key();
        ExpectCalls("hide");
        if (isCancelled) support.CancelDrag();
    });
    n.SetExpanded(false);
    Drag(r, window.At(q));
    for (const Node* node : {&q, &p, &p1, &n, &n}) {
        window.MoveTo(window.At(*node, 10));
        support.OnItemDrag();
        window.TakeCalls();
        support.OnTimer(TreeTimer::AutoExpand);
        ExpectCalls(node != &n ? "" : isCancelled ? "stop stop end - light:" : "show");
        isCancelled = node == &n;
    }
    EXPECT_EQ(opened, u"nn");
}

TEST(CheckBoxes, AreCheckedByClicksAndKeys) {
    using Act = std::function<void(Forest&)>;
    const Forest any;
    const Point box = any.window.AtBox(any.p), label = any.window.At(any.p), nothing{20, 390};
    const auto click = [](Point at, bool ctrl) { return [=](Forest& forest) { forest.subclasser.OnClick(at, ctrl); }; };
    const auto doubleClick = [](Point at, bool ctrl) {
        return [=](Forest& forest) { forest.subclasser.OnDblClick(at, ctrl); };
    };
    const auto key = [](int code) { return [=](Forest& forest) { forest.subclasser.OnKeyDown(code); }; };
    const struct {
        Act act;
        TextView before, after; // the checked nodes, in order
        bool isReported;
    } cases[] = {
        {click(box, false), u"", u"pp1p2", true},
        {click(box, false), u"p", u"", true}, // a branch follows the check of its top
        {click(box, true), u"", u"p", true},
        {click(box, true), u"p", u"", true},
        {click(label, false), u"", u"", false},
        {click(nothing, false), u"", u"", false},
        {doubleClick(box, false), u"", u"pp1p2", true},
        {doubleClick(box, true), u"", u"p", true},
        {doubleClick(label, false), u"", u"pp1p2", true},
        {doubleClick(label, true), u"", u"", true},
        {doubleClick(nothing, false), u"", u"", true},
        {key(32), u"", u"mpp1p2qr", true}, // of the first row, whatever is selected
        {key(31), u"", u"", false},
    };
    const Act states[] = {[](Forest&) {}, [](Forest& forest) { forest.window.hasCheckBoxes = false; },
                          [](Forest& forest) { forest.subclasser.SetActive(false); },
                          [](Forest& forest) { forest.subclasser.RegisterWindows(nullptr, nullptr); }};
    for (const Act& state : states) {
        for (const auto& [act, before, after, isReported] : cases) {
            const bool isOn = &state == states;
            Forest forest;
            if (before == u"p") forest.p.SetChecked(true);
            forest.tree.Select(&forest.q);
            state(forest);
            act(forest);
            Text keys;
            for (const Node* node = forest.tree.First(); node; node = modTVW::GetNextNode(node))
                if (node->IsChecked()) keys += node->Key();
            EXPECT_EQ(keys, isOn ? after : before);
            EXPECT_THAT(forest.window.TakeCalls(), EndsWith(isOn && isReported ? "start:50" : ""));
            EXPECT_EQ(forest.window.running.contains(TreeTimer::Checkstate), isOn && isReported);
        }
    }
}

TEST_F(TreeInput, ChecksAndSelectionAreReportedWhileActive) {
    int checks = 0, selections = 0;
    subclasser.CheckStateChanged.AddPermanent([&] { ++checks; });
    subclasser.SelectionChanged.AddPermanent([&] { ++selections; });
    subclasser.OnDblClick(window.At(p), false);
    subclasser.OnTimer(TreeTimer::Autoscroll);
    EXPECT_EQ(checks, 0);
    subclasser.OnTimer(TreeTimer::Checkstate);
    EXPECT_EQ(checks, 1);
    for (const bool isActive : {true, false}) { // either stops what is due
        subclasser.OnDblClick(window.At(p), false);
        subclasser.SetActive(isActive);
        EXPECT_TRUE(window.running.empty());
        EXPECT_EQ(subclasser.Active(), isActive);
        tree.Select(isActive ? &q : &r);
    }
    subclasser.SetActive(true);
    tree.Select(&r);
    subclasser.RegisterWindows(nullptr, nullptr);
    tree.Select(&q);
    EXPECT_EQ(selections, 1);
}

} // namespace
} // namespace dax
