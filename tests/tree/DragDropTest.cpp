#include "tree/FakeTreeWindow.h"

#include "lessonmap/SampleLesson.h"
#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace dax {
namespace {

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
    void Drag(const Node& node, Point to) {
        window.MoveTo(window.At(node));
        support.OnMouseDown();
        window.MoveTo(to);
        support.BeginDrag();
        support.OnItemDrag();
    }
    void ExpectTold(const char* told) { EXPECT_EQ(window.Told(), told); }

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
    } cases[] = {{{150, 200}, 0}, {{32, 32}, 0},    {{31, 200}, 4},  {{-32, 200}, 4}, {{-33, 200}, 0},
                 {{150, 31}, 1},  {{150, 32}, 0},   {{268, 200}, 8}, {{267, 200}, 0}, {{332, 200}, 0},
                 {{331, 200}, 8}, {{150, 368}, 2},  {{150, 367}, 0}, {{150, 431}, 2}, {{150, 432}, 0},
                 {{5, 5}, 5},     {{299, 399}, 10}, {{5, 399}, 6},   {{150, -32}, 1}, {{150, -33}, 0}};
    for (const auto& each : cases) {
        EXPECT_EQ(FindScrollBands(window.client, each.pointer), each.bands) << each.pointer.x << "," << each.pointer.y;
    }
    Drag(q, {5, 390});
    window.Told();
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectTold("hide scroll6 show");
    window.MoveTo({150, 200});
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectTold("");
}

TEST_F(TreeInput, WhereDropsGo) {
    const struct {
        const char16_t *dragged, *over;
        int part; // of the row's height in percent; with Ctrl when negative
        const char* mark;
        const char* after; // null: no drop
    } cases[] = {
        {u"q", u"p1", 49, "p1-", "m: p( q p1 p2 ) r | n: s"},
        {u"q", u"p1", 50, "p1+", "m: p( p1 q p2 ) r | n: s"},
        {u"q", u"p", 0, "p-", "m: q p( p1 p2 ) r | n: s"},
        {u"q", u"p", 99, "p1-", "m: p( q p1 p2 ) r | n: s"}, // between the node and its first child
        {u"p2", u"p", 99, "p1-", "m: p( p2 p1 ) q r | n: s"},
        {u"p1", u"p", 99, "-", nullptr}, // where it is
        {u"q", u"r", 0, "-", nullptr},
        {u"q", u"r", 99, "r+", "m: p( p1 p2 ) r q | n: s"},
        {u"r", u"q", 99, "-", nullptr},
        {u"r", u"q", 0, "q-", "m: p( p1 p2 ) r q | n: s"},
        {u"q", u"p2", 99, "p2+", "m: p( p1 p2 q ) r | n: s"},
        {u"p", u"q", 0, "q-", "m: p( p1 p2 ) q r | n: s"},
        {u"p2", u"q", 0, "q-", "m: p( p1 ) p2 q r | n: s"},
        {u"p", u"p1", 0, "-", nullptr}, // its own branch
        {u"q", u"q", 99, "-", nullptr},
        {u"q", u"m", 0, "p-", "m: q p( p1 p2 ) r | n: s"},
        {u"p", u"m", 99, "-", nullptr},
        {u"q", u"n", 0, "n+", "m: p( p1 p2 ) r | n: q s"},
        {u"s", u"n", 0, "-", nullptr},
        {u"q", nullptr, 0, "s+", "m: p( p1 p2 ) r | n: s q"}, // below the last row
        {u"s", nullptr, 0, "-", nullptr},
        {u"q", u"p1", -50, "-", "m: p( p1( q ) p2 ) r | n: s"},
        {u"q", u"p", -1, "-", "m: p( q p1 p2 ) r | n: s"},
        {u"p1", u"p", -1, "-", nullptr},
        {u"p", u"p2", -1, "-", nullptr},
        {u"q", u"n", -1, "-", "m: p( p1 p2 ) r | n: q s"},
    };
    const auto rebuild = [&] {
        while (Node* const node = m.FirstChild()) tree.Remove(*node);
        while (Node* const node = n.FirstChild()) tree.Remove(*node);
        Node& parent = Child(&m, u"p");
        for (const auto& [under, key] :
             {std::pair(&parent, u"p1"), {&parent, u"p2"}, {&m, u"q"}, {&m, u"r"}, {&n, u"s"}})
            Child(under, key);
        parent.SetExpanded(true);
    };
    std::string dropped;
    support.Drop().Add([&](Node& node, const DropTarget& target) {
        EXPECT_FALSE(support.Active());
        EXPECT_EQ(tree.Selected(), target.node);
        DropNode(tree, node, target);
        dropped = test::Print(tree);
    });
    for (const auto& [dragged, over, part, mark, after] : cases) {
        const std::string what = ToUtf8(dragged) + " over " + (over ? ToUtf8(over) : "nothing");
        rebuild();
        window.isCtrlDown = part < 0;
        Drag(*tree.Find(dragged), over ? window.At(*tree.Find(over), std::abs(part)) : Point{20, 390});
        EXPECT_EQ(support.Target().node != nullptr, after != nullptr) << what;
        const std::string told = window.Told();
        EXPECT_NE((told + " ").find(std::string(" ") + mark + " show"), std::string::npos) << what << ": " << told;
        support.FinishDrag();
        EXPECT_EQ(std::exchange(dropped, {}), after ? after : "") << what;
    }
    // What a collapsed map or one without pages takes.
    rebuild();
    window.isCtrlDown = false;
    const auto markOver = [&](const Node& dragged, const Node& over) {
        Drag(dragged, window.At(over));
        support.CancelDrag();
        const std::string told = window.Told();
        return told.substr(0, told.find(" show"));
    };
    n.SetExpanded(false);
    EXPECT_THAT(markOver(*tree.Find(u"q"), n), testing::EndsWith(" n-"));
    tree.Remove(*tree.Find(u"s"));
    EXPECT_THAT(markOver(*tree.Find(u"q"), n), testing::EndsWith(" n+"));
    Child(&n, u"t");
    n.SetExpanded(true);
    m.SetExpanded(false);
    EXPECT_THAT(markOver(*tree.Find(u"t"), m), testing::EndsWith(" m+"));
    Drag(*tree.Find(u"t"), {20, -5}); // above the window
    EXPECT_EQ(support.Target(), DropTarget());
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
    window.MoveTo(label);
    support.OnMouseDown();
    support.CancelDrag();
    EXPECT_FALSE(support.ShouldBeginDrag()) << "without a press";
    support.BeginDrag();
    support.OnItemDrag();
    support.FinishDrag();
    support.OnTimer(TreeTimer::Autoscroll);
    ExpectTold("");
    Drag(q, window.At(p1));
    window.Told();
    window.MoveTo(window.At(r));
    support.OnMouseDown(); // during a drag
    support.BeginDrag();
    EXPECT_EQ(support.DraggedNode(), &q);
    EXPECT_FALSE(support.ShouldBeginDrag());
    ExpectTold("");
    support.Bind(nullptr, nullptr);
    ExpectTold("stop stop end - light:");
    support.OnMouseDown();
    EXPECT_FALSE(support.ShouldBeginDrag());
    tree.Remove(q);
}

TEST_F(TreeInput, ADragOutlivesEverythingButItsNode) {
    Text dropped;
    int ended = 0;
    support.Ended().Add([&] { ++ended; });
    support.Drop().Add([&](Node& node, const DropTarget&) { dropped += node.Key(); });
    Drag(q, window.At(p1, 10));
    ExpectTold("image:q start:800 start:60 hide start:800 light:p1 p1- show");
    window.MoveTo(window.At(p1, 80));
    support.OnItemDrag();
    ExpectTold("hide light:p1 p1+ show"); // the rest goes on on the same target
    window.MoveTo(window.At(p2, 80));
    support.OnItemDrag();
    ExpectTold("hide start:800 light:p2 p2+ show");
    support.FinishDrag();
    ExpectTold("stop stop end - light:");
    EXPECT_EQ(std::exchange(dropped, {}), u"q");
    EXPECT_EQ(ended, 1);

    Drag(q, window.At(p1));
    tree.Remove(q); // the dragged node goes
    EXPECT_FALSE(support.Active());
    support.FinishDrag();
    window.Told();
    Drag(r, window.At(m)); // marked at its first child
    tree.Remove(p);
    EXPECT_TRUE(support.Active());
    EXPECT_THAT(window.Told(), testing::EndsWith("start:800 light: -"));
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
TEST_F(TreeInput, AListenerMayTakeTheDragAway) {
    support.Drop().Add([](Node&, const DropTarget&) { ADD_FAILURE() << "dropped"; });
    bool begins = false;
    tree.SelectionChanged().Add([&] {
        support.CancelDrag();
        if (begins) Drag(r, window.At(p1));
    });
    for (Node* const to : {&p1, &p2}) {
        Drag(q, window.At(*to));
        support.FinishDrag();
        EXPECT_EQ(support.Active(), begins);
        begins = true;
    }
    EXPECT_EQ(support.DraggedNode(), &r);
}

// Nothing but a collapsed node with children opens, and not under the drag's image.
TEST_F(TreeInput, ADragOpensWhatCanBeOpened) {
    Text opened;
    bool isCancelled = false;
    support.AutoExpand().Add([&](Node& node) {
        opened += node.Key();
        ExpectTold("hide");
        if (isCancelled) support.CancelDrag();
    });
    n.SetExpanded(false);
    Drag(r, window.At(q));
    for (const Node* node : {&q, &p, &n, &p1}) {
        window.MoveTo(window.At(*node, 10));
        support.OnItemDrag();
        window.Told();
        support.OnTimer(TreeTimer::AutoExpand);
        ExpectTold(node == &n ? "show" : "");
    }
    window.MoveTo(window.At(n));
    support.OnItemDrag();
    isCancelled = true;
    window.Told();
    support.OnTimer(TreeTimer::AutoExpand);
    ExpectTold("stop stop end - light:");
    EXPECT_EQ(opened, u"nn");
}

TEST_F(TreeInput, WhatChecksBoxes) {
    int told = 0;
    subclasser.CheckStateChanged().Add([&] { ++told; });
    const Point box = window.AtBox(p), label = window.At(p), nothing{20, 390};
    const auto click = [&](Point point, bool ctrl) { return [=, this] { subclasser.OnClick(point, ctrl); }; };
    const auto doubleClick = [&](Point point, bool ctrl) { return [=, this] { subclasser.OnDblClick(point, ctrl); }; };
    const auto key = [&](int code) { return [=, this] { subclasser.OnKeyDown(code); }; };
    const struct {
        std::function<void()> act;
        Text checked;
        bool isTold;
    } cases[] = {
        {click(box, false), u"pp1p2", true},
        {click(box, true), u"p", true},
        {click(label, false), u"", false},
        {click(nothing, false), u"", false},
        {doubleClick(box, false), u"pp1p2", true},
        {doubleClick(box, true), u"p", true},
        {doubleClick(label, false), u"pp1p2", true},
        {doubleClick(label, true), u"", true},
        {doubleClick(nothing, false), u"", true},
        {key(32), u"mpp1p2qr", true}, // of the first row, whatever is selected
        {key(31), u"", false},
    };
    tree.Select(&q);
    for (const bool isOff : {false, true}) {
        for (const auto& [act, checked, isTold] : cases) {
            for (Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) node->SetChecked(false);
            act();
            Text keys;
            for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node))
                if (node->IsChecked()) keys += node->Key();
            EXPECT_EQ(keys, isOff ? u"" : checked);
            EXPECT_EQ(window.running.contains(TreeTimer::Checkstate), isTold && !isOff);
            const std::string started = window.Told();
            EXPECT_TRUE(started.empty() || started.ends_with("start:50"));
            subclasser.SetActive(subclasser.Active()); // stops what is due
            ExpectTold(started.empty() ? "" : "stop");
        }
        isOff ? subclasser.SetActive(false) : void(window.hasCheckBoxes = false);
    }
    // A branch goes by the check of its top, an item alone by its own.
    window.hasCheckBoxes = true;
    subclasser.SetActive(true);
    p.SetChecked(true);
    subclasser.OnClick(box, false);
    subclasser.OnClick(box, true);
    EXPECT_TRUE(p.IsChecked() && !p1.IsChecked());
    subclasser.OnTimer(TreeTimer::Autoscroll);
    EXPECT_EQ(told, 0);
    subclasser.OnTimer(TreeTimer::Checkstate);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(window.running.empty());
    subclasser.OnClick(box, true);
    subclasser.RegisterWindows(nullptr, nullptr);
    EXPECT_TRUE(window.running.empty());
    subclasser.OnTimer(TreeTimer::Checkstate); // one that was on its way
    subclasser.OnClick(box, true);
    subclasser.OnDblClick(box, true);
    subclasser.OnKeyDown(32);
    EXPECT_TRUE(window.running.empty());
}

TEST_F(TreeInput, SelectionIsToldWhileActive) {
    int told = 0;
    subclasser.SelectionChanged().Add([&] { ++told; });
    tree.Select(&q);
    subclasser.SetActive(false);
    EXPECT_FALSE(subclasser.Active());
    tree.Select(&r);
    subclasser.SetActive(true);
    tree.Select(&r);
    EXPECT_EQ(told, 1);
    subclasser.RegisterWindows(nullptr, nullptr);
    tree.Select(&q);
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace dax
