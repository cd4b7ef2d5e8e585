// The real tree window: whatever is done to the model or by the user, both show the same.
#include "tree/LMESubclasser.h"
#include "tree/win32/TreeViewWindow.h"

#include "windows/TreeWindowRows.h"
#include "windows/UserInput.h"
#include "windows/WindowCounts.h"

#include <random>

namespace dax::test {

namespace {

constexpr UINT_PTR HostSubclass = 7;

// A tree window with the wiring that its components give it, in a window that hands on its notifications.
struct TreeHost {
    explicit TreeHost(bool hasCheckBoxes = false)
        : window(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE | SS_NOTIFY, 10, 10, 500, 400,
                                 nullptr, nullptr, nullptr, nullptr)) {
        SetWindowSubclass(window, Procedure, HostSubclass, reinterpret_cast<DWORD_PTR>(this));
        view->SetCheckBoxes(hasCheckBoxes);
        view->Create(window);
        view->Fit(400, 300);
        subclasser.RegisterWindows(&tree, view.get());
        subclasser.SetActive(true);
        view->KeyDown.Add([this](int key) { subclasser.OnKeyDown(key); });
    }
    ~TreeHost() {
        subclasser.RegisterWindows(nullptr, nullptr);
        view.reset();
        DestroyWindow(window);
    }
    TreeHost(const TreeHost&) = delete;
    TreeHost& operator=(const TreeHost&) = delete;
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                      DWORD_PTR host) {
        const auto view = reinterpret_cast<TreeHost*>(host)->view;
        if (message == WM_NOTIFY && view) return view->HandleNotification(*reinterpret_cast<const NMHDR*>(lParam));
        return DefSubclassProc(window, message, wParam, lParam);
    }
    HWND Window() const { return view->Handle(); }
    Node& At(TextView key) const { return *tree.Find(key); }

    NodeTree tree;
    std::shared_ptr<TreeViewWindow> view = std::make_shared<TreeViewWindow>(tree);
    LMESubclasser subclasser;
    HWND window;
};

// root(a(b c(d e)) f(g h) i), all open.
void FillSample(NodeTree& tree) {
    const TreeUpdate update(tree);
    const std::pair<const char16_t*, const char16_t*> entries[] = {
        {u"root", u""}, {u"a", u"root"}, {u"b", u"a"}, {u"c", u"a"}, {u"d", u"c"},
        {u"e", u"c"},   {u"f", u"root"}, {u"g", u"f"}, {u"h", u"f"}, {u"i", u"root"}};
    for (const auto& [key, parent] : entries) tree.Add(tree.Find(parent), Place::LastChild, key, key);
    modTVW::SetAllExpanded(tree, true);
}

class RandomEdits {
public:
    RandomEdits(NodeTree& edited, unsigned seed) : tree(edited), random(seed) {}
    void Step() {
        switch (Pick(14)) {
        case 0: {
            const TreeUpdate update(tree);
            // Sometimes so many that the window is filled anew at the end.
            for (size_t count = Pick(4) ? 12 : 250; count > 0; --count)
                Single(tree.Count() > 30 ? 2 + Pick(5) : Pick(7));
            return;
        }
        case 1:
            return modTVW::SetAllExpanded(tree, Pick(2) == 0);
        case 2:
            return Pick(6) ? modTVW::ExpandSubtree(Any()) : tree.Clear();
        default:
            return Single(Pick(9));
        }
    }

private:
    size_t Pick(size_t count) { return random() % count; }
    Node* Any() {
        if (tree.IsEmpty()) return nullptr;
        Node* node = tree.FirstInCollection();
        for (size_t step = Pick(static_cast<size_t>(tree.Count())); step > 0; --step) node = node->NextInCollection();
        return node;
    }
    void Single(size_t action) {
        static constexpr Place places[] = {Place::Before, Place::After, Place::FirstChild, Place::LastChild};
        Node* const node = Any();
        const Place place = places[Pick(4)];
        if (!node || action <= 1) {
            const Text key = ToText(++last);
            tree.Add(node, place, key, key, static_cast<int>(Pick(5)));
            return;
        }
        switch (action) {
        case 2:
            return Pick(3) == 0 || tree.Count() > 30 ? tree.Remove(*node) : void();
        case 3:
            if (Node* const relative = Any(); !modTVW::IsInBranch(relative, node)) tree.Move(*node, relative, place);
            return;
        case 4:
            return tree.Select(Pick(8) ? node : nullptr);
        case 5:
            return node->SetExpanded(!node->IsExpanded());
        case 6:
            return node->SetChecked(!node->IsChecked());
        case 7:
            return node->SetCaption(node->Caption() + u"'");
        default:
            return node->SetImage(static_cast<int>(Pick(5)));
        }
    }

    NodeTree& tree;
    std::mt19937 random;
    int last = 0;
};

} // namespace

TEST(TreeViewWindow, MirrorsEveryChangeOfTheModel) {
    for (const bool hasChecks : {false, true})
        for (unsigned seed = 1; seed <= 2; ++seed) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << (hasChecks ? " with boxes" : ""));
            TreeHost host(hasChecks);
            RandomEdits edits(host.tree, seed);
            for (int step = 0; step < 30 && !testing::Test::HasFailure(); ++step) {
                SCOPED_TRACE(step);
                edits.Step();
                EXPECT_MIRROR(host.Window(), host.tree, hasChecks);
                if (step % 50 == 7) host.view->SetSingleExpand(step % 100 == 7);
                if (step % 20 == 3) ProcessPendingMessages(); // painting
            }
        }
}

TEST(TreeViewWindow, FollowsWhatTheUserDoes) {
    // The same with random keys and clicks: the window leads, the model follows.
    for (const bool isSingle : {false, true}) {
        SCOPED_TRACE(isSingle);
        TreeHost host;
        FillSample(host.tree);
        host.view->SetSingleExpand(isSingle);
        SetFocus(host.Window());
        UserInput input(host.window);
        std::mt19937 random(5);
        static constexpr WORD keys[] = {VK_UP,  VK_DOWN,  VK_LEFT, VK_RIGHT, VK_HOME,     VK_END,
                                        VK_ADD, VK_PRIOR, VK_NEXT, VK_BACK,  VK_SUBTRACT, VK_DOWN};
        for (int step = 0; step < 30 && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(step);
            if (const size_t choice = random() % 16; choice < std::size(keys)) {
                input.Do([&](UserInput& user) { user.Type(keys[choice]); });
            } else {
                Node* node = host.tree.First();
                for (auto count = random() % 8; count > 0 && modTreeviewAPI::NextVisible(*node); --count)
                    node = modTreeviewAPI::NextVisible(*node);
                const RowPart part = choice % 2 && node->FirstChild() ? RowPart::Button : RowPart::Label;
                const POINT point = PointOf(host.Window(), *node, part);
                input.Do([&](UserInput& user) { choice == 14 ? user.DoubleClick(point) : user.Click(point); });
                if (part == RowPart::Label) {
                    EXPECT_EQ(host.tree.Selected(), node);
                }
            }
            EXPECT_MIRROR(host.Window(), host.tree, false);
        }
    }
}

TEST(TreeViewWindow, ShowsCaptionsOfAnyLength) {
    TreeHost host;
    Node& node = host.tree.Add(nullptr, Place::LastChild, u"n");
    const Text pair = u"\U0001F600";
    int before = 0;
    for (const size_t length : {0, 1, 5, 100, 258, 259, 260, 5000, 1'000'000}) {
        SCOPED_TRACE(length);
        node.SetCaption(Text(length, u'w'));
        EXPECT_MIRROR(host.Window(), host.tree, false);
        const RECT label = ItemPlace(host.Window(), ItemOf(&node), true);
        EXPECT_GE(label.right - label.left, before);
        before = label.right - label.left;
        ProcessPendingMessages();
    }
    EXPECT_GT(before, 259 * 4);
    node.SetCaption(Text(258, u'w') + pair); // a character is shown whole or not at all
    EXPECT_EQ(WindowRows(host.Window()), Rows{std::string(258, 'w') + "#0"});
    node.SetCaption(u"line\r\nbreak & mark\t");
    EXPECT_MIRROR(host.Window(), host.tree, false);
}

TEST(TreeViewWindow, BoxesComeAndGoAndTheWindowMayGoBeforeItsModel) {
    ExpectNothingLeft(8, [](int) {
        TreeHost host;
        FillSample(host.tree);
        for (const bool on : {true, false, true, false}) {
            host.view->SetCheckBoxes(on);
            modTreeviewAPI::SetSubtreeCheck(host.At(u"a"), on);
            EXPECT_MIRROR(host.Window(), host.tree, on);
        }
        DestroyWindow(host.Window());
        EXPECT_EQ(host.Window(), nullptr);
        host.tree.Remove(host.At(u"a"));
        host.view->SetCheckBoxes(true);
        EXPECT_EQ(host.view->HitTest({5, 5}).node, nullptr);
        host.view->Create(host.window);
        EXPECT_MIRROR(host.Window(), host.tree, true);
    });
}

} // namespace dax::test
