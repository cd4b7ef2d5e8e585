#include "lessonmap/EditorFixture.h"

#include "base/Error.h"
#include "lessonmap/NodeMapTree.h"

#include <functional>
#include <limits>

namespace dax {
namespace {

using test::EditorFixture;
using test::MakeLesson;
using test::Print;

// What content objects do at one of the calls they get, besides returning.
struct FaultInjector {
    int countdown = -1; // calls until it happens; negative: never
    bool isLasting = false;
    std::function<void()> act;
    int done = 0;
    void Tick() {
        if (countdown < 0 || countdown-- > 0) return;
        if (isLasting) countdown = 0;
        ++done;
        act();
    }
};
FaultInjector faults;

struct OddPage : ContentStoryboard {
    explicit OddPage(const Text& sbid) : ContentStoryboard(sbid, u"T", u"I", u"text") {}
    Text SBID() const override { return faults.Tick(), ContentStoryboard::SBID(); }
    Text Title() const override { return faults.Tick(), ContentStoryboard::Title(); }
    Text StoryboardType() const override { return faults.Tick(), ContentStoryboard::StoryboardType(); }
};

struct OddMap : ContentMap {
    using ContentMap::ContentMap;
    Text Name() const override { return faults.Tick(), ContentMap::Name(); }
    void SetName(const Text& name) override { faults.Tick(), ContentMap::SetName(name); }
    void FillTree(MapTree& nodes, MapTree::NodeRef root) override {
        faults.Tick();
        onFill ? onFill(nodes, root) : ContentMap::FillTree(nodes, root);
    }
    void ReadLayout(const MapTree& nodes, MapTree::NodeRef root) override {
        if (keepsLayout) throw Error(5, u"failed");
        ContentMap::ReadLayout(nodes, root);
        faults.Tick();
    }
    bool keepsLayout = false;
    std::function<void(MapTree&, MapTree::NodeRef)> onFill;
};

struct OddMaps : ContentMaps {
    int32_t Count() const override { return faults.Tick(), count.value_or(ContentMaps::Count()); }
    std::shared_ptr<StoryboardMap> Item(int32_t index) const override {
        return faults.Tick(), onItem ? onItem(index) : ContentMaps::Item(index);
    }
    std::shared_ptr<StoryboardMap> DefaultMap() const override {
        return faults.Tick(), defaultMap.value_or(ContentMaps::DefaultMap());
    }
    std::optional<int32_t> count;
    std::function<std::shared_ptr<StoryboardMap>(int32_t)> onItem;
    std::optional<std::shared_ptr<StoryboardMap>> defaultMap;
};

struct OddPages : ContentStoryboards {
    std::shared_ptr<Storyboard> Item(const Text& sbid) const override {
        return faults.Tick(), ContentStoryboards::Item(sbid);
    }
    void Add(const std::shared_ptr<Storyboard>& page) override { faults.Tick(), ContentStoryboards::Add(page); }
    void Remove(const Text& sbid) override { faults.Tick(), ContentStoryboards::Remove(sbid); }
    std::vector<std::shared_ptr<Storyboard>> All() const override {
        auto all = (faults.Tick(), ContentStoryboards::All());
        all.push_back(nullptr);
        return all;
    }
};

struct OddLesson : Lesson {
    OddLesson() {
        for (const char16_t* sbid : {u"a", u"b", u"c", u"d"}) pages->Add(std::make_shared<OddPage>(sbid));
        first->SetLayout({{u"a", 1}, {u"b", 2}, {u"c", 1}});
        second->SetLayout({{u"d", 1}});
        maps->Add(first);
        maps->Add(second);
    }
    std::shared_ptr<StoryboardMaps> Maps() const override { return faults.Tick(), maps; }
    std::shared_ptr<dax::Storyboards> Storyboards() const override { return faults.Tick(), pages; }
    Text CurrentSBID() const override { return faults.Tick(), current; }
    void SetCurrentSBID(const Text& sbid) override { faults.Tick(), current = sbid; }
    std::shared_ptr<OddMap> first = std::make_shared<OddMap>(u"A"), second = std::make_shared<OddMap>(u"B");
    std::shared_ptr<OddMaps> maps = std::make_shared<OddMaps>();
    std::shared_ptr<OddPages> pages = std::make_shared<OddPages>();
    Text current;
};

class HostileLesson : public EditorFixture {
protected:
    ~HostileLesson() override { faults = {}; }

    // Everything is created again: editor, window, lesson.
    void Begin() {
        faults.countdown = -1;
        MakeEditor();
        AddFaults(editor->AfterSelectionChange);
        AddFaults(editor->MapChanged);
        AddFaults(editor->DeleteRequest);
        AddFaults(editor->ContextMenuRequest);
        AddFaults(editor->CheckboxesChanged);
        AddFaults(editor->PropertyChanged);
        AddFaults(editor->ItemChecked);
        AddFaults(editor->Error);
        odd = std::make_shared<OddLesson>();
        other = std::make_shared<OddLesson>();
        editor->SetLesson(odd);
        editor->SetCurrentSBID(u"c");
        tree->Find(u"b")->SetChecked(true);
        received.clear();
    }
    // Afterwards the editor must work as before.
    void ExpectUsable() {
        faults.countdown = -1;
        if (!editor) return;
        ASSERT_FALSE(editor->IsDragging() && (editor->Locked() || !editor->AllowDragDrop()));
        lesson = MakeLesson("A: a( b ) | B:");
        editor->SetLesson(nullptr);
        editor->SetLocked(false);
        editor->SetShowDefaultMapOnly(false);
        editor->SetLesson(lesson);
        editor->AddStoryboard(NewPage(u"n"));
        ASSERT_EQ(Shown(), "A: n a( b ) | B:");
        received.clear();
        editor->SetCurrentSBID(u"b");
        tree->Select(tree->Find(u"a"));
        ASSERT_EQ(received, "selected b, selected a");
    }

    std::shared_ptr<OddLesson> odd, other;
    int added = 0;

private:
    template <typename TheEvent>
    void AddFaults(TheEvent& event) {
        event.AddPermanent([this](const auto&...) { faults.Tick(); });
        event.AddPermanent([this](const auto&...) { ASSERT_TRUE(editor) << "an event of a released editor"; });
    }
};

// Each operation, with an action at each of the calls that content objects and listeners get during it.
TEST_F(HostileLesson, AnyCallMayDoAnything) {
    const auto on = [this](const char16_t* key, void (*act)(NodeTree&, Node&)) {
        return [=, this] {
            if (Node* node = key ? tree->Find(key) : tree->First()) act(*tree, *node);
        };
    };
    const auto fail = [] { throw Error(5, u"failed"); };
    const auto select = [this] { editor->SetCurrentSBID(editor->CurrentSBID() == u"a" ? u"c" : u"a"); };
    const struct {
        const char* name;
        std::function<void()> act;
        bool isLasting = false;
    } actions[] = {
        {"fail", fail},
        {"fail always", fail, true},
        {"begin without a lesson", {}},
        {"clear", [this] { tree->Clear(); }},
        {"remove", on(u"a", [](NodeTree& nodes, Node& node) { nodes.Remove(node); })},
        {"remove map", on(nullptr, [](NodeTree& nodes, Node& node) { nodes.Remove(node); })},
        {"add beside", on(nullptr, [](NodeTree& nodes, Node& node) { nodes.Add(&node, InsertPosition::Before, u""); })},
        {"add below",
         on(nullptr, [](NodeTree& nodes, Node& node) { nodes.Add(&node, InsertPosition::FirstChild, u""); })},
        {"move", on(u"c", [](NodeTree& nodes, Node& node) { nodes.Move(node, nullptr, InsertPosition::LastChild); })},
        {"select", select},
        {"select always", select, true},
        {"no lesson", [this] { editor->SetLesson(nullptr); }},
        {"other lesson", [this] { editor->SetLesson(MakeLesson("A: c | B: a")); }},
        {"refresh", [this] { editor->Refresh(); }},
        {"add", [this] { editor->AddStoryboard(NewPage(u"m" + ToText(++added))); }},
        {"remove page", [this] { editor->RemoveStoryboard(NewPage(u"a"), false); }},
        {"move page", [this] { editor->MoveCurrent(editor->CanMoveCurrent(smtUp) ? smtUp : smtDown); }},
        {"collapse", [this] { editor->CollapseAll(); }},
        {"checked", [this] { editor->GetCheckedLesson(); }},
        {"rename", [this] { odd->first->ContentMap::SetName(u"R" + ToText(++added)); }},
        {"swap maps", [this] { odd->maps->SetDefaultMap(odd->second); }},
        {"images", [this] { editor->SetImageList(PictureKeys({u"_custom"})); }},
        {"lock", [this] { editor->SetLocked(true); }},
        {"forbid drags", [this] { editor->SetAllowDragDrop(false); }},
        {"release", [this] { editor.reset(), window.reset(); }},
    };
    // The editor may be released under way: only its own reference keeps it.
    const auto page = [](const Text& sbid) { return std::make_shared<OddPage>(sbid); };
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"Lesson", [this] { editor->SetLesson(other); }},
        {"Refresh", [this] { editor->Refresh(); }},
        {"AddStoryboard", [&] { editor->AddStoryboard(page(u"n")); }},
        {"RemoveStoryboard", [&] { editor->RemoveStoryboard(page(u"c"), false); }},
        {"Remove branch", [&] { editor->RemoveStoryboard(page(u"a"), true); }},
        {"MoveCurrent", [this] { editor->MoveCurrent(smtNextMap); }},
        {"CurrentSBID", [this] { editor->SetCurrentSBID(u"b"); }},
        {"select", [this] { editor->tvwObject()->Select(tree->Find(u"d")); }},
        {"CollapseAll", [this] { editor->CollapseAll(); }},
        {"CheckedStoryboards", [this] { editor->CheckedStoryboards(); }},
        {"GetCheckedLesson", [this] { editor->GetCheckedLesson(); }},
        {"OrphanedStoryboards", [this] { editor->OrphanedStoryboards(); }},
        {"FindNextSBID", [this] { editor->FindNextSBID(u"nothing", ftTitle, false, true); }},
        {"UpdateSBID", [this] { editor->UpdateSBID(u"c"); }},
        {"ShowDefaultMapOnly", [this] { editor->SetShowDefaultMapOnly(true); }},
        {"Locked", [this] { editor->SetLocked(true); }},
        {"Checkboxes", [this] { editor->SetCheckboxes(true); }},
        {"delete key", [this] { editor->OnKeyDown(46); }},
        {"right button", [this] { editor->OnMouseUp(MouseButton::Right); }},
        {"box",
         [this] {
             editor->OnClick({34, 30}, false), editor->OnTimer(TreeTimer::Checkstate);
         }},
        {"a failure", [&] { editor->ReportFailures(u"Test", fail); }},
        {"begin of a drag", [this] { DragTo(u"d", u"a"); }},
        {"drag",
         [this] {
             DragTo(u"d", u"a");
             if (editor) editor->OnMouseUp(MouseButton::Left);
         }},
    };
    int faultCount = 0;
    for (const auto& [operation, run] : operations) {
        for (const auto& [action, act, isLasting] : actions) {
            for (int call = 0; call == 0 || faults.done > 0; ++call) {
                SCOPED_TRACE(std::string(operation) + ": " + action + " at call " + std::to_string(call));
                Begin();
                if (!act) editor->SetLesson(nullptr);
                faults = {act ? call : -1, isLasting, act};
                try {
                    run();
                } catch (const Error&) {
                }
                ASSERT_NO_FATAL_FAILURE(ExpectUsable());
                ASSERT_LT(call, 200);
                ++faultCount;
            }
        }
    }
    EXPECT_GT(faultCount, 3000);
}

TEST_F(HostileLesson, OddMapsAreShownOrRefused) {
    using Fill = std::function<void(MapTree&, MapTree::NodeRef)>;
    const auto fill = [this](std::shared_ptr<OddMap> OddLesson::*map, const Fill& how) {
        return [=, this] { ((*odd).*map)->onFill = how; };
    };
    const auto with = [](const std::vector<Text>& keys) {
        return [keys](MapTree& nodes, MapTree::NodeRef root) {
            for (const Text& key : keys) nodes.AddChild(root, key, key);
        };
    };
    const auto add = [this](InsertPosition position, const Text& key) {
        return [=, this](MapTree& nodes, MapTree::NodeRef) {
            tree->Add(tree->First(), position, key);
            EXPECT_TRUE(nodes.Contains(key));
        };
    };
    const auto rename = [this](auto&, auto) { odd->second->ContentMap::SetName(u"A"); };
    const auto firstMap = &OddLesson::first, secondMap = &OddLesson::second;
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* shown; // null: refused, and nothing is shown
        bool isRepaired = false;
    } cases[] = {
        {"the same page twice", fill(firstMap, with({u"a", u"a"})), nullptr},
        {"no key", fill(secondMap, with({u"", u"d"})), "A: a( b ) c | B:  d"},
        {"the key of a map", fill(secondMap, with({u"A"})), nullptr},
        {"the other map's root", fill(secondMap, add(InsertPosition::FirstChild, u"d")), "A: d a( b ) c | B:"},
        {"a root of its own", fill(secondMap, add(InsertPosition::After, u"x")), nullptr},
        {"a root before the maps", fill(firstMap, add(InsertPosition::Before, u"x")), nullptr},
        {"renamed to the other's name", fill(secondMap, rename), "A: a( b ) c | A_1:", true},
        {"renamed to a page", [&] { odd->second->ContentMap::SetName(u"a"); }, "A: a( b ) c | a_1: d", true},
        {"no maps", [&] { odd->maps = nullptr; }, nullptr},
        {"no first map", [&] { odd->maps->onItem = [](int32_t) { return nullptr; }; }, nullptr},
        {"fewer than none", [&] { odd->maps->count = -5; }, "A: a( b ) c"},
        {"maps without end", [&] { odd->maps->count = std::numeric_limits<int32_t>::max(); }, nullptr},
        {"one map again and again",
         [&] {
             odd->maps->count = 1000;
             odd->maps->onItem = [this](int32_t) { return odd->first; };
         },
         "A: a( b ) c"},
        {"a default map of elsewhere", [&] { odd->maps->defaultMap = std::make_shared<OddMap>(u"S"); },
         "S: | A: a( b ) c | B: d"},
        {"no default map, whatever is set", [&] { odd->maps->defaultMap = nullptr; }, "A: a( b ) c | B: d"},
    };
    for (const auto& [name, arrange, shown, isRepaired] : cases) {
        SCOPED_TRACE(name);
        Begin();
        editor->SetLesson(nullptr);
        odd = other;
        arrange();
        if (shown) {
            ASSERT_NO_THROW(editor->SetLesson(odd));
            EXPECT_EQ(received.find("changed 0") != std::string::npos, isRepaired);
            editor->Refresh();
            EXPECT_EQ(Print(*tree), shown);
        } else {
            EXPECT_THROW(editor->SetLesson(odd), Error);
            EXPECT_TRUE(tree->IsEmpty());
            EXPECT_THROW(editor->AddStoryboard(NewPage(u"n")), Error);
        }
        ExpectUsable();
    }
}

// What a hidden map does with the tree of its own in which it is edited.
TEST_F(HostileLesson, HiddenMapsLeaveTheirRootAlone) {
    void (*const changes[])(NodeTree&) = {
        [](NodeTree& nodes) { nodes.Add(nullptr, InsertPosition::After, u"x"); },
        [](NodeTree& nodes) { nodes.Add(nullptr, InsertPosition::Before, u"x"); },
        [](NodeTree& nodes) {
            nodes.Move(*nodes.First(), &nodes.Add(nullptr, InsertPosition::After, u"x"), InsertPosition::FirstChild);
        },
        [](NodeTree& nodes) { nodes.First()->SetKey(u"x"); },
    };
    for (const auto act : changes) {
        Begin();
        editor->SetShowDefaultMapOnly(true);
        odd->second->onFill = [act](MapTree& nodes, auto) { act(dynamic_cast<NodeMapTree&>(nodes).Nodes()); };
        EXPECT_THROW(editor->RemoveStoryboard(odd->pages->Item(u"d"), false), Error);
        EXPECT_EQ(odd->pages->Count(), 4);
        EXPECT_EQ(Print("B", odd->second->Layout()), "B: d");
        ExpectUsable();
    }
}

// A drop during an operation is refused; the target is selected all the same, and reported when no edit is in
// way, else at its end. A drag does not begin there.
TEST_F(HostileLesson, DropsDuringAnOperationAreRefused) {
    const std::string refused =
        "error The lesson map is being changed; this call is possible only after that has finished. Drop, ";
    const struct {
        std::function<void()> operation;
        int call; // the one that the drop comes in
        std::string events;
        const char* shown;
    } cases[] = {
        {[&] { editor->UpdateSBID(u"c"); }, 0, "changed 2, selected a", "A: c a( b ) | B: d"},
        {[&] { editor->CheckedStoryboards(); }, 0, refused + "selected a", "A: a( b ) c | B: d"},
        {[&] { editor->RemoveStoryboard(odd->pages->Item(u"d"), false); }, 2, refused + "changed 3, selected a",
         "A: a( b ) c | B:"},
    };
    for (const auto& [operation, call, events, shown] : cases) {
        Begin();
        DragTo(u"c", u"a");
        Take();
        faults = {call, false, [this] { editor->OnMouseUp(MouseButton::Left); }};
        operation();
        EXPECT_EQ(Print(*tree), shown);
        EXPECT_EQ(Take(), events);
        EXPECT_EQ(odd->current, u"a");
        ExpectUsable();
    }
    Begin();
    faults = {0, false, [this] { DragTo(u"c", u"a"); }};
    editor->CheckedStoryboards();
    EXPECT_FALSE(editor->IsDragging());
}

TEST_F(HostileLesson, OneMapThatFailsDoesNotKeepTheOthersFromTheirLayout) {
    Begin();
    odd->first->keepsLayout = true;
    EXPECT_THROW(editor->MoveCurrent(smtNextMap), Error);
    EXPECT_EQ(Print("B", odd->second->Layout()), "B: c d");
    EXPECT_EQ(Print(*tree), "A: a( b ) c | B: d") << "what the lesson holds, each page once";
    EXPECT_EQ(editor->CurrentSBID(), u"c");
    // A drop has no caller who could receive an error.
    DragTo(u"c", u"d");
    editor->OnMouseUp(MouseButton::Left);
    EXPECT_EQ(Take(), "error failed Drop");
    EXPECT_EQ(Print(*tree), "A: a( b ) c | B: d");
    EXPECT_EQ(editor->CurrentSBID(), u"c");
    ExpectUsable();
}

// A host that answers every move by another one gets no more events at some depth.
TEST_F(HostileLesson, EndlessMovesInEventsAreLimited) {
    Begin();
    editor->SetCurrentSBID(u"a");
    const Subscription endless =
        editor->MapChanged.Add([this](auto) { editor->MoveCurrent(editor->CanMoveCurrent(smtUp) ? smtUp : smtDown); });
    editor->MoveCurrent(smtDown);
    EXPECT_EQ(tree->Count(), 6);
    EXPECT_EQ(editor->CurrentSBID(), u"a");
}

} // namespace
} // namespace dax
