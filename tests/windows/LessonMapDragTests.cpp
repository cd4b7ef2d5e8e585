// Dragging storyboards in the lesson map's window, with the mouse.
#include "windows/LessonMapHost.h"

#include <functional>

namespace dax::test {

namespace {

constexpr const char* Sample = "A: a b c( d e ) f | B: g h | C:";

// Presses on a row, goes to another point, and stays there. The node under the pointer when the drag begins is
// selected.
void Drag(Hand& hand, POINT from, POINT to) {
    hand.Do([&](Hand& user) {
        user.Press(from);
        user.Move({from.x + GetSystemMetrics(SM_CXDRAG), from.y});
        user.Move(to);
    });
}

void Release(Hand& hand) {
    hand.Do([](Hand& user) { user.Release(); });
}

int ScrollPosition(HWND tree, int bar) {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_POS;
    return GetScrollInfo(tree, bar, &info) ? info.nPos : -1;
}

} // namespace

TEST(LessonMapDrag, DropsWithinAndBetweenMapsOrNowhere) {
    LessonMapHost host;
    Hand hand(host.host.handle);
    const struct {
        const char16_t *from, *to;
        RowPart part;
        POINT offset;
        const char* target; // empty: no place to drop
        const char* shape;
    } cases[] = {
        {u"f", u"a", RowPart::LabelTop, {}, "a", "A: f a b c( d e ) | B: g h | C:"},
        {u"a", u"b", RowPart::LabelBottom, {}, "b", "A: b a c( d e ) f | B: g h | C:"},
        {u"f", u"c", RowPart::LabelBottom, {}, "d", "A: a b c( f d e ) | B: g h | C:"}, // before the first child
        {u"f", u"c", RowPart::LabelTop, {}, "c", "A: a b f c( d e ) | B: g h | C:"},
        {u"f", u"g", RowPart::LabelTop, {}, "g", "A: a b c( d e ) | B: f g h | C:"},
        {u"c", u"h", RowPart::LabelBottom, {}, "h", "A: a b f | B: g h c( d e ) | C:"},
        {u"e", u"f", RowPart::LabelTop, {}, "f", "A: a b c( d ) e f | B: g h | C:"},
        {u"d", u"C", RowPart::Label, {}, "C", "A: a b c( e ) f | B: g h | C: d"}, // into an empty map
        {u"h", u"A", RowPart::LabelTop, {}, "A", "A: h a b c( d e ) f | B: g | C:"},
        {u"f", u"B", RowPart::LabelBottom, {}, "B", "A: a b c( d e ) | B: f g h | C:"},
        {u"b", u"C", RowPart::Label, {0, 40}, "C", "A: a c( d e ) f | B: g h | C: b"}, // below the last row
        {u"a", u"A", RowPart::Label, {}, "", Sample}, // the first page of its map already
        {u"g", u"B", RowPart::Label, {}, "", Sample},
        {u"a", u"b", RowPart::LabelTop, {}, "", Sample}, // stands there already
        {u"b", u"a", RowPart::LabelBottom, {}, "", Sample},
        {u"d", u"c", RowPart::LabelBottom, {}, "", Sample},
        {u"c", u"c", RowPart::LabelTop, {}, "", Sample},       // itself
        {u"c", u"e", RowPart::LabelBottom, {}, "", Sample},    // its own branch
        {u"f", u"A", RowPart::LabelTop, {0, -15}, "", Sample}, // outside, above the rows
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << ToUtf8(each.from) << " to " << ToUtf8(each.to) << " "
                                        << static_cast<int>(each.part));
        host.Open(Sample);
        const POINT from = host.On(each.from);
        POINT to = host.On(each.to, each.part);
        if (each.from == Text(each.to)) to.x += 20; // far enough to be a drag
        Drag(hand, from, {to.x + each.offset.x, to.y + each.offset.y});
        EXPECT_TRUE(host.Editor().IsDragging());
        EXPECT_EQ(host.Highlighted(), each.target);
        EXPECT_EQ(host.Take(), "selected " + ToUtf8(each.from));
        Release(hand);
        EXPECT_EQ(host.Shape(), each.shape);
        EXPECT_EQ(host.Take(), *each.target ? "changed 2" : "");
        EXPECT_EQ(host.Editor().CurrentSBID(), each.from);
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        host.ExpectNoDrag();
    }
    hand.Do([&](Hand& user) { user.Click(host.On(u"h")); });
    EXPECT_EQ(host.Take(), "selected h") << "selections are told again";
}

TEST(LessonMapDrag, ACollapsedMapAndAnOpenEmptyRow) {
    LessonMapHost host;
    Hand hand(host.host.handle);
    host.Open(Sample);
    host.At(u"B").SetExpanded(false);
    Drag(hand, host.On(u"a"), host.On(u"B"));
    EXPECT_EQ(host.Highlighted(), "B");
    Release(hand);
    EXPECT_EQ(host.Shape(), "A: b c( d e ) f | B: a g h | C:");
    // The first map takes a page when it is collapsed, too.
    host.Open(Sample);
    host.At(u"A").SetExpanded(false);
    Drag(hand, host.On(u"h"), host.On(u"A"));
    EXPECT_EQ(host.Highlighted(), "A");
    Release(hand);
    EXPECT_EQ(host.Shape(), "A: h a b c( d e ) f | B: g | C:");
    EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
}

TEST(LessonMapDrag, BeginsOnlyWhereAndWhenItMay) {
    LessonMapHost host(true);
    host.Open(Sample);
    Hand hand(host.host.handle);
    const int nearly = GetSystemMetrics(SM_CXDRAG) - 1;
    POINT indent = host.On(u"a");
    indent.x = host.On(u"A", RowPart::Button).x;
    const struct {
        const char* what;
        std::function<void()> prepare;
        POINT from;
        int distance;
        bool begins;
    } cases[] = {
        {"a map", [] {}, host.On(u"B"), 40, false},
        {"a button", [] {}, host.On(u"c", RowPart::Button), 40, false},
        {"the indent", [] {}, indent, 40, false},
        {"not far enough", [] {}, host.On(u"a"), nearly, false},
        {"a box", [] {}, host.On(u"a", RowPart::Box), 40, true},
        {"dragging is not allowed", [&] { host.Editor().SetAllowDragDrop(false); }, host.On(u"b"), 40, false},
        {"locked",
         [&] {
             host.Editor().SetAllowDragDrop(true);
             host.Editor().SetLocked(true);
         },
         host.On(u"b"), 40, false},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        each.prepare();
        bool began = false;
        hand.Do([&](Hand& user) { // in one go: the tree itself waits for the button while there is no drag
            user.Press(each.from);
            user.Move({each.from.x + each.distance, each.from.y});
            began = host.Editor().IsDragging();
            user.Release();
        });
        EXPECT_EQ(began, each.begins);
        EXPECT_EQ(host.Shape(), Sample);
        host.ExpectNoDrag();
    }
}

TEST(LessonMapDrag, IsCancelledByEscapeRightButtonAndWhateverElse) {
    LessonMapHost host;
    Hand hand(host.host.handle);
    const struct {
        const char* what;
        std::function<void()> act;
        const char* heard;
    } cases[] = {
        {"Escape", [&] { hand.Do([](Hand& user) { user.Type(VK_ESCAPE); }); }, ""},
        {"right button, whose coming up is one without a drag",
         [&] {
             hand.Do([](Hand& user) {
                 user.Button(MOUSEEVENTF_RIGHTDOWN);
                 user.Button(MOUSEEVENTF_RIGHTUP);
             });
         },
         "menu"},
        {"the mouse is taken away", [&] { SetCapture(host.host.handle); }, ""},
        {"the host locks", [&] { host.Editor().SetLocked(true); }, ""},
        {"the host forbids it", [&] { host.Editor().SetAllowDragDrop(false); }, ""},
        {"the host builds the tree anew", [&] { host.Editor().Refresh(); }, ""},
        {"the host takes the lesson away", [&] { host.Editor().SetLesson(nullptr); }, ""},
        {"the dragged page goes", [&] { host.Editor().RemoveStoryboard(host.lesson->Storyboards()->Item(u"f"), true); },
         "changed 3, selected c"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.Open(Sample);
        Drag(hand, host.On(u"f"), host.On(u"a", RowPart::LabelTop));
        EXPECT_TRUE(host.Editor().IsDragging());
        hand.Do([](Hand& user) { user.Type(VK_DELETE); });
        EXPECT_EQ(host.Take(), "selected f") << "no deletion during a drag";
        each.act();
        if (GetCapture() == host.host.handle) ReleaseCapture();
        host.ExpectNoDrag();
        EXPECT_EQ(host.Take(), each.heard);
        const std::string shape = Print(host.Model());
        Release(hand);
        EXPECT_EQ(Print(host.Model()), shape) << "nothing is dropped any more";
        EXPECT_EQ(host.Take(), "");
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        host.Editor().SetLocked(false);
        host.Editor().SetAllowDragDrop(true);
    }
}

TEST(LessonMapDrag, RestingOnACollapsedNodeOpensIt) {
    LessonMapHost host;
    host.Open(Sample);
    host.At(u"c").SetExpanded(false);
    host.At(u"B").SetExpanded(false);
    Hand hand(host.host.handle);
    Drag(hand, host.On(u"a"), host.On(u"c", RowPart::LabelTop));
    EXPECT_TRUE(Hand::Await([&] { return host.At(u"c").IsExpanded(); }));
    hand.Do([&](Hand& user) { user.Move(host.On(u"B")); });
    EXPECT_TRUE(Hand::Await([&] { return host.At(u"B").IsExpanded(); }));
    EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
    const POINT into = host.On(u"g", RowPart::LabelBottom);
    hand.Do([&](Hand& user) {
        user.Move(into);
        user.Release();
    });
    EXPECT_EQ(host.Shape(), "A: b c( d e ) f | B: g a h | C:");
}

TEST(LessonMapDrag, ScrollsNearEachEdge) {
    LessonMapHost host(false, 150);
    std::string pages = "A:";
    for (int n = 0; n < 30; ++n) pages += " p" + std::to_string(n);
    host.Open(pages);
    for (const auto& page : host.lesson->Storyboards()->All())
        std::dynamic_pointer_cast<ContentStoryboard>(page)->SetTitle(Text(75, u'm'));
    host.Editor().Refresh();
    Hand hand(host.host.handle);
    const HWND tree = host.TreeHandle();
    RECT client;
    GetClientRect(tree, &client);
    const LONG middle = client.right / 2, centre = client.bottom / 2;
    const auto at = [&](LONG x, LONG y) {
        POINT point{x, y};
        ClientToScreen(tree, &point);
        return point;
    };
    const auto place = [&] { return std::pair(ScrollPosition(tree, SB_HORZ), ScrollPosition(tree, SB_VERT)); };
    const auto start = place();
    Drag(hand, host.On(u"p1"), at(middle, client.bottom - 6));
    EXPECT_TRUE(Hand::Await([&] { return place().second > 3; }));
    EXPECT_EQ(place().first, start.first) << "downwards alone";
    hand.Do([&](Hand& user) { user.Move(at(middle, centre)); });
    const int down = place().second;
    hand.Do([&](Hand& user) { user.Move(at(client.right - 6, centre)); });
    EXPECT_TRUE(Hand::Await([&] { return place().first > 10; }));
    EXPECT_EQ(place().second, down) << "to the right alone";
    // The upper left corner is at two edges, also a little outside of the window.
    hand.Do([&](Hand& user) { user.Move(at(-4, 6)); });
    EXPECT_TRUE(Hand::Await([&] { return place() == start; }));
    EXPECT_TRUE(host.Editor().IsDragging());
    // The row under the pointer is another one now, and so is the place to drop.
    hand.Do([&](Hand& user) { user.Move(host.On(u"p3", RowPart::LabelTop)); });
    EXPECT_EQ(host.Highlighted(), "p3");
    Release(hand);
    EXPECT_EQ(Print(host.Model()).substr(0, 15), "A: p0 p2 p1 p3 ");
    EXPECT_MIRROR(tree, host.Model(), false);
    host.ExpectNoDrag();
}

} // namespace dax::test
