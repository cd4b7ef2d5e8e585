#include "lessonmap/EditorFixture.h"

#include "base/Error.h"

#include <functional>
#include <map>

namespace dax {
namespace {

using test::EditorFixture;
using test::MakeLesson;
using test::Print;

class LessonMapEditorTest : public EditorFixture {};

TEST_F(LessonMapEditorTest, ShowsALessonAndItsCurrentStoryboard) {
    lesson = MakeLesson("A: a b | B: c");
    lesson->SetCurrentSBID(u"c");
    editor->SetLesson(lesson);
    EXPECT_EQ(Heard(), "selected c");
    EXPECT_EQ(editor->CurrentStoryboard(), Page(u"c"));

    // The other lesson has no record: what was current stays current, if it is there.
    const auto first = lesson;
    lesson = MakeLesson("A: c | A: d");
    editor->SetLesson(lesson);
    EXPECT_EQ(Heard(), "changed 0, selected c") << "a repaired lesson";
    EXPECT_EQ(Shown(), "A: c | A_1: d");
    EXPECT_EQ(lesson->CurrentSBID(), u"c");

    // Other objects with the same pages: the author finds the tree as it was.
    lesson = MakeLesson("A: c( e ) | A_1: d( f )");
    editor->SetLesson(lesson);
    At(u"c").SetExpanded(true);
    At(u"A_1").SetExpanded(false);
    tree->Select(&At(u"A_1"));
    Heard();
    lesson = MakeLesson("A: c( e ) | A_1: d( f )");
    editor->SetLesson(lesson);
    EXPECT_EQ(Heard(), "selected -");
    EXPECT_EQ(tree->Selected(), &At(u"A_1"));
    EXPECT_TRUE(At(u"c").IsExpanded() && !At(u"A_1").IsExpanded() && !At(u"d").IsExpanded());

    lesson = MakeLesson("A: x");
    lesson->SetCurrentSBID(u"gone");
    editor->SetLesson(lesson);
    EXPECT_EQ(Heard(), "selected -");
    EXPECT_EQ(lesson->CurrentSBID(), u"gone") << "the record of a page that no node shows is kept";
    editor->SetCurrentSBID(u"");
    EXPECT_EQ(lesson->CurrentSBID(), u"") << "until the host takes it away";

    editor->SetLesson(nullptr);
    EXPECT_EQ(Heard(), "");
    EXPECT_TRUE(tree->IsEmpty());
    EXPECT_EQ(editor->Lesson(), nullptr);
    // Without a lesson nothing happens and nothing is answered.
    editor->SetCurrentSBID(u"x");
    editor->SetCurrentStoryboard(NewPage(u"x"));
    editor->AddStoryboard(NewPage(u"x"));
    editor->RemoveStoryboard(NewPage(u"x"), true);
    editor->UpdateStoryboard(NewPage(u"x"));
    editor->UpdateSBID(u"x");
    editor->MoveCurrent(smtUp);
    editor->Refresh();
    editor->CheckAllStoryboards();
    EXPECT_EQ(editor->GetCheckedLesson(), nullptr);
    EXPECT_TRUE(editor->CheckedStoryboards().empty() && editor->OrphanedStoryboards().empty());
    EXPECT_EQ(editor->CheckedStoryboardCount() + editor->GetChildStoryboardCount(u"x"), 0);
    EXPECT_EQ(editor->FindNextSBID(u"x", ftTitle, false, true), u"");
    EXPECT_EQ(Heard(), "");
}

TEST_F(LessonMapEditorTest, Selection) {
    Open("A: a( b ) | B: c");
    editor->SetCurrentSBID(u"b");
    EXPECT_EQ(Heard(), "selected b");
    EXPECT_TRUE(At(u"a").IsExpanded());
    EXPECT_EQ(lesson->CurrentSBID(), u"b");
    editor->SetCurrentSBID(u"unknown");
    editor->SetCurrentSBID(u"A");
    editor->SetCurrentSBID(u"b");
    EXPECT_EQ(Heard(), "");
    EXPECT_EQ(editor->CurrentSBID(), u"b");
    editor->SetCurrentStoryboard(Page(u"c"));
    EXPECT_EQ(Heard(), "selected c");
    tree->Select(tree->Find(u"B")); // as the user does
    EXPECT_EQ(Heard(), "selected -");
    EXPECT_EQ(lesson->CurrentSBID(), u"");
    editor->SetCurrentSBID(u"c");
    editor->SetCurrentStoryboard(nullptr);
    EXPECT_EQ(Heard(), "selected c, selected -");
    EXPECT_EQ(tree->Selected(), nullptr);

    editor->SetCurrentSBID(u"b");
    heard.clear();
    editor->CollapseAll();
    EXPECT_EQ(Heard(), "selected -") << "the selection went up to the map, and was told once";
    EXPECT_EQ(lesson->CurrentSBID(), u"");
}

TEST_F(LessonMapEditorTest, AddsAndRemovesInShownAndHiddenMaps) {
    const char *pages = "A: a( b ) d | B: c", *branches = "A: a( b( c ) d e ) f | B: g";
    const struct {
        bool isDefaultOnly;
        const char* before;
        Text selected;
        const char* action; // "missing": the lesson does not have the page any more, a map lists it
        Text sbid;
        const char* after; // with all maps shown
        const char* told;
        int left; // storyboards of the lesson
    } cases[] = {
        {false, pages, u"B", "add", u"n", "A: n a( b ) d | B: c", "changed 1, selected n", 5},
        {false, pages, u"b", "add", u"n", "A: a( b n ) d | B: c", "changed 1, selected n", 5},
        {false, pages, u"b", "add", u"c", pages, "selected c", 4}, // shown already
        {false, pages, u"c", "add", u"c", pages, "", 4},
        {false, pages, u"c", "add missing", u"d", pages, "changed 1, selected d", 4},
        {false, branches, u"c", "remove branch", u"a", "A: f | B: g", "changed 3, selected f", 2},
        {false, branches, u"f", "remove branch", u"a", "A: f | B: g", "changed 3", 2},
        {false, branches, u"a", "remove", u"a", "A: b( c ) d e f | B: g", "changed 3, selected b", 6},
        {false, branches, u"g", "remove", u"g", "A: a( b( c ) d e ) f | B:", "changed 3, selected -", 6},
        {false, branches, u"g", "remove branch", u"x", branches, "", 7},
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
    for (const auto& [isDefaultOnly, before, selected, action, sbid, after, told, left] : cases) {
        SCOPED_TRACE(std::string(action) + " " + ToUtf8(sbid) + " in " + before);
        editor->SetShowDefaultMapOnly(isDefaultOnly);
        Open(before);
        Select(selected);
        const auto known = Page(sbid), page = std::static_pointer_cast<Storyboard>(NewPage(sbid));
        const std::string what = action;
        if (what.ends_with("missing")) lesson->Storyboards()->Remove(sbid);
        if (what.starts_with("add")) {
            editor->AddStoryboard(page);
            EXPECT_EQ(lesson->CurrentSBID(), sbid);
            const bool isNew = !known || what == "add missing"; // else the lesson's own is taken
            EXPECT_EQ(Page(sbid), isNew ? page : known);
            EXPECT_EQ(At(sbid).Caption(), isNew ? u"New " + sbid : u"Title of " + sbid);
            EXPECT_EQ(At(sbid).Image(), editor->ImageList().IndexOfType(isNew ? u"video" : u"text"));
        } else {
            editor->RemoveStoryboard(page, what == "remove branch");
        }
        EXPECT_EQ(Heard(), told);
        editor->SetShowDefaultMapOnly(false);
        editor->OrphanedStoryboards(); // writes the layouts back
        EXPECT_EQ(Shown(), after);
        EXPECT_EQ(lesson->Storyboards()->Count(), left);
    }
    // An orphan of the lesson finds its place, or goes.
    Open(pages);
    lesson->Storyboards()->Add(NewPage(u"o"));
    ASSERT_EQ(editor->OrphanedStoryboards().size(), 1u);
    editor->AddStoryboard(Page(u"o"));
    EXPECT_TRUE(editor->OrphanedStoryboards().empty());
    EXPECT_EQ(Heard(), "changed 1, selected o");
    for (const auto& refused : {NewPage(u""), NewPage(u"B")}) {
        EXPECT_THROW(editor->AddStoryboard(refused), Error);
        EXPECT_EQ(Shown(), "A: o a( b ) d | B: c");
        EXPECT_EQ(Page(refused->SBID()), nullptr);
    }
    editor->AddStoryboard(nullptr);
    EXPECT_EQ(Heard(), "");
    // A map keeps its name beside an orphan of that name, which is no part of the tree.
    lesson->Storyboards()->Add(NewPage(u"A"));
    editor->Refresh();
    EXPECT_EQ(editor->FindNextSBID(u"New A", ftTitle, true, true), u"");
    editor->RemoveStoryboard(Page(u"A"), false);
    EXPECT_EQ(Page(u"A"), nullptr);
    EXPECT_EQ(Heard(), "changed 3");
    EXPECT_EQ(Shown(), "A: o a( b ) d | B: c");
    // What is hidden and shown again is the current page again.
    Open("A: a | B: b");
    editor->SetCurrentSBID(u"b");
    editor->SetShowDefaultMapOnly(true);
    EXPECT_EQ(editor->CurrentSBID(), u"");
    editor->SetShowDefaultMapOnly(false);
    EXPECT_EQ(editor->CurrentSBID(), u"b");
    EXPECT_EQ(Heard(), "selected b");
}

TEST_F(LessonMapEditorTest, MovesUpdatesAndRefreshes) {
    Open("A: a( b ) c | B: d");
    Select(u"c");
    EXPECT_TRUE(editor->CanMoveCurrent(smtNextMap));
    window->Told();
    editor->MoveCurrent(smtNextMap);
    EXPECT_EQ(window->Told(), "ensure:c");
    editor->ExpandAll();
    EXPECT_EQ(window->Told(), "ensure:c");
    EXPECT_EQ(Shown(), "A: a( b ) | B: c d");
    EXPECT_EQ(Heard(), "changed 2") << "the selection did not change";
    std::static_pointer_cast<ContentStoryboard>(Page(u"b"))->SetTitle(u"Other");
    editor->UpdateSBID(u"b");
    EXPECT_EQ(At(u"b").Caption(), u"Other");
    editor->UpdateStoryboard(NewPage(u"b"));
    EXPECT_EQ(At(u"b").Caption(), u"New b");
    EXPECT_EQ(At(u"b").Image(), editor->ImageList().IndexOfType(u"video"));
    editor->UpdateStoryboard(NewPage(u"A"));
    EXPECT_EQ(At(u"A").Caption(), u"A (2)");
    EXPECT_EQ(editor->GetChildStoryboardCount(u"A"), 2);
    EXPECT_EQ(editor->GetChildStoryboardCount(u"a"), 1);
    EXPECT_EQ(editor->GetChildStoryboardCount(u"none"), 0);

    editor->SetCaptionStyle(csIdentifier);
    EXPECT_EQ(At(u"b").Caption(), u"ID-b");
    editor->SetImageList(PictureKeys({u"text"}));
    EXPECT_EQ(At(u"b").Image(), 1);
    EXPECT_EQ(At(u"A").Image(), 0);
    std::static_pointer_cast<ContentMap>(lesson->Maps()->Item(1))->SetLayout({{u"d", 1}});
    editor->Refresh();
    EXPECT_EQ(Print(*tree), "A: a( b ) | B: d");
    editor->SetShowDefaultMapOnly(true);
    EXPECT_EQ(Print(*tree), "A: a( b )");
    EXPECT_EQ(editor->OrphanedStoryboards().size(), 2u) << "c, and d in the map that is not shown";
    EXPECT_EQ(Heard(), "");
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
    EXPECT_EQ(Heard(), "boxes, boxes, selected -") << "no check event for what the program did";
}

TEST_F(LessonMapEditorTest, WhatTheUserDoes) {
    const auto key = [this](int code) { return [this, code] { editor->OnKeyDown(code); }; };
    const auto release = [this](MouseButton button) { return [this, button] { editor->OnMouseUp(button); }; };
    const auto settle = [this] {
        if (window->running.contains(TreeTimer::Checkstate)) editor->OnTimer(TreeTimer::Checkstate);
    };
    const auto duringADrag = [this](std::function<void()> act) {
        return [this, act = std::move(act)] {
            DragTo(u"d", u"a");
            act();
            if (editor->IsDragging()) Hear("dragging");
            editor->OnKeyPress(27);
            tree->Select(&At(u"e"));
        };
    };
    const struct {
        const char* what;
        std::function<void()> act;
        const char *heard, *heardWhenLocked;
    } cases[] = {
        {"delete", key(46), "delete", ""},
        {"another key", key(45), "", ""},
        {"delete on a map", [&] { tree->Select(&At(u"A")), editor->OnKeyDown(46); }, "selected -", "selected -"},
        {"right button", release(MouseButton::Right), "menu", ""},
        {"no button", release(MouseButton::None), "", ""},
        {"delete in a drag", duringADrag(key(46)), "dragging, selected e", "selected e"},
        {"another key in a drag", duringADrag([&] { EXPECT_FALSE(editor->OnKeyPress(28)); }), "dragging, selected e",
         "selected e"},
        {"right button in a drag", duringADrag(release(MouseButton::Right)), "dragging, selected e", "selected e"},
        {"right press in a drag", duringADrag([&] { editor->OnMouseDown(MouseButton::Right); }), "selected e",
         "selected e"},
        {"left press in a drag", duringADrag([&] { editor->OnMouseDown(MouseButton::Left); }), "dragging, selected e",
         "selected e"},
        {"escape", duringADrag([&] { EXPECT_EQ(editor->OnKeyPress(27), !editor->Locked()); }), "selected e",
         "selected e"},
        {"locked in a drag", duringADrag([&] { editor->SetLocked(true); }), "selected e", "selected e"},
        {"dragging forbidden in a drag", duringADrag([&] { editor->SetAllowDragDrop(false); }), "selected e",
         "selected e"},
        {"moved with the right button",
         [&] {
             editor->OnMouseDown(MouseButton::Right);
             window->MoveTo(window->At(At(u"e")));
             editor->OnMouseMove(MouseButton::Right);
             editor->OnMouseMove(MouseButton::Left);
         },
         "", ""},
        {"pressed, released, moved",
         [&] {
             window->MoveTo(window->At(At(u"d")));
             editor->OnMouseDown(MouseButton::Left);
             editor->OnMouseUp(MouseButton::Left);
             window->MoveTo(window->At(At(u"e")));
             editor->OnMouseMove(MouseButton::Left);
             if (editor->IsDragging()) Hear("dragging");
         },
         "", ""},
        {"dropped", [&] { DragTo(u"d", u"b"), editor->OnMouseUp(MouseButton::Left); }, "changed 2, selected b", ""},
        {"dropped on itself", [&] { DragTo(u"d", u"d"), editor->OnMouseUp(MouseButton::Left); }, "", ""},
        {"dropped twice, there and back",
         [&] {
             DragTo(u"d", u"a");
             editor->OnMouseUp(MouseButton::Left);
             DragTo(u"a", u"d");
             editor->OnMouseUp(MouseButton::Left);
         },
         "changed 2, selected a, changed 2, selected d", ""},
        {"box clicked", [&] { editor->OnClick(window->AtBox(At(u"d")), false), settle(); }, "checked", "checked"},
        {"double click", [&] { editor->OnDblClick(window->At(At(u"d")), false), settle(); }, "checked", "checked"},
        {"three bursts of space", [&] { key(32)(), key(32)(), key(32)(), settle(); }, "checked", "checked"},
    };
    for (const bool isLocked : {false, true}) {
        for (const auto& [what, act, told, toldWhenLocked] : cases) {
            Open("A: a( b c ) d | B: e");
            editor->ExpandAll();
            editor->SetAllowDragDrop(true);
            editor->SetLocked(isLocked);
            Select(u"d");
            act();
            EXPECT_EQ(Heard(), isLocked ? toldWhenLocked : told) << what;
            if (!editor->IsDragging() && what == std::string("dropped")) {
                EXPECT_EQ(Shown(), isLocked ? "A: a( b c ) d | B: e" : "A: a( d b c ) | B: e");
                EXPECT_EQ(lesson->CurrentSBID(), isLocked ? u"d" : u"b");
            }
        }
    }
    // A listener of the selection that forbids the drag which selects.
    for (const bool locks : {false, true}) {
        Open("A: a b | B: e");
        editor->SetAllowDragDrop(true);
        editor->SetLocked(false);
        const Subscription listener = editor->AfterSelectionChange.Add(
            [&](const auto&) { locks ? editor->SetLocked(true) : editor->SetAllowDragDrop(false); });
        DragTo(u"a", u"b");
        EXPECT_FALSE(editor->IsDragging());
    }
    editor->SetLocked(false);
    editor->SetAllowDragDrop(true);
    // What is opened or closed with Ctrl and Shift takes its branch along, each time.
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
    // Resting on a closed node during a drag opens it.
    editor->CollapseAll();
    At(u"A").SetExpanded(true);
    DragTo(u"e", u"a");
    editor->OnTimer(TreeTimer::AutoExpand);
    EXPECT_TRUE(At(u"a").IsExpanded());
    editor->SetWindow(nullptr);
    EXPECT_FALSE(editor->IsDragging());
}

TEST_F(LessonMapEditorTest, TheDisplayIsLockedForWhicheverWindow) {
    editor->LockDisplay();
    editor->LockDisplay();
    EXPECT_TRUE(window->isFrozen);
    editor->UnlockDisplay();
    EXPECT_FALSE(window->isFrozen);
    EXPECT_EQ(window->freezes, 2);
    editor->LockDisplay();
    test::FakeTreeWindow other(*tree);
    editor->SetWindow(&other);
    EXPECT_TRUE(other.isFrozen);
    editor->SetWindow(window.get());
    EXPECT_EQ(window->held + other.held, 0);
    // A tree that a host fills by itself.
    tree->Select(&tree->Add(nullptr, Place::LastChild, u"x"));
    EXPECT_EQ(Heard(), "selected -");
    // One without a window, and how it ends.
    auto made = LessonMapEditor::Create();
    made->AfterSelectionChange.Add([this](const auto&) { Hear("told"); });
    made->SetLesson(MakeLesson("A: a"));
    made->SetCurrentSBID(u"a");
    EXPECT_EQ(Heard(), "told, told");
    const std::weak_ptr<LessonMapEditor> known = made;
    const std::weak_ptr<NodeTree> itsTree = made->tvwObject();
    made.reset();
    EXPECT_TRUE(known.expired() && itsTree.expired());
}

// The listener that releases the editor is the last one that hears anything.
TEST_F(LessonMapEditorTest, AReleasedEditorSaysNothingMore) {
    const std::function<void()> triggers[] = {
        [this] { editor->SetCurrentSBID(u"b"); },
        [this] { editor->MoveCurrent(smtNextMap); },
        [this] { editor->OnKeyDown(46); },
        [this] { editor->OnMouseUp(MouseButton::Right); },
        [this] { editor->SetCheckboxes(true); },
        [this] { editor->SetLocked(true); },
        [this] { editor->OnClick(window->AtBox(At(u"a")), false), editor->OnTimer(TreeTimer::Checkstate); },
        [this] { editor->TellFailures(u"Test", [] { throw Error(5, u"failed"); }); },
    };
    for (const auto& trigger : triggers) {
        MakeEditor();
        lesson = MakeLesson("A: a b | B: c");
        editor->SetLesson(lesson);
        editor->SetCurrentSBID(u"a");
        int told = 0;
        const auto listen = [&](auto& event) {
            event.Add([&](const auto&...) {
                ++told;
                if (!editor) return;
                editor.reset();
                tree->Select(tree->Find(u"c"));
            });
        };
        for (int listener = 0; listener < 2; ++listener) {
            listen(editor->AfterSelectionChange);
            listen(editor->MapChanged);
            listen(editor->DeleteRequest);
            listen(editor->ContextMenuRequest);
            listen(editor->CheckboxesChanged);
            listen(editor->PropertyChanged);
            listen(editor->ItemChecked);
            listen(editor->Error);
        }
        const int index = static_cast<int>(&trigger - triggers);
        trigger();
        EXPECT_EQ(told, 1) << index;
        EXPECT_FALSE(editor) << index;
        EXPECT_NE(lesson->CurrentSBID(), u"c") << index;
    }
}

struct Bag : PropertyBag {
    Value ReadProperty(const Text& name, const Value& byDefault) override {
        return values.contains(name) ? values[name] : byDefault;
    }
    void WriteProperty(const Text& name, const Value& value, const Value& byDefault) override {
        if (value != byDefault) values[name] = value;
    }
    std::map<Text, Value> values;
};

// Nothing recurses over the depth of a map, and nothing walks over all siblings for each of them.
TEST_F(LessonMapEditorTest, LargeLessonsWideAndDeep) {
    constexpr int count = 20'000;
    const auto layout = [](const Lesson& of, int map) {
        return std::static_pointer_cast<ContentMap>(of.Maps()->Item(map))->Layout();
    };
    for (const bool isDeep : {false, true}) {
        std::string text = "A:";
        for (int i = 0; i < count; ++i) text += " s" + std::to_string(i) + (isDeep ? "(" : "");
        Open(text + " | B:");
        ASSERT_EQ(tree->Count(), count + 2);
        EXPECT_EQ(editor->FindNextSBID(u"s19999", ftTitle, true, true), u"s19999");
        editor->CheckAllStoryboards();
        EXPECT_EQ(editor->CheckedStoryboards().size(), static_cast<size_t>(count));
        EXPECT_EQ(layout(*editor->GetCheckedLesson(), 0).size(), static_cast<size_t>(count));
        editor->CollapseAll();
        editor->ExpandAll();
        editor->SetCurrentSBID(u"s0");
        editor->MoveCurrent(smtNextMap);
        EXPECT_EQ(layout(*lesson, 1)[0].sbid, u"s0");
        editor->MoveCurrent(smtPreviousMap);
        EXPECT_EQ(layout(*lesson, 0).size(), static_cast<size_t>(count));
        editor->RemoveStoryboard(editor->CurrentStoryboard(), false);
        editor->Refresh();
        EXPECT_EQ(tree->Count(), count + 1);
        editor->RemoveStoryboard(Page(tree->First()->FirstChild()->Key()), true);
        EXPECT_EQ(lesson->Storyboards()->Count(), tree->Count() - 2);
    }
}

TEST_F(LessonMapEditorTest, PropertiesAreKeptAndTold) {
    Bag bag;
    editor->WriteProperties(bag);
    EXPECT_TRUE(bag.values.empty()) << "the defaults";
    // The host hears what it has to save, and nothing when a property is set to what it is.
    std::string told;
    editor->PropertyChanged.Add([&told](const Text& name) { told += ToUtf8(name) + " "; });
    for (int round = 0; round < 2; ++round) {
        editor->SetAllowDragDrop(false);
        editor->SetCaptionStyle(csIdentifier);
        editor->SetCheckboxes(true);
        editor->SetLocked(true);
        editor->SetShowDefaultMapOnly(true);
    }
    EXPECT_EQ(told, "AllowDragDrop CaptionStyle Checkboxes Locked ShowDefaultMapOnly ");
    editor->WriteProperties(bag);
    EXPECT_EQ(bag.values.size(), 5u);
    const auto other = LessonMapEditor::Create();
    other->ReadProperties(bag);
    EXPECT_TRUE(!other->AllowDragDrop() && other->Checkboxes() && other->Locked() && other->ShowDefaultMapOnly());
    EXPECT_EQ(other->CaptionStyle(), csIdentifier);
    const std::pair<Value, int> styles[] = {
        {int64_t{7}, 7}, {int64_t{1} << 40, csTitle}, {Text(u"1"), csTitle}, {int64_t{-1}, -1}};
    for (const auto& [style, shown] : styles) { // any number is kept, and shows the titles
        bag.values = {{u"AllowDragDrop", Value()}, {u"Locked", Text(u"?")}, {u"CaptionStyle", style}};
        other->ReadProperties(bag);
        EXPECT_TRUE(other->AllowDragDrop() && !other->Locked() && !other->Checkboxes());
        EXPECT_EQ(static_cast<int>(other->CaptionStyle()), shown);
    }
}

} // namespace
} // namespace dax
