// Both tree controls' windows under a user's mouse and keyboard.
#include "lessonmap/win32/StoryboardPictures.h"
#include "tree/win32/TreeStyle.h"
#include "windows/TreeControlHost.h"
#include "windows/WindowCounts.h"

#include <gmock/gmock.h>

#include <functional>

namespace dax::test {

namespace {

constexpr const char* Sample = "A: a b c( d e ) f | B: g h | C:";

// The pixels of a rectangle of the window.
std::vector<uint32_t> PixelsIn(HWND window, const RECT& place) {
    RECT client;
    GetClientRect(window, &client);
    const std::vector<uint32_t> pixels = WindowPixels(window);
    std::vector<uint32_t> found;
    for (LONG y = std::max(0L, place.top); y < std::min(place.bottom, client.bottom); ++y)
        for (LONG x = std::max(0L, place.left); x < std::min(place.right, client.right); ++x)
            found.push_back(pixels[static_cast<size_t>(y * client.right + x)]);
    return found;
}

// What a row shows as its picture.
std::vector<uint32_t> PictureOf(const TreeControlHost& host, TextView key, int size) {
    const RECT label = ItemPlace(host.TreeHandle(), ItemOf(&host.At(key)), true);
    return PixelsIn(host.TreeHandle(), {label.left - size, label.top, label.left - 1, label.bottom});
}

} // namespace

TEST(TreeControlWindow, BoxesAreTickedByBranchOneByOneAndByTheTopRow) {
    const struct {
        const char* what;
        Act act;
        const char* checked;
    } cases[] = {
        {"click", Click(u"c", RowPart::Box), "cde"},
        {"click again", Click(u"c", RowPart::Box), ""},
        {"Ctrl+click", Holding({VK_CONTROL}, Click(u"c", RowPart::Box)), "c"},
        {"Space: the branch of the top row, whatever is selected", Type(VK_SPACE), "Aabcdef"},
        {"Space again", Type(VK_SPACE), ""},
        {"double click on the caption", Twice(u"c"), "cde"},
        {"Ctrl and double click on the box: there and back", Holding({VK_CONTROL}, Twice(u"c", RowPart::Box)), "cde"},
        {"double click on the box: there and back", Twice(u"c", RowPart::Box), "cde"},
        {"click on a map", Click(u"B", RowPart::Box), "cdeBgh"},
        {"click on a leaf", Click(u"h", RowPart::Box), "cdeBg"},
    };
    LessonMapHost host(true);
    host.Open(Sample);
    host.Editor().SetCurrentSBID(u"h");
    host.Take();
    UserInput input(host.host.handle);
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        host.At(u"c").SetExpanded(true); // a double click folds it
        const std::string before = host.Checked();
        input.Do([&](UserInput& user) { each.act(host, user); });
        EXPECT_EQ(host.Checked(), each.checked);
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), true);
        const bool isTold = host.Checked() != before || std::string(each.what).find("double") != std::string::npos;
        EXPECT_TRUE(!isTold || UserInput::Await([&] { return host.heard.find("checked") != std::string::npos; }));
        EXPECT_EQ(host.Take().find("before"), std::string::npos);
    }
    EXPECT_EQ(host.Editor().CheckedStoryboardCount(), 4);
    // A burst is told once. The keys come faster than any message in between.
    for (int count = 0; count < 5; ++count) SendMessageW(host.TreeHandle(), WM_KEYDOWN, VK_SPACE, 0x390001);
    EXPECT_EQ(host.Checked(), "AabcdefBg");
    EXPECT_TRUE(UserInput::Await([&] { return !host.heard.empty(); }));
    EXPECT_EQ(host.Take(), "checked");
    // Space is the tree's own key while it has boxes.
    const MSG space{host.TreeHandle(), WM_KEYDOWN, VK_SPACE, 1, 0, {}};
    EXPECT_TRUE(host.control->TranslateKey(space));
    EXPECT_EQ(host.Checked(), "Bg");
    host.Editor().SetCheckboxes(false);
    EXPECT_FALSE(host.control->TranslateKey(space));
}

TEST(TreeControlWindow, KeysAndButtonsMeanWhatTheyShould) {
    struct Case {
        const char* what;
        Act act;
        const char *heard, *heardWhenLocked;
    };
    const Case ofPages[] = {
        {"click", Click(u"b"), "selected b", "selected b"},
        {"down", Type(VK_DOWN), "selected c", "selected c"},
        {"Delete", Type(VK_DELETE), "delete", ""},
        {"right click", RightClick(u"c"), "menu", ""},
        {"Menu key", Type(VK_APPS), "menu", ""},
        {"Shift+F10", Holding({VK_SHIFT}, Type(VK_F10)), "menu", ""},
        {"a map", Type(VK_HOME), "selected -", "selected -"},
        {"Enter", Type(VK_RETURN), "", ""},
        {"to the page before", Click(u"a"), "selected a", "selected a"},
        {"its map is folded", Click(u"A", RowPart::Button), "selected -", "selected -"},
        {"and opened", Click(u"A", RowPart::Button), "", ""},
    };
    const Case ofGroups[] = {
        {"click", Click(u"a"), "selected a", "selected a"},
        {"down", Type(VK_DOWN), "selected b", "selected b"},
        {"Delete", Type(VK_DELETE), "delete", "delete"},
        {"Enter", Type(VK_RETURN), "", "double"},
        {"double click", Twice(u"d"), "selected d, double", "selected d, double"},
        {"the first row", Type(VK_HOME), "selected ", "selected "},
        {"Space", Type(VK_SPACE), "", ""},
    };
    const auto run = [](TreeControlHost& host, const auto& cases) {
        host.OpenSample();
        UserInput input(host.host.handle);
        for (const bool isLocked : {false, true}) {
            host.SetLocked(isLocked);
            for (const Case& each : cases) {
                SCOPED_TRACE(testing::Message() << each.what << (isLocked ? ", locked" : ""));
                input.Do([&](UserInput& user) { each.act(host, user); });
                EXPECT_EQ(host.Take(), isLocked ? each.heardWhenLocked : each.heard);
                EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
            }
        }
        host.SetLocked(false);
        host.Model().Select(nullptr);
        host.Take();
        input.Do([](UserInput& user) { user.Type(VK_DELETE); });
        EXPECT_EQ(host.Take(), "") << "nothing is selected";
    };
    EditorHost groups;
    run(groups, ofGroups);
    LessonMapHost pages;
    run(pages, ofPages);
    EXPECT_EQ(pages.lesson->CurrentSBID(), pages.Editor().CurrentSBID());
}

TEST(TreeControlWindow, CtrlAndShiftOpenAndCloseWholeBranches) {
    LessonMapHost host;
    host.Open("A: a( b( c( d ) ) e( f ) ) | B: g( h )");
    UserInput input(host.host.handle);
    const auto press = [&](std::initializer_list<WORD> keys) {
        const Act act = Holding(keys, Click(u"a", RowPart::Button));
        input.Do([&](UserInput& user) { act(host, user); });
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
        std::string open;
        for (const Text& each : modTVW::GetExpandedKeys(host.Model()))
            if (host.At(each).FirstChild()) open += ToUtf8(each);
        return open;
    };
    EXPECT_EQ(press({VK_CONTROL, VK_SHIFT}), "ABg");
    EXPECT_EQ(press({}), "AaBg");
    EXPECT_EQ(press({}), "ABg");
    EXPECT_EQ(press({VK_CONTROL, VK_SHIFT}), "AabceBg");
    EXPECT_EQ(press({VK_SHIFT}), "AbceBg") << "one node alone";
}

TEST(TreeControlWindow, TheHostMayLetGoOfItUnderTheMouse) {
    const struct {
        bool arePages;
        const char* event;
        Act act;
        bool isLocked = false;
    } cases[] = {
        {false, "selected", Click(u"a")},     {false, "selected", Drag(u"d", u"a")}, // when the drag selects the entry
        {false, "double", Twice(u"b"), true}, {false, "changed", Drag(u"i", u"a")},
        {true, "selected", Click(u"a")},      {true, "selected", Drag(u"f", u"a")},
        {true, "menu", RightClick(u"b")},     {true, "checked", Click(u"c", RowPart::Box)},
        {true, "changed", Drag(u"f", u"a")},
    };
    const long living = WindowBase::LiveCount();
    ExpectNothingLeft(1, [&](int) {
        for (const auto& each : cases) {
            SCOPED_TRACE(testing::Message() << each.event << " case " << &each - cases);
            std::unique_ptr<TreeControlHost> host;
            if (each.arePages)
                host = std::make_unique<LessonMapHost>(true);
            else
                host = std::make_unique<EditorHost>();
            host->OpenSample();
            host->Model().Select(&host->At(u"b"));
            host->SetLocked(each.isLocked);
            UserInput input(host->host.handle);
            host->Take();
            host->releaseAt = each.event;
            input.Do([&](UserInput& user) { each.act(*host, user); });
            EXPECT_TRUE(UserInput::Await([&] { return host->Control() == nullptr; })) << host->heard;
            EXPECT_TRUE(UserInput::Await([&] { return WindowBase::LiveCount() == living; }));
        }
    });
}

TEST(TreeControlWindow, TheFrozenDisplayIsWhatWasThere) {
    EditorHost host;
    host.OpenSample();
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

TEST(TreeControlWindow, ShowsAHostsOwnPictures) {
    ExpectNothingLeft(4, [](int) {
        LessonMapHost host;
        host.Open("M: a");
        const auto ours = PictureOf(host, u"a", 16), oursOfMap = PictureOf(host, u"M", 16);
        const HIMAGELIST list = ImageList_Create(16, 16, ILC_COLOR32, 3, 0);
        constexpr uint32_t custom = 0xC80A14, root = 0x0AC814, text = 0x0A14C8;
        for (const uint32_t color : {custom, root, text}) {
            MemoryBitmap square(16, 16);
            std::fill_n(square.Pixels(), 16 * 16, 0xFF000000u | color);
            const HBITMAP bitmap = square.Detach();
            ImageList_Add(list, bitmap, nullptr);
            DeleteObject(bitmap);
        }
        EXPECT_TRUE(host.control->SetPictures(list, PictureKeys({u"_custom", u"_root", u"text"})));
        ImageList_Destroy(list); // the control has a copy
        const auto expect = [&](TextView key, uint32_t color) {
            ProcessPendingMessages();
            const auto pixels = PictureOf(host, key, 12);
            EXPECT_GT(std::count(pixels.begin(), pixels.end(), color), 100) << ToUtf8(key);
        };
        const auto setType = [&](const Text& type) {
            std::dynamic_pointer_cast<ContentStoryboard>(host.lesson->Storyboards()->Item(u"a"))
                ->SetStoryboardType(type);
        };
        expect(u"M", root);
        expect(u"a", text);
        setType(u"video");
        host.Editor().UpdateSBID(u"a");
        expect(u"a", custom); // a type without a picture
        host.control->SetAmbient(At(144));
        expect(u"M", root); // as large as the host made it
        host.control->SetAmbient(At(96));
        setType(u"text");
        EXPECT_TRUE(host.control->SetPictures(nullptr, {}));
        ProcessPendingMessages();
        EXPECT_EQ(PictureOf(host, u"a", 16), ours);
        EXPECT_EQ(PictureOf(host, u"M", 16), oursOfMap);
    });
}

TEST(TreeControlWindow, TheSelectionStaysVisibleWithoutTheFocus) {
    LessonMapHost host;
    host.Open(Sample);
    host.Editor().SetCurrentSBID(u"b");
    for (const bool hasFocus : {true, false, true}) {
        SetFocus(hasFocus ? host.control->Handle() : host.host.handle);
        EXPECT_EQ(GetFocus() == host.TreeHandle(), hasFocus);
        ProcessPendingMessages();
        const auto pixels = PixelsIn(host.TreeHandle(), ItemPlace(host.TreeHandle(), ItemOf(&host.At(u"b")), true));
        for (const int color : {COLOR_HIGHLIGHT, COLOR_3DDKSHADOW}) {
            const COLORREF bgr = GetSysColor(color);
            const auto rgb = static_cast<uint32_t>(GetRValue(bgr) << 16 | GetGValue(bgr) << 8 | GetBValue(bgr));
            const auto count = std::count(pixels.begin(), pixels.end(), rgb);
            EXPECT_TRUE((color == COLOR_HIGHLIGHT) == hasFocus ? count > 200 : count == 0) << count;
        }
    }
    constexpr INT elements[] = {COLOR_3DHIGHLIGHT, COLOR_3DDKSHADOW};
    const COLORREF former[] = {GetSysColor(elements[0]), GetSysColor(elements[1])};
    const COLORREF alike[] = {RGB(0xC0, 0xC0, 0xC0), RGB(0xFF, 0xFF, 0xFF)}; // as in high contrast
    ASSERT_TRUE(SetSysColors(2, elements, alike));
    EXPECT_EQ(ColorsWithoutFocus().text, GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(ColorsWithoutFocus().background, GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_TRUE(SetSysColors(2, elements, former));
}

} // namespace dax::test
