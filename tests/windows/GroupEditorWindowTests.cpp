// The hierarchy editor's window under a user's mouse and keyboard.
#include "windows/EditorHost.h"
#include "windows/WindowCounts.h"

namespace dax::test {

TEST(GroupEditorWindow, MouseAndKeysMeanWhatTheyShould) {
    EditorHost host;
    host.FillSample();
    Hand hand(host.host.handle);
    const auto click = [&](TextView key) { return [&host, key](Hand& user) { user.Click(host.On(key)); }; };
    const auto twice = [&](TextView key) { return [&host, key](Hand& user) { user.DoubleClick(host.On(key)); }; };
    const auto type = [](WORD key) { return [key](Hand& user) { user.Type(key); }; };
    const struct {
        const char* what;
        bool isLocked;
        std::function<void(Hand&)> act;
        const char* heard;
    } cases[] = {
        {"click", false, click(u"a"), "Sa "},
        {"click on what is selected", false, click(u"a"), ""},
        {"down", false, type(VK_DOWN), "Sb "},
        {"Delete", false, type(VK_DELETE), "X "},
        {"Enter", false, type(VK_RETURN), ""},
        {"Enter when locked", true, type(VK_RETURN), "2 "},
        {"Delete when locked", true, type(VK_DELETE), "X "},
        {"double click", false, twice(u"d"), "Sd 2 "},
        {"double click on a group", false, twice(u"s"), "Ss 2 "},
        {"and again, opening it", false, twice(u"s"), "2 "},
        {"the first row", false, type(VK_HOME), "S "},
        {"Delete on the root", false, type(VK_DELETE), ""},
        {"Enter on the root when locked", true, type(VK_RETURN), "2 "},
        {"last row", false, type(VK_END), "Si "},
        {"Escape without a drag", false, type(VK_ESCAPE), ""},
        {"Space", false, type(VK_SPACE), ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.Editor().SetLocked(each.isLocked);
        hand.Do(each.act);
        EXPECT_EQ(host.Take(), each.heard);
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
    }
    host.Model().Select(nullptr);
    host.Take();
    hand.Do(type(VK_DELETE));
    EXPECT_EQ(host.Take(), "") << "nothing is selected";
}

TEST(GroupEditorWindow, TheRootFoldsTheGroupsAndStaysOpen) {
    EditorHost host;
    Hand hand(host.host.handle);
    const std::function<void(Hand&)> ways[] = {
        [&](Hand& user) { user.Click(host.On(u"", RowPart::Button)); },
        [](Hand& user) { user.Type(VK_LEFT); },
        [](Hand& user) { user.Type(VK_SUBTRACT); },
        [&](Hand& user) { user.DoubleClick(host.On(u"")); },
    };
    for (const auto& way : ways) {
        host.Editor().Clear();
        host.FillSample();
        host.Model().Select(host.Model().First());
        hand.Do(way);
        EXPECT_EQ(modTVW::GetExpandedKeys(host.Model()).Count(), 1);
        EXPECT_TRUE(host.At(u"").IsExpanded());
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
    }
    hand.Do([&](Hand& user) { user.Click(host.On(u"g", RowPart::Button)); });
    EXPECT_TRUE(host.At(u"g").IsExpanded());
    EXPECT_FALSE(host.At(u"s").IsExpanded());
    hand.Do([&](Hand& user) { user.Click(host.On(u"g", RowPart::Button)); });
    EXPECT_FALSE(host.At(u"g").IsExpanded()) << "other nodes just close";
    EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
}

TEST(GroupEditorWindow, TheHostMayLetGoOfItInsideAnyEvent) {
    const struct {
        char event;
        std::function<void(EditorHost&, Hand&)> act;
    } cases[] = {
        {'S', [](EditorHost& host, Hand& user) { user.Click(host.On(u"a")); }},
        {'S', [](EditorHost&, Hand& user) { user.Type(VK_END); }},
        {'X', [](EditorHost&, Hand& user) { user.Type(VK_DELETE); }},
        {'2', [](EditorHost& host, Hand& user) { user.DoubleClick(host.On(u"b")); }},
        {'2', [](EditorHost&, Hand& user) { user.Type(VK_RETURN); }},
        {'D',
         [](EditorHost& host, Hand& user) {
             const POINT to = host.On(u"a", RowPart::LabelTop); // before the control goes
             user.Press(host.On(u"i"));
             user.Move(to);
             user.Release();
         }},
        {'S',
         [](EditorHost& host, Hand& user) { // when the drag selects the entry
             const POINT from = host.On(u"d"), to = host.On(u"a", RowPart::LabelTop);
             user.Press(from);
             user.Move(to);
             user.Release();
         }},
    };
    const auto run = [](const auto& each) {
        const long living = WindowBase::LiveCount();
        EditorHost host;
        host.FillSample();
        host.Model().Select(&host.At(u"b"));
        host.Editor().SetLocked(each.event == '2');
        Hand hand(host.host.handle);
        host.Take();
        host.releaseAt = each.event;
        hand.Do([&](Hand& user) { each.act(host, user); });
        EXPECT_EQ(host.control, nullptr) << host.heard;
        EXPECT_TRUE(Hand::Await([&] { return WindowBase::LiveCount() == living; }));
    };
    for (const auto& each : cases) run(each); // whatever the system makes once
    const int windows = WindowCount(), objects = GdiObjectCount();
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.event << " case " << &each - cases);
        run(each);
        EXPECT_EQ(WindowCount(), windows);
        EXPECT_EQ(GdiObjectCount(), objects);
    }
}

TEST(GroupEditorWindow, TheFrozenDisplayIsWhatWasThere) {
    EditorHost host;
    host.FillSample();
    host.Model().Select(&host.At(u"a"));
    ProcessPendingMessages();
    const std::vector<uint32_t> before = WindowPixels(host.control->Handle());
    host.Editor().LockDisplay();
    host.Editor().LockDisplay();
    EXPECT_FALSE(IsWindowVisible(host.TreeHandle()));
    host.Editor().Clear();
    ProcessPendingMessages();
    EXPECT_EQ(WindowPixels(host.control->Handle()), before);
    SetFocus(nullptr);
    host.Editor().UnlockDisplay();
    EXPECT_TRUE(IsWindowVisible(host.TreeHandle()));
    EXPECT_EQ(GetFocus(), host.TreeHandle());
    ProcessPendingMessages();
    EXPECT_NE(WindowPixels(host.control->Handle()), before);
}

// Every row with its picture and text, the same in a picture of the control without a window.
TEST(GroupEditorWindow, IsDrawnAtEveryDpi) {
    for (const int dpi : {96, 144, 192}) {
        SCOPED_TRACE(dpi);
        EditorHost host;
        host.FillSample();
        host.control->SetAmbient(At(dpi));
        const SIZE size = host.control->PreferredSize(dpi);
        host.control->Create(host.host.handle, {0, 0, size.cx, size.cy});
        ProcessPendingMessages();
        const HWND tree = host.TreeHandle();
        RECT client;
        GetClientRect(tree, &client);
        const std::vector<uint32_t> pixels = WindowPixels(tree);
        const auto colors = [&](const RECT& place) {
            std::set<uint32_t> all;
            for (LONG y = std::max(0L, place.top); y < std::min(place.bottom, client.bottom); ++y)
                for (LONG x = std::max(0L, place.left); x < std::min(place.right, client.right); ++x)
                    all.insert(pixels[static_cast<size_t>(y * client.right + x)]);
            return all.size();
        };
        const int pictureSize = MulDiv(16, dpi, 96);
        for (const Node* node = host.Model().First(); node; node = modTreeviewAPI::NextVisible(*node)) {
            SCOPED_TRACE(ToUtf8(node->Caption()));
            const RECT label = ItemPlace(tree, ItemOf(node), true);
            EXPECT_GE(label.bottom - label.top, pictureSize);
            EXPECT_GE(colors(label), 2u);
            EXPECT_GE(colors({label.left - pictureSize, label.top, label.left - 2, label.bottom}), 6u);
        }
        const MemoryBitmap bitmap(size.cx, size.cy);
        host.control->Draw(bitmap.Context(), {0, 0, size.cx, size.cy});
        EXPECT_GT(Inked(bitmap, {0, 0, size.cx, size.cy}), 9 * pictureSize * pictureSize / 3);
    }
}

TEST(GroupEditorWindow, LeavesNothingBehind) {
    const auto cycle = [] {
        EditorHost host;
        host.FillSample();
        for (const int dpi : {144, 96}) host.control->SetAmbient(At(dpi));
        host.Editor().LockDisplay();
        host.Editor().UnlockDisplay();
        ProcessPendingMessages();
    };
    for (int count = 0; count < 3; ++count) cycle();
    const int windows = WindowCount(), objects = GdiObjectCount();
    for (int count = 0; count < 10; ++count) cycle();
    EXPECT_EQ(WindowCount(), windows);
    EXPECT_EQ(GdiObjectCount(), objects);
}

} // namespace dax::test
