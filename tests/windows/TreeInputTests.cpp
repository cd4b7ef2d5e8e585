// Both tree controls under a user's mouse and keyboard.
#include "windows/TreeControlHost.h"

namespace dax::test {

TEST(TreeInput, BoxesAreCheckedByBranchOneByOneAndByTheTopRow) {
    const struct {
        const char* what;
        Act act;
        const char* checked;
    } cases[] = {
        {"click", Click(u"c", RowPart::Box), "cde"},
        {"Ctrl+click", Holding({VK_CONTROL}, Click(u"c", RowPart::Box)), "de"},
        {"Space: the branch of the top row, whatever is selected", Type(VK_SPACE), "Aabcdef"},
        {"Space again", Type(VK_SPACE), ""},
        {"double click on the caption", Double(u"c"), "cde"},
        {"Ctrl and double click on the box: there and back", Holding({VK_CONTROL}, Double(u"c", RowPart::Box)), "cde"},
        {"double click on the box: there and back", Double(u"c", RowPart::Box), "cde"},
        {"click on a leaf", Click(u"h", RowPart::Box), "cdeh"},
    };
    LessonMapHost host(true);
    host.OpenSample();
    host.Editor().SetCurrentSBID(u"h");
    host.Take();
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.At(u"c").SetExpanded(true); // a double click collapses it
        host.Do(each.act);
        EXPECT_EQ(host.Checked(), each.checked);
        host.ExpectMirror();
        EXPECT_TRUE(UserInput::Await([&] { return host.Take().find("checked") != std::string::npos; }));
    }
    // A burst is reported once. The keys come faster than any message in between.
    for (int count = 0; count < 5; ++count) SendMessageW(host.Tree(), WM_KEYDOWN, VK_SPACE, 0x390001);
    EXPECT_TRUE(UserInput::Await([&] { return !host.received.empty(); }));
    EXPECT_EQ(host.Take(), "checked");
}

TEST(TreeInput, KeysAndButtonsMeanWhatTheyShould) {
    struct Case {
        const char* what;
        Act act;
        const char *received, *receivedWhenLocked;
    };
    const Case ofPages[] = {
        {"click", Click(u"b"), "selected b", "selected b"},
        {"down", Type(VK_DOWN), "selected c", "selected c"},
        {"Delete", Type(VK_DELETE), "delete", ""},
        {"right click", RightClick(u"c"), "menu", ""},
        {"Menu key", Type(VK_APPS), "menu", ""},
        {"Shift+F10", Holding({VK_SHIFT}, Type(VK_F10)), "menu", ""},
        {"a map", Type(VK_HOME), "selected -", "selected -"},
        {"to the page before", Click(u"a"), "selected a", "selected a"},
        {"its map is folded", Click(u"A", RowPart::Button), "selected -", "selected -"},
        {"and opened", Click(u"A", RowPart::Button), "", ""},
    };
    const Case ofGroups[] = {
        {"click", Click(u"a"), "selected a", "selected a"},
        {"down", Type(VK_DOWN), "selected b", "selected b"},
        {"Delete", Type(VK_DELETE), "delete", "delete"},
        {"Enter", Type(VK_RETURN), "", "double"},
        {"double click", Double(u"d"), "selected d, double", "selected d, double"},
        {"the first row", Type(VK_HOME), "selected ", "selected "},
        {"Space", Type(VK_SPACE), "", ""},
    };
    const auto run = [](TreeControlHost& host, const auto& cases) {
        host.OpenSample();
        for (const bool isLocked : {false, true}) {
            host.SetLocked(isLocked);
            for (const Case& each : cases) {
                SCOPED_TRACE(testing::Message() << each.what << (isLocked ? ", locked" : ""));
                host.Do(each.act);
                EXPECT_EQ(host.Take(), isLocked ? each.receivedWhenLocked : each.received);
                host.ExpectMirror();
            }
        }
    };
    EditorHost groups;
    run(groups, ofGroups);
    LessonMapHost pages;
    run(pages, ofPages);
    EXPECT_EQ(pages.lesson->CurrentSBID(), pages.Editor().CurrentSBID());
}

TEST(TreeInput, CtrlAndShiftOpenAndCloseWholeBranches) {
    LessonMapHost host;
    host.Open("A: a( b( c( d ) ) e )");
    const Act press = Click(u"a", RowPart::Button), pressWithBoth = Holding({VK_CONTROL, VK_SHIFT}, press);
    const std::tuple<Act, bool, bool> cases[] = {
        {pressWithBoth, false, false}, {press, true, false}, {press, false, false}, {pressWithBoth, true, true}};
    for (const auto& [act, isOpen, isOpenBelow] : cases) {
        host.Do(act);
        EXPECT_EQ(host.At(u"a").IsExpanded(), isOpen);
        EXPECT_EQ(host.At(u"b").IsExpanded(), isOpenBelow);
        host.ExpectMirror();
    }
}

TEST(TreeInput, TheHostMayReleaseItDuringMouseInput) {
    const struct {
        bool arePages;
        const char* event;
        Act act;
        bool isLocked = false;
    } cases[] = {
        {false, "selected", Click(u"a")},      {false, "selected", Drag(u"d", u"a")}, // when the drag selects the entry
        {false, "double", Double(u"b"), true}, {false, "changed", Drag(u"f", u"a")},
        {true, "menu", RightClick(u"b")},      {true, "checked", Click(u"c", RowPart::Box)},
        {true, "changed", Drag(u"f", u"a")},
    };
    const long living = WindowBase::LiveCount();
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.event << " case " << &each - cases);
        const std::unique_ptr<TreeControlHost> host(
            each.arePages ? static_cast<TreeControlHost*>(new LessonMapHost(true)) : new EditorHost());
        host->OpenSample();
        host->Model().Select(&host->At(u"b"));
        host->SetLocked(each.isLocked);
        host->Take();
        host->releaseAt = each.event;
        host->Do(each.act);
        EXPECT_TRUE(UserInput::Await([&] { return host->Control() == nullptr; })) << host->received;
        EXPECT_TRUE(UserInput::Await([&] { return WindowBase::LiveCount() == living; }));
    }
}

// Where drops go is tested without a window; here, that rows are found, marked and left.
TEST(TreeInput, RowsAreDroppedBesideOthersIntoThemOrNowhere) {
    struct Case {
        const char16_t *from, *to;
        RowPart part;
        const char *target, *shape; // empty: no place to drop
        bool isIntoIt = false;      // with Ctrl
    };
    constexpr const char* same = "A: a b c( d e ) f | B: g h";
    const Case cases[] = {
        {u"f", u"a", RowPart::LabelTop, "a", "A: f a b c( d e ) | B: g h"},
        {u"f", u"b", RowPart::LabelBottom, "b", "A: a b f c( d e ) | B: g h"},
        {u"c", u"d", RowPart::LabelTop, "", same}, // its own branch
        {u"a", u"f", RowPart::LabelTop, "f", "A: b c( d e ) f( a ) | B: g h", true},
        {u"f", u"g", RowPart::BehindLabel, "g", "A: a b c( d e ) | B: f g h"},
        {u"f", u"g", RowPart::BehindWindow, "", same},
        {u"b", u"h", RowPart::Below, "h", "A: a c( d e ) f | B: g h b"},
        {u"f", u"A", RowPart::AboveWindow, "", same},
    };
    const auto run = [&](TreeControlHost&& host, const std::string& toldBefore, const std::string& toldBehind) {
        for (const Case& each : cases) {
            SCOPED_TRACE(&each - cases);
            host.OpenSample();
            host.Do(DragTo(each.from, each.to, each.part));
            EXPECT_TRUE(host.IsDragging());
            const std::vector<uint32_t> marked = WindowPixels(host.Tree());
            if (each.isIntoIt) {
                host.Do([](TreeControlHost&, UserInput& user) { user.KeyDown(VK_CONTROL); });
                EXPECT_NE(WindowPixels(host.Tree()), marked) << "the mark disappears without a move of the pointer";
            }
            EXPECT_EQ(host.Highlighted(), each.target);
            EXPECT_EQ(GetCapture(), host.Tree());
            EXPECT_EQ(host.Take(), "selected " + ToUtf8(each.from));
            host.Do(ReleaseButton());
            if (each.isIntoIt) host.Do([](TreeControlHost&, UserInput& user) { user.KeyUp(VK_CONTROL); });
            EXPECT_EQ(host.Shape(), each.shape);
            EXPECT_EQ(host.Take(), *each.target ? toldBefore + "selected " + each.target + toldBehind : "");
            host.ExpectMirror();
            host.ExpectNoDrag();
        }
    };
    run(EditorHost(), "", ", changed");
    run(LessonMapHost(), "changed 2, ", "");
}

// Nothing of the marks and of the picture of the row is left.
TEST(TreeInput, ADragIsCancelled) {
    const Act rightButton = [](TreeControlHost&, UserInput& user) {
        user.Button(MOUSEEVENTF_RIGHTDOWN);
        user.Button(MOUSEEVENTF_RIGHTUP);
    };
    const auto run = [&](TreeControlHost&& host, const std::string& heardOfRightButton) {
        const std::tuple<const char*, Act, std::string> cases[] = {{"Escape", Type(VK_ESCAPE), ""},
                                                                   {"right button", rightButton, heardOfRightButton},
                                                                   {"the mouse is taken away", nullptr, ""}};
        for (const auto& [what, act, received] : cases) {
            SCOPED_TRACE(what);
            host.OpenSample();
            host.Do(Click(u"f"));
            const std::string shape = host.Shape();
            const std::vector<uint32_t> clean = WindowPixels(host.Tree());
            SetFocus(host.host.handle);
            host.Do(DragTo(u"f", u"a"));
            EXPECT_EQ(GetFocus(), host.Tree()) << "else Escape would go elsewhere";
            EXPECT_NE(WindowPixels(host.Tree()), clean);
            host.Do(Type(VK_DELETE));
            EXPECT_EQ(host.Take(), "selected f") << "no deletion during a drag";
            act ? host.Do(act) : void(ReleaseCapture());
            host.ExpectNoDrag();
            EXPECT_EQ(host.Take(), received);
            host.Do(ReleaseButton());
            EXPECT_EQ(WindowPixels(host.Tree()), clean);
            EXPECT_EQ(host.Shape(), shape) << "nothing is dropped any more";
            EXPECT_EQ(host.Take(), "");
        }
    };
    run(EditorHost(), "");
    run(LessonMapHost(), "menu"); // its coming up is one without a drag
}

TEST(TreeInput, EdgesScrollDuringADrag) {
    LessonMapHost host(false, 150);
    std::string lesson = "A:";
    for (int n = 0; n < 30; ++n) lesson += " p" + std::to_string(n) + std::string(75, 'm');
    host.Open(lesson);
    const auto page = [](int n) { return u"p" + ToText(n) + Text(75, u'm'); };
    host.Do(DragTo(page(1), page(2)));
    RECT client;
    GetClientRect(host.Tree(), &client);
    const POINT start{GetScrollPos(host.Tree(), SB_HORZ), GetScrollPos(host.Tree(), SB_VERT)};
    const auto isScrolled = [&](bool right, bool down) {
        return (GetScrollPos(host.Tree(), SB_HORZ) > start.x) == right &&
               (GetScrollPos(host.Tree(), SB_VERT) > start.y) == down;
    };
    const struct {
        POINT pointer; // near an edge, or a little outside of it
        bool right, down;
    } cases[] = {{{client.right / 2, client.bottom - 6}, false, true},
                 {{client.right - 6, client.bottom / 2}, true, true},
                 {{-4, -4}, false, false}};
    for (const auto& each : cases) {
        host.Do([&](TreeControlHost&, UserInput& user) {
            POINT point = each.pointer;
            ClientToScreen(host.Tree(), &point);
            user.Move(point);
        });
        EXPECT_TRUE(UserInput::Await([&] { return isScrolled(each.right, each.down); })) << &each - cases;
    }
    // The row under the pointer is another one now, and so is the place to drop.
    host.Do([&](TreeControlHost&, UserInput& user) { user.Move(host.On(page(3), RowPart::LabelTop)); });
    EXPECT_EQ(host.Highlighted(), ToUtf8(page(3)));
    host.Do(ReleaseButton());
    EXPECT_EQ(host.At(page(3)).Previous(), &host.At(page(1)));
    host.ExpectMirror();
    host.ExpectNoDrag();
}

} // namespace dax::test
