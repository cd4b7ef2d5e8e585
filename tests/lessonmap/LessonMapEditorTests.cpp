#include "lessonmap/EditorFixture.h"
#include "support/PropertyMap.h"

#include "base/Error.h"

#include <functional>
#include <map>

namespace dax {
namespace {

using test::EditorFixture;
using test::MakeLesson;
using test::Print;
using Act = std::function<void()>;

class LessonMapEditorTest : public EditorFixture {};

TEST_F(LessonMapEditorTest, TheCurrentStoryboard) {
    const auto show = [this](const char* maps, const Text& record) {
        return [=, this] {
            lesson = MakeLesson(maps);
            lesson->SetCurrentSBID(record);
            editor->SetLesson(lesson);
        };
    };
    const auto select = [this](const Text& sbid) { return [=, this] { editor->SetCurrentSBID(sbid); }; };
    const struct {
        Act act;
        const char* events;
        Text selected, record;
    } steps[] = {
        {show("A: a b | B: c", u"c"), "selected c", u"c", u"c"},
        {show("A: c | A: d", u""), "changed 0, selected c", u"c", u"c"}, // repaired, and without a record
        {show("A: x", u"gone"), "selected -", u"", u"gone"}, // the record of a page that no node shows is kept
        {select(u""), "", u"", u""},                         // until the host removes it
        {show("A: a( b ) | B: c", u""), "selected -", u"", u""},
        {select(u"b"), "selected b", u"b", u"b"},
        {select(u"unknown"), "", u"b", u"b"},
        {select(u"A"), "", u"b", u"b"},
        {select(u"b"), "", u"b", u"b"},
        {[&] { editor->SetCurrentStoryboard(Page(u"c")); }, "selected c", u"c", u"c"},
        {[&] { editor->SetShowDefaultMapOnly(true); }, "", u"", u"c"},
        {[&] { editor->SetShowDefaultMapOnly(false); }, "", u"c", u"c"}, // shown again it is current again
        {[&] { tree->Select(&At(u"B")); }, "selected -", u"B", u""},     // as the user does
        {select(u"c"), "selected c", u"c", u"c"},
        {[&] { editor->SetCurrentStoryboard(nullptr); }, "selected -", u"", u""},
        {select(u"b"), "selected b", u"b", u"b"},
        {[&] { editor->CollapseAll(); }, "selected -", u"A", u""}, // it moved up to the map, and was reported once
        {[&] { editor->SetLesson(nullptr); }, "", u"", u""},
    };
    for (const auto& [act, events, selected, record] : steps) {
        SCOPED_TRACE(ToUtf8(selected) + " after " + events);
        act();
        EXPECT_EQ(Take(), events);
        EXPECT_EQ(modTVW::GetNodeKey(tree->Selected()), selected);
        EXPECT_EQ(lesson->CurrentSBID(), record);
        const auto page = editor->CurrentStoryboard();
        EXPECT_EQ(page ? page->SBID() : u"", editor->CurrentSBID());
    }
    EXPECT_TRUE(tree->IsEmpty());
    EXPECT_FALSE(editor->Lesson() || editor->GetCheckedLesson());
}

TEST_F(LessonMapEditorTest, AddsAndRemovesInShownAndHiddenMaps) {
    const char* pages = "A: a( b ) d | B: c";
    const struct {
        bool isDefaultOnly;
        const char* before;
        Text selected;
        std::string action; // "missing": the lesson does not have the page any more, a map lists it
        Text sbid;
        const char* after; // with all maps shown
        const char* events;
        int left; // storyboards of the lesson
    } cases[] = {
        {false, pages, u"b", "add", u"n", "A: a( b n ) d | B: c", "changed 1, selected n", 5},
        {false, pages, u"b", "add", u"c", pages, "selected c", 4}, // shown already
        {false, pages, u"c", "add missing", u"d", pages, "changed 1, selected d", 4},
        {false, pages, u"b", "remove branch", u"a", "A: d | B: c", "changed 3, selected d", 2},
        {false, pages, u"c", "remove", u"c", "A: a( b ) d | B:", "changed 3, selected -", 3},
        {true, "A: a | B: b( c d ) e", u"", "remove", u"b", "A: a | B: c d e", "changed 3", 4},
        {true, "A: a | B: b( c d ) e", u"", "remove branch", u"b", "A: a | B: e", "changed 3", 2},
        {true, "A: a b( x ) | B: b( c )", u"", "remove branch", u"b", "A: a | B: c", "changed 3", 2},
        {true, "A: a | B: e | A: b( a )", u"", "remove branch", u"b", "A: a | B: e | A_1:", "changed 3", 2},
        {true, "A: a | B: b( c ) | C: d", u"", "add", u"b", "A: b a | B: c | C: d", "changed 1, selected b", 4},
        {true, "A: a | B: a( c )", u"", "add", u"a", "A: a | B: c", "selected a", 2}, // shown already
        {true, "A: a | B: b( c )", u"", "add missing", u"b", "A: b a | B: c", "changed 1, selected b", 3},
        {true, "A: a | B: b( c )", u"", "remove missing", u"b", "A: a | B: c", "changed 3", 2},
        {true, "A: a | B: b( c )", u"", "remove", u"x", "A: a | B: b( c )", "", 3},
    };
    for (const auto& [isDefaultOnly, before, selected, action, sbid, after, events, left] : cases) {
        SCOPED_TRACE(action + " " + ToUtf8(sbid) + " in " + before);
        editor->SetShowDefaultMapOnly(isDefaultOnly);
        Open(before);
        Select(selected);
        const auto known = Page(sbid), page = std::static_pointer_cast<Storyboard>(NewPage(sbid));
        if (action.ends_with("missing")) lesson->Storyboards()->Remove(sbid);
        if (action.starts_with("add")) {
            editor->AddStoryboard(page);
            EXPECT_EQ(lesson->CurrentSBID(), sbid);
            const bool isNew = !known || action == "add missing"; // else the lesson's own is taken
            EXPECT_EQ(Page(sbid), isNew ? page : known);
            EXPECT_EQ(At(sbid).Caption(), isNew ? u"New " + sbid : u"Title of " + sbid);
            EXPECT_EQ(At(sbid).Image(), editor->ImageList().IndexOfType(isNew ? u"video" : u"text"));
        } else {
            editor->RemoveStoryboard(page, action == "remove branch");
        }
        EXPECT_EQ(Take(), events);
        editor->SetShowDefaultMapOnly(false);
        editor->OrphanedStoryboards(); // writes the layouts back
        EXPECT_EQ(Shown(), after);
        EXPECT_EQ(lesson->Storyboards()->Count(), left);
    }
    Open(pages);
    for (const auto& refused : {NewPage(u""), NewPage(u"B")}) EXPECT_THROW(editor->AddStoryboard(refused), Error);
    EXPECT_EQ(lesson->Storyboards()->Count(), 4);
    editor->AddStoryboard(nullptr);
    // A map keeps its name beside an orphan of that name, which is no part of the tree.
    lesson->Storyboards()->Add(NewPage(u"A"));
    editor->Refresh();
    EXPECT_EQ(editor->FindNextSBID(u"New A", ftTitle, true, true), u"");
    editor->RemoveStoryboard(Page(u"A"), false);
    EXPECT_EQ(Page(u"A"), nullptr);
    EXPECT_EQ(Take(), "changed 3");
    EXPECT_EQ(Shown(), pages);
}

TEST_F(LessonMapEditorTest, MovesUpdatesAndRefreshes) {
    Open("A: a( b ) c | B: d");
    Select(u"c");
    window->TakeCalls();
    editor->MoveCurrent(smtNextMap);
    editor->ExpandAll();
    EXPECT_EQ(window->TakeCalls(), "ensure:c ensure:c");
    EXPECT_EQ(Take(), "changed 2") << "the selection did not change";
    std::static_pointer_cast<ContentStoryboard>(Page(u"b"))->SetTitle(u"Other");
    editor->UpdateSBID(u"b");
    EXPECT_EQ(At(u"b").Caption(), u"Other");
    editor->UpdateStoryboard(NewPage(u"b"));
    EXPECT_EQ(At(u"b").Caption(), u"New b");
    EXPECT_EQ(At(u"b").Image(), editor->ImageList().IndexOfType(u"video"));
    editor->UpdateStoryboard(NewPage(u"A"));
    EXPECT_EQ(At(u"A").Caption(), u"A (2)");
    EXPECT_EQ(editor->GetChildStoryboardCount(u"A"), 2);
    editor->SetCaptionStyle(csIdentifier);
    EXPECT_EQ(At(u"b").Caption(), u"ID-b");
    editor->SetImageList(PictureKeys({u"text"}));
    EXPECT_EQ(At(u"b").Image() * 10 + At(u"A").Image(), 10);
    std::static_pointer_cast<ContentMap>(lesson->Maps()->Item(1))->SetLayout({{u"d", 1}});
    editor->Refresh();
    EXPECT_EQ(Print(*tree), "A: a( b ) | B: d");
    editor->SetShowDefaultMapOnly(true);
    EXPECT_EQ(Print(*tree), "A: a( b )");
    EXPECT_EQ(editor->OrphanedStoryboards().size(), 2u) << "c, and d in the map that is not shown";
    EXPECT_EQ(Take(), "");
}

TEST_F(LessonMapEditorTest, ChecksGoWithTheBoxesAndTheLesson) {
    Open("A: a( b( c ) d ) e | B: f | C: g");
    editor->SetCheckboxes(true);
    for (const char16_t* key : {u"a", u"c", u"e", u"f", u"A"}) At(key).SetChecked(true);
    EXPECT_EQ(editor->CheckedStoryboardCount(), 4) << "a map is no storyboard";
    EXPECT_EQ(Print(*editor->GetCheckedLesson()), "A: a( c ) e | B: f");
    EXPECT_EQ(editor->GetCheckedLesson()->Maps()->DefaultMap()->Name(), u"A");
    editor->UncheckAllStoryboards();
    EXPECT_EQ(Print(*editor->GetCheckedLesson()), "A:");
    editor->CheckAllStoryboards();
    editor->SetCheckboxes(false);
    EXPECT_EQ(editor->CheckedStoryboardCount(), 0);
    editor->CheckAllStoryboards();
    editor->SetLesson(MakeLesson("A: a"));
    EXPECT_EQ(editor->CheckedStoryboardCount(), 0) << "another lesson";
    EXPECT_EQ(Take(), "boxes, boxes, selected -") << "no check event for what the program did";
    // What is collected is that of the tree, which the lesson's maps follow, also when the host has moved a node
    // itself.
    const Act collect[] = {[&] { editor->CheckedStoryboards(); }, [&] { editor->GetCheckedLesson(); },
                           [&] { editor->OrphanedStoryboards(); }};
    for (const Act& act : collect) {
        Open("A: a b");
        tree->Move(At(u"a"), &At(u"b"), InsertPosition::After);
        act();
        EXPECT_EQ(Shown(), "A: b a");
    }
}

TEST_F(LessonMapEditorTest, KeysMouseAndDrops) {
    const auto key = [this](int code) { return [this, code] { editor->OnKeyDown(code); }; };
    const auto release = [this](MouseButton button) { return [this, button] { editor->OnMouseUp(button); }; };
    const auto press = [this](MouseButton button) { return [this, button] { editor->OnMouseDown(button); }; };
    const auto drop = [this](const Text& from, const Text& to) {
        DragTo(from, to);
        editor->OnMouseUp(MouseButton::Left);
    };
    const auto inADrag = [this](const Act& act) {
        return [=, this] {
            DragTo(u"d", u"a");
            act();
            if (editor->IsDragging()) Record("dragging");
            const bool wasDragging = editor->IsDragging();
            EXPECT_EQ(editor->OnKeyPress(27), wasDragging);
            tree->Select(&At(u"e"));
        };
    };
    const auto pressAndMove = [this](MouseButton pressed, MouseButton released) {
        return [=, this] {
            window->MoveTo(window->At(At(u"d")));
            editor->OnMouseDown(pressed);
            editor->OnMouseUp(released);
            window->MoveTo(window->At(At(u"b")));
            editor->OnMouseMove(pressed);
            editor->OnMouseMove(MouseButton::Left);
        };
    };
    const struct {
        const char* what;
        Act act;
        const char *received, *receivedWhenLocked;
    } cases[] = {
        {"delete", key(46), "delete", ""},
        {"another key", key(45), "", ""},
        {"delete on a map", [&] { tree->Select(&At(u"A")), editor->OnKeyDown(46); }, "selected -", "selected -"},
        {"right button", release(MouseButton::Right), "menu", ""},
        {"no button", release(MouseButton::None), "", ""},
        {"delete in a drag", inADrag(key(46)), "dragging, selected e", "selected e"},
        {"another key in a drag", inADrag([&] { EXPECT_FALSE(editor->OnKeyPress(28)); }), "dragging, selected e",
         "selected e"},
        {"right button in a drag", inADrag(release(MouseButton::Right)), "dragging, selected e", "selected e"},
        {"right press in a drag", inADrag(press(MouseButton::Right)), "selected e", "selected e"},
        {"left press in a drag", inADrag(press(MouseButton::Left)), "dragging, selected e", "selected e"},
        {"locked in a drag", inADrag([&] { editor->SetLocked(true); }), "selected e", "selected e"},
        {"forbidden in a drag", inADrag([&] { editor->SetAllowDragDrop(false); }), "selected e", "selected e"},
        {"no window in a drag", inADrag([&] { editor->AttachWindow(nullptr); }), "selected e", "selected e"},
        {"moved with the right button", pressAndMove(MouseButton::Right, MouseButton::None), "", ""},
        {"pressed, released, moved", pressAndMove(MouseButton::Left, MouseButton::Left), "", ""},
        {"dropped", [&] { drop(u"d", u"b"); }, "changed 2, selected b", ""},
        {"dropped in another map", [&] { drop(u"d", u"e"); }, "changed 2, selected e", ""},
        {"dropped on itself", [&] { drop(u"d", u"d"), tree->Select(&At(u"e")); }, "selected e", "selected e"},
        {"there and back", [&] { drop(u"d", u"a"), drop(u"a", u"d"); }, "changed 2, selected a, changed 2, selected d",
         ""},
        {"box clicked", [&] { editor->OnClick(window->AtBox(At(u"d")), false), release(MouseButton::Left)(); },
         "checked", "checked"},
        {"double click", [&] { editor->OnDblClick(window->At(At(u"d")), false); }, "checked", "checked"},
        {"three bursts of space", [&] { key(32)(), key(32)(), key(32)(); }, "checked", "checked"},
    };
    for (const bool isLocked : {false, true}) {
        for (const auto& [what, act, events, eventsWhenLocked] : cases) {
            SCOPED_TRACE(what);
            Open("A: a( b c ) d | B: e");
            editor->AttachWindow(window.get());
            editor->ExpandAll();
            editor->SetAllowDragDrop(true);
            editor->SetLocked(isLocked);
            Select(u"d");
            act();
            if (window->running.contains(TreeTimer::Checkstate)) editor->OnTimer(TreeTimer::Checkstate);
            if (editor->IsDragging()) Record("still dragging");
            EXPECT_EQ(Take(), isLocked ? eventsWhenLocked : events);
            EXPECT_EQ(lesson->CurrentSBID(), editor->CurrentSBID());
            for (const Node* map = tree->First(); map; map = map->Next())
                EXPECT_EQ(map->Caption(), map->Key() + u" (" + ToText(modTVW::CountDescendants(map)) + u")");
        }
    }
    // Expanding or collapsing with Ctrl and Shift includes the branch, each time.
    Open("A: a( b( c( d ) ) ) e");
    const auto isOpen = [this] { return std::pair(At(u"b").IsExpanded(), At(u"c").IsExpanded()); };
    for (const bool withKeys : {false, true, false, true}) {
        editor->CollapseAll();
        editor->OnExpanded(At(u"a"), withKeys);
        EXPECT_EQ(isOpen(), std::pair(withKeys, withKeys));
        editor->ExpandAll();
        editor->OnCollapsed(At(u"a"), withKeys);
        EXPECT_EQ(isOpen(), std::pair(!withKeys, !withKeys));
    }
    // Hovering over a collapsed node during a drag expands it.
    editor->SetLocked(false);
    editor->SetAllowDragDrop(true);
    editor->CollapseAll();
    At(u"A").SetExpanded(true);
    DragTo(u"e", u"a");
    editor->OnTimer(TreeTimer::AutoExpand);
    EXPECT_TRUE(At(u"a").IsExpanded());
}

TEST_F(LessonMapEditorTest, TheDisplayIsLockedForWhicheverWindow) {
    for (const bool isLocked : {true, true, false, true}) {
        isLocked ? editor->LockDisplay() : editor->UnlockDisplay();
        EXPECT_EQ(window->isFrozen, isLocked);
    }
    EXPECT_EQ(window->freezes, 3) << "calls do not nest";
    test::FakeTreeWindow other(*tree);
    editor->AttachWindow(&other);
    EXPECT_TRUE(other.isFrozen);
    editor->AttachWindow(window.get());
    EXPECT_EQ(other.held, 0);
    // An editor without a window, and how it ends.
    auto made = LessonMapEditor::Create();
    made->SetLesson(MakeLesson("A: a"));
    made->SetCurrentSBID(u"a");
    const std::weak_ptr<LessonMapEditor> known = made;
    const std::weak_ptr<NodeTree> itsTree = made->tvwObject();
    made.reset();
    EXPECT_TRUE(known.expired() && itsTree.expired());
}

// Nothing recurses over the depth of a map, and nothing walks over all siblings for each of them.
TEST_F(LessonMapEditorTest, LargeLessonsWideAndDeep) {
    constexpr int32_t count = 20'000;
    for (const bool isDeep : {false, true}) {
        std::string text = "A:";
        for (int i = 0; i < count; ++i) text += " s" + std::to_string(i) + (isDeep ? "(" : "");
        Open(text + " | B:");
        ASSERT_EQ(tree->Count(), count + 2);
        EXPECT_EQ(editor->FindNextSBID(u"s19999", ftTitle, true, true), u"s19999");
        editor->CheckAllStoryboards();
        EXPECT_EQ(editor->CheckedStoryboardCount(), count);
        EXPECT_EQ(editor->GetCheckedLesson()->Storyboards()->Count(), count);
        editor->CollapseAll();
        editor->ExpandAll();
        editor->SetCurrentSBID(u"s0");
        for (const auto& movement : {smtNextMap, smtPreviousMap}) {
            editor->MoveCurrent(movement);
            EXPECT_EQ(Print(*tree), Print(*lesson));
        }
        editor->RemoveStoryboard(editor->CurrentStoryboard(), false);
        editor->Refresh();
        EXPECT_EQ(tree->Count(), count + 1);
        editor->RemoveStoryboard(Page(tree->First()->FirstChild()->Key()), true);
        EXPECT_EQ(lesson->Storyboards()->Count(), isDeep ? 0 : count - 2);
    }
}

TEST_F(LessonMapEditorTest, PropertiesAreKeptAndReported) {
    test::PropertyMap bag;
    editor->WriteProperties(bag);
    EXPECT_TRUE(bag.empty()) << "the defaults";
    // The host is notified of what it has to save, and not when a property is set to its value.
    std::string events;
    editor->PropertyChanged.AddPermanent([&events](const Text& name) { events += ToUtf8(name) + " "; });
    for (int round = 0; round < 2; ++round) {
        editor->SetAllowDragDrop(false);
        editor->SetCaptionStyle(csIdentifier);
        editor->SetCheckboxes(true);
        editor->SetLocked(true);
        editor->SetShowDefaultMapOnly(true);
    }
    EXPECT_EQ(events, "AllowDragDrop CaptionStyle Checkboxes Locked ShowDefaultMapOnly ");
    editor->WriteProperties(bag);
    const auto other = LessonMapEditor::Create();
    other->ReadProperties(bag);
    test::PropertyMap again;
    other->WriteProperties(again);
    EXPECT_EQ(bag.size(), 5u);
    EXPECT_TRUE(again == bag);
    test::PropertyMap none;
    again.clear();
    other->ReadProperties(none); // what is not there has its default
    other->WriteProperties(again);
    EXPECT_TRUE(again.empty());
    const std::pair<Value, int> styles[] = {
        {int64_t{7}, 7}, {int64_t{1} << 40, csTitle}, {Text(u"1"), csTitle}, {int64_t{-1}, -1}};
    for (const auto& [style, shown] : styles) { // any number is kept, and shows the titles
        bag.clear();
        bag.insert({{u"AllowDragDrop", Value()}, {u"Locked", Text(u"?")}, {u"CaptionStyle", style}});
        other->ReadProperties(bag);
        EXPECT_TRUE(other->AllowDragDrop() && !other->Locked() && !other->Checkboxes());
        EXPECT_EQ(static_cast<int>(other->CaptionStyle()), shown);
    }
}

} // namespace
} // namespace dax
