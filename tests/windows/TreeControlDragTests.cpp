// Dragging in both tree controls' windows, with the mouse.
#include "windows/TreeControlHost.h"

#include <functional>

namespace dax::test {

namespace {

constexpr const char *Groups = ": g( a b s( c d ) ) h( e f ) i", *Pages = "A: a b c( d e ) f | B: g h | C:";

// Presses on a row, goes to another point, and stays there. What is under the pointer when the drag begins is selected.
void DragTo(TreeControlHost& host, UserInput& input, TextView from, POINT to) {
    const POINT start = host.On(from);
    input.Do([&](UserInput& user) {
        user.Press(start);
        user.Move({start.x + GetSystemMetrics(SM_CXDRAG) + 1, start.y});
        user.Move(to);
    });
    EXPECT_TRUE(host.IsDragging());
}

void Let(UserInput& input) {
    input.Do([](UserInput& user) { user.Release(); });
}

struct Drop {
    const char16_t *from, *to;
    RowPart part;
    POINT offset;
    const char* target; // empty: no place to drop
    const char* shape;
    bool isIntoIt = false; // with Ctrl
};

// What was dropped on is selected, in both trees.
template <size_t Count>
void ExpectDrops(TreeControlHost& host, const Drop (&drops)[Count],
                 const std::function<std::string(const std::string& target)>& told) {
    UserInput input(host.host.handle);
    for (const Drop& each : drops) {
        SCOPED_TRACE(testing::Message() << "row " << &each - drops << ": " << ToUtf8(each.from));
        host.OpenSample();
        const POINT to = host.On(each.to, each.part);
        DragTo(host, input, each.from, {to.x + each.offset.x, to.y + each.offset.y});
        const std::vector<uint32_t> marked = WindowPixels(host.TreeHandle());
        if (each.isIntoIt) input.Do([](UserInput& user) { user.KeyDown(VK_CONTROL); });
        EXPECT_EQ(host.Highlighted(), each.target);
        EXPECT_EQ(GetCapture(), host.TreeHandle());
        EXPECT_EQ(host.Take(), "selected " + ToUtf8(each.from));
        if (each.isIntoIt && *each.target) {
            EXPECT_NE(WindowPixels(host.TreeHandle()), marked) << "the mark goes without a move of the pointer";
        }
        Let(input);
        if (each.isIntoIt) input.Do([](UserInput& user) { user.KeyUp(VK_CONTROL); });
        EXPECT_EQ(host.Shape(), each.shape);
        EXPECT_EQ(host.Take(), *each.target ? told(each.target) : "");
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        host.ExpectNoDrag();
    }
    host.OpenSample();
    input.Do([&](UserInput& user) { user.Click(host.On(u"b")); });
    EXPECT_EQ(host.Take(), "selected b") << "selections are told again";
}

constexpr LONG Beyond = 400; // to the right of the window, where a row is but no item

} // namespace

TEST(TreeControlDrag, GroupsAndLessonsAreDroppedBeforeAfterAndInto) {
    EditorHost host;
    const Drop drops[] = {
        {u"i", u"a", RowPart::LabelTop, {}, "a", ": g( i a b s( c d ) ) h( e f )"},
        {u"i", u"b", RowPart::LabelBottom, {}, "b", ": g( a b i s( c d ) ) h( e f )"},
        {u"i", u"h", RowPart::LabelBottom, {}, "", Groups},                                  // stands there already
        {u"g", u"c", RowPart::LabelTop, {}, "", Groups},                                     // its own branch
        {u"b", u"i", RowPart::Label, {0, 40}, "i", ": g( a s( c d ) ) h( e f ) i b"},        // the space below the rows
        {u"a", u"i", RowPart::LabelTop, {}, "i", ": g( b s( c d ) ) h( e f ) i( a )", true}, // it had no children
    };
    ExpectDrops(host, drops, [](const std::string& target) { return "selected " + target + ", changed"; });
}

TEST(TreeControlDrag, PagesAreDroppedWithinAndBetweenMapsOrNowhere) {
    LessonMapHost host;
    const Drop drops[] = {
        {u"f", u"c", RowPart::LabelBottom, {}, "d", "A: a b c( f d e ) | B: g h | C:"},    // before the first child
        {u"f", u"g", RowPart::LabelTop, {150, 0}, "g", "A: a b c( d e ) | B: f g h | C:"}, // at the end of the row
        {u"f", u"g", RowPart::LabelTop, {Beyond, 0}, "", Pages},
        {u"d", u"C", RowPart::Label, {}, "C", "A: a b c( e ) f | B: g h | C: d"},      // into an empty map
        {u"b", u"C", RowPart::Label, {0, 40}, "C", "A: a c( d e ) f | B: g h | C: b"}, // below the last row
        {u"c", u"c", RowPart::LabelTop, {20, 0}, "", Pages},                           // itself
        {u"f", u"A", RowPart::LabelTop, {0, -15}, "", Pages},                          // outside, above the rows
        {u"g", u"a", RowPart::LabelBottom, {}, "a", "A: a( g ) b c( d e ) f | B: h | C:", true},
    };
    ExpectDrops(host, drops,
                [](const std::string& target) { return "changed 2, selected " + (target[0] < 'a' ? "-" : target); });
}

TEST(TreeControlDrag, IsCancelledByEscapeRightButtonAndWhateverElse) {
    struct Case {
        const char* what;
        std::function<void(UserInput&)> act;
        const char* heard = "";
    };
    // What the user does to either, and what its host may do.
    const auto all = [](TreeControlHost& host, const char* afterRightButton, const std::vector<Case>& others) {
        std::vector<Case> cases{
            {"Escape", [](UserInput& input) { input.Do([](UserInput& user) { user.Type(VK_ESCAPE); }); }},
            {"right button",
             [](UserInput& input) {
                 input.Do([](UserInput& user) {
                     user.Button(MOUSEEVENTF_RIGHTDOWN);
                     user.Button(MOUSEEVENTF_RIGHTUP);
                 });
             },
             afterRightButton},
            {"the mouse is taken away", [&](UserInput&) { SetCapture(host.host.handle); }},
        };
        cases.insert(cases.end(), others.begin(), others.end());
        UserInput input(host.host.handle);
        for (const Case& each : cases) {
            SCOPED_TRACE(each.what);
            host.OpenSample();
            host.Model().Find(u"f")->Parent()->SetExpanded(true);
            DragTo(host, input, u"f", host.On(u"a", RowPart::LabelTop));
            input.Do([](UserInput& user) { user.Type(VK_DELETE); });
            EXPECT_EQ(host.Take(), "selected f") << "no deletion during a drag";
            each.act(input);
            if (GetCapture() == host.host.handle) ReleaseCapture();
            host.ExpectNoDrag();
            EXPECT_EQ(host.Take(), each.heard);
            const std::string shape = Print(host.Model());
            Let(input);
            EXPECT_EQ(Print(host.Model()), shape) << "nothing is dropped any more";
            EXPECT_EQ(host.Take(), "");
            EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        }
    };
    {
        EditorHost host;
        all(host, "", {{"the host clears", [&](UserInput&) { host.Editor().Clear(); }, "selected "}});
    }
    LessonMapHost host;
    all(host, "menu", // its coming up is one without a drag
        {{"the dragged page goes",
          [&](UserInput&) { host.Editor().RemoveStoryboard(host.lesson->Storyboards()->Item(u"f"), true); },
          "changed 3, selected c"}});
}

TEST(TreeControlDrag, RestingOnACollapsedNodeOpensIt) {
    const auto run = [](TreeControlHost&& host, const std::vector<Text>& nodes, TextView into, const char* shape) {
        host.OpenSample();
        for (const Text& node : nodes) host.At(node).SetExpanded(false);
        UserInput input(host.host.handle);
        SetFocus(host.host.handle); // the press takes it back
        DragTo(host, input, u"a", host.On(nodes[0], RowPart::LabelTop));
        EXPECT_EQ(GetFocus(), host.TreeHandle());
        for (const Text& node : nodes) {
            const POINT rest = host.On(node, RowPart::LabelTop);
            input.Do([&](UserInput& user) { user.Move(rest); });
            EXPECT_TRUE(UserInput::Await([&] { return host.At(node).IsExpanded(); }));
        }
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        const POINT end = host.On(into, RowPart::LabelBottom);
        input.Do([&](UserInput& user) {
            user.Move(end);
            user.Release();
        });
        EXPECT_EQ(host.Shape(), shape);
    };
    run(EditorHost(), {u"h"}, u"f", ": g( b s( c d ) ) h( e f a ) i");
    run(LessonMapHost(), {u"c", u"B"}, u"g", "A: b c( d e ) f | B: g a h | C:");
}

TEST(TreeControlDrag, ScrollsNearEachEdge) {
    LessonMapHost host(false, 150);
    std::string lesson = "A:";
    for (int n = 0; n < 30; ++n) lesson += " p" + std::to_string(n);
    host.Open(lesson);
    for (const auto& page : host.lesson->Storyboards()->All())
        std::dynamic_pointer_cast<ContentStoryboard>(page)->SetTitle(Text(75, u'm'));
    host.Editor().Refresh();
    UserInput input(host.host.handle);
    const HWND tree = host.TreeHandle();
    RECT client;
    GetClientRect(tree, &client);
    const LONG middle = client.right / 2, centre = client.bottom / 2, right = client.right - 6;
    const LONG bottom = client.bottom - 6;
    const auto at = [&](POINT point) {
        ClientToScreen(tree, &point);
        return point;
    };
    const auto place = [&] { return POINT{GetScrollPos(tree, SB_HORZ), GetScrollPos(tree, SB_VERT)}; };
    const POINT start = place();
    DragTo(host, input, u"p1", at({middle, bottom}));
    // Each edge moves one way alone, also from a little outside of the window; a corner moves both.
    const struct {
        POINT pointer, least, most; // where it comes to: between these, and no more when they are the same
    } cases[] = {
        {{middle, bottom}, {start.x, start.y + 2}, {start.x, 1000}},
        {{right, centre}, {start.x + 2, -1}, {1000, -1}},
        {{middle, -4}, {-1, start.y}, {-1, start.y}},
        {{-4, centre}, {start.x, -1}, {start.x, -1}},
        {{right + 12, bottom + 12}, {start.x + 2, start.y + 2}, {1000, 1000}},
        {{-4, -4}, start, start},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        input.Do([&](UserInput& user) { user.Move(at({middle, centre})); }); // no edge: it stands still
        const POINT before = place();
        const auto isThere = [](LONG now, LONG was, LONG least, LONG most) {
            return least < 0 ? now == was : now >= least && now <= most;
        };
        input.Do([&](UserInput& user) { user.Move(at(each.pointer)); });
        EXPECT_TRUE(UserInput::Await([&] {
            const POINT now = place();
            return isThere(now.x, before.x, each.least.x, each.most.x) &&
                   isThere(now.y, before.y, each.least.y, each.most.y);
        })) << place().x
            << " " << place().y << " from " << before.x << " " << before.y;
    }
    // The row under the pointer is another one now, and so is the place to drop.
    EXPECT_TRUE(host.IsDragging());
    input.Do([&](UserInput& user) { user.Move(host.On(u"p3", RowPart::LabelTop)); });
    EXPECT_EQ(host.Highlighted(), "p3");
    Let(input);
    EXPECT_EQ(Print(host.Model()).substr(0, 15), "A: p0 p2 p1 p3 ");
    EXPECT_MIRROR(tree, host.Model(), false);
    host.ExpectNoDrag();
}

// A mark at each row's edge, and no trace of it afterwards.
TEST(TreeControlDrag, TheMarkIsDrawnAndGoes) {
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
}

} // namespace dax::test
