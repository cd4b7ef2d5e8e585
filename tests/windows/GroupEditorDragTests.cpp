// Dragging in the hierarchy editor's window, with the mouse.
#include "windows/EditorHost.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

// Presses on a row, goes to another, and stays there.
void Drag(EditorHost& host, Hand& hand, TextView from, POINT to) {
    const POINT start = host.On(from);
    hand.Do([&](Hand& user) {
        user.Press(start);
        user.Move({start.x + GetSystemMetrics(SM_CXDRAG) + 1, start.y});
        user.Move(to);
    });
}

} // namespace

TEST(GroupEditorDrag, DropsBeforeAfterAndInto) {
    EditorHost host;
    Hand hand(host.host.handle);
    constexpr const char *Same = "g(a b s(c d)) h(e f) i", *Below = "below";
    const struct {
        const char16_t *from, *to;
        RowPart part;
        const char* target; // empty: no place to drop
        const char* shape;
    } cases[] = {
        {u"i", u"a", RowPart::LabelTop, "a", "g(i a b s(c d)) h(e f)"},
        {u"i", u"b", RowPart::LabelBottom, "b", "g(a b i s(c d)) h(e f)"},
        {u"i", u"s", RowPart::LabelBottom, "c", "g(a b s(i c d)) h(e f)"}, // into an open group
        {u"i", u"h", RowPart::LabelTop, "h", "g(a b s(c d)) i h(e f)"},
        {u"i", u"h", RowPart::LabelBottom, "", Same}, // stands there already
        {u"a", u"h", RowPart::LabelBottom, "h", "g(b s(c d)) h(e f) a i"},
        {u"a", u"b", RowPart::LabelTop, "", Same},
        {u"d", u"", RowPart::Label, "root", "d g(a b s(c)) h(e f) i"},
        {u"g", u"", RowPart::Label, "", Same},
        {u"g", u"c", RowPart::LabelTop, "", Same}, // its own branch
        {u"g", u"i", RowPart::LabelBottom, "i", "h(e f) i g(a b s(c d))"},
        {u"b", nullptr, RowPart::Label, "i", "g(a s(c d)) h(e f) i b"}, // the space below the rows
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << ToUtf8(each.from) << " to " << (each.to ? ToUtf8(each.to) : Below));
        host.Editor().Clear();
        host.FillSample();
        POINT to = host.On(each.to ? each.to : u"i", each.part);
        if (!each.to) to.y += 40;
        Drag(host, hand, each.from, to);
        EXPECT_TRUE(host.Editor().DragDrop().Active());
        EXPECT_EQ(host.Highlighted(), each.target);
        EXPECT_EQ(GetCapture(), host.TreeHandle());
        EXPECT_EQ(host.Take(), "S" + ToUtf8(each.from) + " ");
        hand.Do([](Hand& user) { user.Release(); });
        EXPECT_EQ(Shape(host.Model()), each.shape);
        const std::string target = each.target == std::string("root") ? "" : each.target;
        EXPECT_EQ(host.Take(), *each.target ? "S" + target + " D " : "") << "what was dropped on is selected";
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        host.ExpectNoDrag();
        hand.Do([&](Hand& user) {
            user.Click(host.On(u"b"));
            user.Click(host.On(u"c"));
        });
        EXPECT_THAT(host.Take(), ::testing::EndsWith("Sc ")) << "selections are told again";
    }
}

TEST(GroupEditorDrag, BeginsOnlyWhereAndWhenItMay) {
    EditorHost host;
    host.FillSample();
    Hand hand(host.host.handle);
    const int nearly = GetSystemMetrics(SM_CXDRAG) - 1;
    const struct {
        const char* what;
        std::function<void()> prepare;
        POINT from;
        int distance;
    } cases[] = {
        {"the root", [] {}, host.On(u""), 40},
        {"a button", [] {}, host.On(u"s", RowPart::Button), 40},
        {"not far enough", [] {}, host.On(u"a"), nearly},
        {"dragging is not allowed", [&] { host.Editor().SetAllowDragDrop(false); }, host.On(u"a"), 40},
        {"locked",
         [&] {
             host.Editor().SetAllowDragDrop(true);
             host.Editor().SetLocked(true);
         },
         host.On(u"a"), 40},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        each.prepare();
        bool wasDragging = true;
        hand.Do([&](Hand& user) { // at once: until the drag begins the tree waits for the button's coming up
            user.Press(each.from);
            user.Move({each.from.x + each.distance, each.from.y});
            wasDragging = host.Editor().DragDrop().Active();
            user.Release();
        });
        EXPECT_FALSE(wasDragging);
        EXPECT_EQ(Shape(host.Model()), "g(a b s(c d)) h(e f) i");
        host.ExpectNoDrag();
    }
}

TEST(GroupEditorDrag, IsCancelledByEscapeRightButtonAndWhateverElse) {
    EditorHost host;
    Hand hand(host.host.handle);
    const struct {
        const char* what;
        std::function<void()> act;
    } cases[] = {
        {"Escape", [&] { hand.Do([](Hand& user) { user.Type(VK_ESCAPE); }); }},
        {"right button",
         [&] {
             hand.Do([](Hand& user) {
                 user.Button(MOUSEEVENTF_RIGHTDOWN);
                 user.Button(MOUSEEVENTF_RIGHTUP);
             });
         }},
        {"the mouse is taken away", [&] { SetCapture(host.host.handle); }},
        {"the host locks", [&] { host.Editor().SetLocked(true); }},
        {"the host clears", [&] { host.Editor().Clear(); }},
        {"the dragged entry goes", [&] { host.Editor().RemoveLesson(u"i", true); }},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.Editor().Clear();
        host.FillSample();
        SetFocus(host.host.handle);
        Drag(host, hand, u"i", host.On(u"a", RowPart::LabelTop));
        EXPECT_TRUE(host.Editor().DragDrop().Active());
        EXPECT_EQ(GetFocus(), host.TreeHandle());
        each.act();
        if (GetCapture() == host.host.handle) ReleaseCapture();
        host.ExpectNoDrag();
        const std::string shape = Shape(host.Model());
        host.Take();
        hand.Do([](Hand& user) { user.Release(); });
        EXPECT_EQ(Shape(host.Model()), shape) << "nothing is dropped any more";
        EXPECT_EQ(host.Take(), "");
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        host.Editor().SetLocked(false);
    }
}

TEST(GroupEditorDrag, RestingOnAClosedGroupOpensIt) {
    EditorHost host;
    host.FillSample();
    Hand hand(host.host.handle);
    Drag(host, hand, u"a", host.On(u"h", RowPart::LabelTop));
    EXPECT_TRUE(Hand::Await([&] { return host.At(u"h").IsExpanded(); }));
    EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
    const POINT into = host.On(u"f", RowPart::LabelBottom);
    hand.Do([&](Hand& user) {
        user.Move(into);
        user.Release();
    });
    EXPECT_EQ(Shape(host.Model()), "g(b s(c d)) h(e f a) i");
}

TEST(GroupEditorDrag, ScrollsNearTheEdges) {
    EditorHost host(140);
    {
        const TreeUpdate update(host.Model());
        Node& root = host.Model().Add(nullptr, Place::LastChild, u"", u"the database", 1);
        for (int n = 0; n < 40; ++n) host.Model().Add(&root, Place::LastChild, ToText(n), ToText(n), 3);
        root.SetExpanded(true);
    }
    Hand hand(host.host.handle);
    const HWND tree = host.TreeHandle();
    RECT client;
    GetClientRect(tree, &client);
    POINT down{30, client.bottom - 6}, up{30, 6};
    ClientToScreen(tree, &down);
    ClientToScreen(tree, &up);
    const auto isInSight = [&](Node& node) {
        const RECT row = ItemPlace(tree, ItemOf(&node), false);
        return row.top >= 0 && row.bottom <= client.bottom;
    };
    Drag(host, hand, u"1", down);
    EXPECT_TRUE(Hand::Await([&] { return isInSight(host.At(u"39")); }));
    hand.Do([&](Hand& user) { user.Move(up); });
    EXPECT_TRUE(Hand::Await([&] { return isInSight(host.At(u"")); }));
    // The row under the pointer is another one now, and so is the place to drop.
    hand.Do([&](Hand& user) { user.Move(host.On(u"0", RowPart::LabelTop)); });
    EXPECT_EQ(host.Highlighted(), "0");
    hand.Do([](Hand& user) { user.Release(); });
    EXPECT_EQ(host.Model().First()->FirstChild()->Key(), u"1");
    EXPECT_MIRROR(tree, host.Model(), false);
    host.ExpectNoDrag();
}

// A mark at each row's edge, and no trace of it afterwards.
TEST(GroupEditorDrag, TheMarkIsDrawnAndGoes) {
    NodeTree model;
    HostWindow host;
    Node& first = model.Add(nullptr, Place::LastChild, u"1", u"first");
    Node& second = model.Add(nullptr, Place::LastChild, u"2", u"second");
    const auto view = std::make_shared<TreeViewWindow>(model);
    const HWND tree = view->Create(host.handle);
    view->Fit(200, 120);
    ProcessPendingMessages();
    const std::vector<uint32_t> clean = WindowPixels(tree);
    std::vector<uint32_t> former = clean;
    for (const auto& [node, after] : {std::pair{&first, false}, {&first, true}, {&second, true}}) {
        view->SetInsertMark(node, after);
        const std::vector<uint32_t> marked = WindowPixels(tree);
        EXPECT_NE(marked, former);
        EXPECT_NE(marked, clean);
        former = marked;
    }
    view->SetInsertMark(nullptr, false);
    ProcessPendingMessages();
    EXPECT_EQ(WindowPixels(tree), clean);
    view->SetDropHighlight(&second);
    EXPECT_NE(WindowPixels(tree), clean);
    view->SetDropHighlight(nullptr);
    ProcessPendingMessages();
    EXPECT_EQ(WindowPixels(tree), clean);
}

} // namespace dax::test
