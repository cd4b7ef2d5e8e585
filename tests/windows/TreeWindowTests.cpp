// The tree's window in both controls: it shows what its model holds, whatever is done to it, and in the same place.
#include "data/Schema.h"
#include "support/TestDatabases.h"
#include "tree/win32/TreeStyle.h"
#include "windows/TreeControlHost.h"

#include <random>

namespace dax::test {

namespace {

// All that is done to a tree, by the host or by loading.
struct RandomEdits {
    NodeTree& tree;
    std::mt19937 random;
    int last = 0;

    size_t Pick(size_t count) { return random() % count; }
    Node* Any() {
        if (tree.IsEmpty()) return nullptr;
        Node* node = tree.FirstInCollection();
        for (size_t step = Pick(static_cast<size_t>(tree.Count())); step > 0; --step) node = node->NextInCollection();
        return node;
    }
    void Single() {
        static constexpr InsertPosition positions[] = {InsertPosition::Before, InsertPosition::After,
                                                       InsertPosition::FirstChild, InsertPosition::LastChild};
        Node *const node = Any(), *const other = Any();
        const InsertPosition position = positions[Pick(4)];
        const Text key = ToText(++last);
        switch (node ? Pick(tree.Count() > 30 ? 10 : 14) : 10) {
        case 0:
            return tree.Count() > 30 || Pick(3) == 0 ? tree.Remove(*node) : void();
        case 1:
            return modTVW::IsInBranch(other, node) ? void() : tree.Move(*node, other, position);
        case 2:
            return tree.Select(Pick(8) ? node : nullptr);
        case 3:
            return node->SetExpanded(!node->IsExpanded());
        case 4:
            return node->SetChecked(!node->IsChecked());
        case 5:
            return node->SetCaption(node->Caption() + u"'");
        case 6:
            return node->SetImage(static_cast<int>(Pick(5)));
        case 7:
            return modTVW::SetAllExpanded(tree, Pick(2) == 0);
        case 8:
            return modTVW::ExpandSubtree(node);
        case 9:
            return Pick(10) ? void() : tree.Clear();
        default:
            tree.Add(node, position, key, key, static_cast<int>(Pick(5)));
        }
    }

    void Step() {
        if (Pick(10) > 0) return Single();
        const TreeUpdate update(tree);
        // Sometimes so many that the window is refilled at the end.
        for (size_t count = Pick(4) ? 12 : 250; count > 0; --count) Single();
    }
};

} // namespace

TEST(TreeWindow, MirrorsEveryChangeOfTheModel) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        LessonMapHost host;
        RandomEdits edits{host.Model(), std::mt19937(seed)};
        for (int step = 0; step < 40 && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
            edits.Step();
            host.ExpectMirror();
            if (step % 10 == 7) host.Editor().SetCheckboxes(!host.HasBoxes());
            if (step % 20 == 3) ProcessPendingMessages(); // painting
        }
    }
}

// The same with random keys and clicks: the window leads, the model follows.
TEST(TreeWindow, FollowsWhatTheUserDoes) {
    for (const bool isSingle : {false, true}) {
        SCOPED_TRACE(isSingle);
        EditorHost host;
        host.OpenSample();
        host.Editor().SetSingleExpand(isSingle);
        std::mt19937 random(5);
        static constexpr WORD keys[] = {VK_UP,  VK_DOWN,  VK_LEFT, VK_RIGHT, VK_HOME,     VK_END,
                                        VK_ADD, VK_PRIOR, VK_NEXT, VK_BACK,  VK_SUBTRACT, VK_DOWN};
        for (int step = 0; step < 30 && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(step);
            Node* node = host.Model().First();
            for (auto count = random() % 8; count > 0 && modTreeviewAPI::NextVisible(*node); --count)
                node = modTreeviewAPI::NextVisible(*node);
            const size_t choice = random() % 16;
            if (choice < std::size(keys))
                host.Do(Type(keys[choice]));
            else if (choice % 2 && node->FirstChild() && node->Parent())
                host.Do(Click(node->Key(), RowPart::Button));
            else
                host.Do(choice == 14 ? Double(node->Key()) : Click(node->Key()));
            host.ExpectMirror();
        }
    }
}

// A character is shown whole or not at all.
TEST(TreeWindow, ShowsCaptionsOfAnyLength) {
    LessonMapHost host;
    Node& node = host.Model().Add(nullptr, InsertPosition::LastChild, u"n");
    for (const Text& caption : {Text(), Text(259, u'w'), Text(258, u'w') + u"\U0001F600", Text(1'000'000, u'w'),
                                Text(u"line\r\nbreak & mark\t")}) {
        node.SetCaption(caption);
        host.ExpectMirror();
    }
}

TEST(TreeWindow, TheScrollPositionIsKept) {
    struct Case {
        const char* what;
        std::function<void()> act;
        bool isLast = false; // the selected row is the last in view, else the first row is as before
    };
    // 26 maps or groups A to Z, each with seven entries, the third of them with two below it.
    std::string text;
    for (const char name : std::string("abcdefghijklmnopqrstuvwxyz")) {
        text += (text.empty() ? "" : " | ") + std::string(1, static_cast<char>(name - 'a' + 'A')) + ":";
        for (const std::string tail : {"0", "1", "2(", "2a", "2b )", "3", "4", "5", "6"}) text += " " + (name + tail);
    }
    const auto run = [&](TreeControlHost& host, const std::vector<Case>& cases) {
        for (const Case& each : cases) {
            SCOPED_TRACE(each.what);
            host.Open(text);
            const LRESULT rows = host.Send(TVM_GETVISIBLECOUNT);
            const Node* first = &host.At(each.isLast ? u"m4" : u"l6");
            for (LRESULT row = 1; each.isLast && row < rows; ++row) first = modTreeviewAPI::PreviousVisible(*first);
            host.Model().Select(nullptr); // not every system scrolls to what is selected
            host.Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(TreeControlHost::ItemOf(first)));
            host.Model().Select(&host.At(u"m4"));
            const Text key = first->Key();
            each.act();
            ProcessPendingMessages();
            const Node& last = *host.Model().Selected();
            const LONG height = static_cast<LONG>(host.Send(TVM_GETITEMHEIGHT));
            const LONG place = host.Place(last, false).top / height;
            EXPECT_TRUE(place >= 0 && place < rows) << "the selected row is in view";
            EXPECT_EQ(each.isLast ? place + 1 - rows : host.Place(host.At(key), false).top, 0);
            host.ExpectMirror();
        }
    };
    LessonMapHost pages;
    LessonMapEditor& map = pages.Editor();
    const auto page = [&](const char16_t* sbid) { return pages.lesson->Storyboards()->Item(sbid); };
    const auto added = std::make_shared<ContentStoryboard>(u"new", u"new", u"", u"text");
    run(pages, {{"refresh", [&] { map.Refresh(); }},
                {"add below", [&] { map.AddStoryboard(added); }, true},
                {"remove a page alone", [&] { map.RemoveStoryboard(page(u"m2"), false); }},
                {"move below", [&] { map.MoveCurrent(smtDown); }, true},
                {"drop", [&] { pages.Do(Drag(u"m4", u"m0")); }}});

    EditorHost hierarchy;
    GroupEditor& editor = hierarchy.Editor();
    hierarchy.Open(text);
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, Engine::SQLite);
    for (const Text& id : editor.GetChildLessonIDCollection(u""))
        statements.push_back(u"INSERT INTO velmoraLessons (lessonID) VALUES ('" + id + u"')");
    const TestDatabase database(Engine::SQLite);
    database.Run(statements);
    editor.SetConnectionString(database.ConnectionString());
    ASSERT_TRUE(editor.SaveDatabase());
    const auto load = [&] {
        EXPECT_TRUE(editor.LoadDatabase());
        editor.ExpandAll();
    };
    run(hierarchy, {{"load", load},
                    {"remove above", [&] { editor.RemoveLesson(u"B", true); }},
                    {"move out", [&] { editor.MoveCurrent(gmtOutdent); }}});
}

// Each edit costs a few looks at the rows, and not something for each of them; checking all pages of a lesson costs no
// more than filling the tree.
TEST(TreeWindow, EditTimeIsIndependentOfTreeSize) {
    std::string text = "A:";
    for (int n = 0; n < 20'000; ++n) text += " " + std::to_string(n);
    {
        EditorHost host;
        GroupEditor& editor = host.Editor();
        host.Open(text);
        const double looking = Fastest([&](int) {
            for (const WPARAM on : {FALSE, TRUE}) host.Send(WM_SETREDRAW, on);
        });
        const auto id = [](int turn) { return ToText(2 * turn + 1); };
        const std::pair<const char*, std::function<void(int)>> edits[] = {
            {"select", [&](int turn) { editor.SetCurrentLessonID(id(turn)); }},
            {"update", [&](int turn) { editor.UpdateLesson(id(turn), u"another", u"", ltGroup); }},
            {"add", [&](int turn) { editor.AddLesson(u"new " + ToText(turn), u"title", u"", ltLesson); }},
            {"move", [&](int turn) { editor.MoveCurrent(turn % 2 ? gmtDown : gmtUp); }},
            {"remove", [&](int turn) { editor.RemoveLesson(id(turn), true); }},
        };
        for (const auto& [what, act] : edits) EXPECT_LT(Fastest(act), 6 * looking + 20) << what;
    }
    LessonMapHost host(true);
    const auto lesson = MakeLesson(text);
    const double filling = Fastest([&](int) {
        host.Editor().SetLesson(nullptr);
        host.Editor().SetLesson(lesson);
    });
    const double checking = Fastest(
        [&](int turn) { turn % 2 ? host.Editor().UncheckAllStoryboards() : host.Editor().CheckAllStoryboards(); });
    EXPECT_LT(checking, 6 * filling + 100);
    EXPECT_EQ(host.Editor().CheckedStoryboardCount(), 20'000);
}

TEST(TreeWindow, TheFrozenDisplayIsWhatWasThere) {
    EditorHost host;
    host.OpenSample();
    host.Do(Click(u"a"));
    const std::vector<uint32_t> before = WindowPixels(host.control->Handle());
    host.Editor().LockDisplay();
    EXPECT_FALSE(IsWindowVisible(host.Tree()));
    host.Editor().Clear();
    ProcessPendingMessages();
    EXPECT_EQ(WindowPixels(host.control->Handle()), before);
    SetFocus(nullptr);
    host.Editor().UnlockDisplay();
    EXPECT_EQ(GetFocus(), host.Tree());
    ProcessPendingMessages();
    EXPECT_NE(WindowPixels(host.control->Handle()), before);
}

TEST(TreeWindow, ShowsAHostsOwnPictures) {
    LessonMapHost host;
    host.Open("M: a");
    const auto picture = [&](TextView key) {
        ProcessPendingMessages();
        const RECT label = host.Place(host.At(key));
        return WindowPixels(host.Tree(), {label.left - 16, label.top, label.left - 1, label.bottom});
    };
    const auto ours = picture(u"a");
    const HIMAGELIST list = ImageList_Create(16, 16, ILC_COLOR32, 2, 0);
    const std::pair<const char16_t*, uint32_t> pictures[] = {{u"M", 0x0AC814}, {u"a", 0x0A14C8}};
    for (const auto& [key, color] : pictures) {
        MemoryBitmap square(16, 16);
        std::fill_n(square.Pixels(), 16 * 16, 0xFF000000u | color);
        const HBITMAP bitmap = square.Detach();
        ImageList_Add(list, bitmap, nullptr);
        DeleteObject(bitmap);
    }
    EXPECT_TRUE(host.control->SetPictures(list, PictureKeys({u"_root", u"text"})));
    ImageList_Destroy(list); // the control has a copy
    Ambient large;
    large.dpi = 192;
    host.control->SetAmbient(large);
    for (const auto& [key, color] : pictures) { // as large as the host made them
        const auto pixels = picture(key);
        EXPECT_GT(std::count(pixels.begin(), pixels.end(), color), 100) << ToUtf8(key);
    }
    host.control->SetAmbient({});
    EXPECT_TRUE(host.control->SetPictures(nullptr, {}));
    EXPECT_EQ(picture(u"a"), ours);
}

TEST(TreeWindow, TheSelectionStaysVisibleWithoutTheFocus) {
    LessonMapHost host;
    host.OpenSample();
    host.Editor().SetCurrentSBID(u"b");
    for (const bool hasFocus : {true, false, true}) {
        SetFocus(hasFocus ? host.control->Handle() : host.host.handle);
        EXPECT_EQ(GetFocus() == host.Tree(), hasFocus);
        ProcessPendingMessages();
        const auto pixels = WindowPixels(host.Tree(), host.Place(host.At(u"b")));
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
