#include "lessonmap/EditorFixture.h"

#include "data/Error.h"

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

    lesson = MakeLesson("A: x");
    lesson->SetCurrentSBID(u"gone");
    editor->SetLesson(lesson);
    EXPECT_EQ(Heard(), "selected -");
    EXPECT_EQ(lesson->CurrentSBID(), u"gone") << "the record of a page that no node shows is kept";

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

    editor->ExpandAll();
    EXPECT_EQ(Heard(), "");
    editor->CollapseAll();
    EXPECT_EQ(Heard(), "") << "nothing was selected";
    editor->SetCurrentSBID(u"b");
    heard.clear();
    editor->CollapseAll();
    EXPECT_EQ(Heard(), "selected -") << "the selection went up to the map, and was told once";
    EXPECT_EQ(lesson->CurrentSBID(), u"");
}

TEST_F(LessonMapEditorTest, AddsStoryboards) {
    const struct {
        Text selected, sbid;
        const char* shown;
        const char* told;
    } cases[] = {
        {u"", u"n", "A: n a( b ) d | B: c", "changed 1, selected n"},
        {u"A", u"n", "A: n a( b ) d | B: c", "changed 1, selected n"},
        {u"B", u"n", "A: n a( b ) d | B: c", "changed 1, selected n"},
        {u"a", u"n", "A: a( b ) n d | B: c", "changed 1, selected n"},
        {u"b", u"n", "A: a( b n ) d | B: c", "changed 1, selected n"},
        {u"c", u"n", "A: a( b ) d | B: c n", "changed 1, selected n"},
        {u"b", u"c", "A: a( b ) d | B: c", "selected c"}, // it is shown already
        {u"c", u"c", "A: a( b ) d | B: c", ""},
    };
    for (const auto& [selected, sbid, shown, told] : cases) {
        Open("A: a( b ) d | B: c");
        Select(selected);
        const auto page = NewPage(sbid);
        editor->AddStoryboard(page);
        EXPECT_EQ(Shown(), shown) << ToUtf8(selected);
        EXPECT_EQ(Heard(), told) << ToUtf8(selected);
        EXPECT_EQ(editor->CurrentSBID(), sbid);
        EXPECT_EQ(lesson->CurrentSBID(), sbid);
        EXPECT_EQ(Page(sbid) == page, sbid == u"n");
        EXPECT_EQ(At(sbid).Caption(), sbid == u"n" ? u"New n" : u"Title of c");
    }
    EXPECT_EQ(At(u"A").Caption(), u"A (3)");
    EXPECT_EQ(At(u"c").Image(), editor->ImageList().IndexOfType(u"text"));
    // An orphan of the lesson finds its place.
    lesson->Storyboards()->Add(NewPage(u"o"));
    ASSERT_EQ(editor->OrphanedStoryboards().size(), 1u);
    editor->AddStoryboard(Page(u"o"));
    EXPECT_TRUE(editor->OrphanedStoryboards().empty());
    EXPECT_EQ(Heard(), "changed 1, selected o");
    for (const auto& refused : {NewPage(u""), NewPage(u"B")}) {
        EXPECT_THROW(editor->AddStoryboard(refused), Error);
        EXPECT_EQ(Shown(), "A: a( b ) d | B: c o");
        EXPECT_EQ(Page(refused->SBID()), nullptr);
    }
    editor->AddStoryboard(nullptr);
    EXPECT_EQ(Heard(), "");
}

TEST_F(LessonMapEditorTest, RemovesStoryboardsAndSelectsANeighbour) {
    const struct {
        Text selected, sbid;
        bool includeChildren;
        const char* shown;
        const char* told;
        int left; // storyboards of the lesson
    } cases[] = {
        {u"a", u"a", true, "A: f | B: g", "changed 3, selected f", 2},
        {u"c", u"a", true, "A: f | B: g", "changed 3, selected f", 2},
        {u"f", u"a", true, "A: f | B: g", "changed 3", 2},
        {u"f", u"f", true, "A: a( b( c ) d e ) | B: g", "changed 3, selected a", 6},
        {u"a", u"a", false, "A: e d b( c ) f | B: g", "changed 3, selected e", 6}, // children reversed, as documented
        {u"c", u"b", false, "A: a( c d e ) f | B: g", "changed 3", 6},
        {u"c", u"c", false, "A: a( b d e ) f | B: g", "changed 3, selected b", 6},
        {u"g", u"g", false, "A: a( b( c ) d e ) f | B:", "changed 3, selected -", 6},
        {u"g", u"B", true, "A: a( b( c ) d e ) f | B: g", "", 7},
        {u"g", u"unknown", true, "A: a( b( c ) d e ) f | B: g", "", 7},
    };
    for (const auto& [selected, sbid, includeChildren, shown, told, left] : cases) {
        Open("A: a( b( c ) d e ) f | B: g");
        Select(selected);
        editor->RemoveStoryboard(NewPage(sbid), includeChildren);
        EXPECT_EQ(Shown(), shown) << ToUtf8(sbid);
        EXPECT_EQ(Heard(), told) << ToUtf8(sbid);
        EXPECT_EQ(lesson->Storyboards()->Count(), left) << ToUtf8(sbid);
        EXPECT_EQ(lesson->CurrentSBID(), editor->CurrentSBID());
        EXPECT_TRUE(editor->OrphanedStoryboards().empty());
    }
    lesson->Storyboards()->Add(NewPage(u"o"));
    editor->RemoveStoryboard(Page(u"o"), false);
    EXPECT_EQ(Heard(), "changed 3") << "an orphan";
    EXPECT_EQ(Page(u"o"), nullptr);
}

TEST_F(LessonMapEditorTest, MovesUpdatesAndRefreshes) {
    Open("A: a( b ) c | B: d");
    Select(u"c");
    EXPECT_TRUE(editor->CanMoveCurrent(smtNextMap));
    editor->MoveCurrent(smtNextMap);
    EXPECT_EQ(Shown(), "A: a( b ) | B: c d");
    EXPECT_EQ(Heard(), "changed 2") << "the selection did not change";
    EXPECT_FALSE(editor->CanMoveCurrent(smtNextMap));
    editor->MoveCurrent(smtNextMap);
    EXPECT_EQ(Heard(), "");

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

TEST_F(LessonMapEditorTest, Checks) {
    Open("A: a( b( c ) d ) e | B: f | C: g");
    editor->SetCheckboxes(true);
    for (const char16_t* key : {u"a", u"c", u"f", u"A"}) At(key).SetChecked(true);
    EXPECT_EQ(editor->CheckedStoryboardCount(), 3) << "a map is no storyboard";
    std::string checked;
    for (const auto& page : editor->CheckedStoryboards()) checked += ToUtf8(page->SBID());
    EXPECT_EQ(checked, "acf");
    Select(u"c");
    const auto part = editor->GetCheckedLesson();
    EXPECT_EQ(Print(*part), "A: a( c ) | B: f");
    EXPECT_EQ(part->Storyboards()->Count(), 3);
    EXPECT_EQ(part->Maps()->DefaultMap()->Name(), u"A");
    EXPECT_EQ(part->CurrentSBID(), u"c");
    EXPECT_EQ(Shown(), "A: a( b( c ) d ) e | B: f | C: g");

    editor->Refresh();
    EXPECT_EQ(editor->CheckedStoryboardCount(), 3) << "checks outlive a refresh";
    editor->CheckAllStoryboards();
    EXPECT_EQ(editor->CheckedStoryboardCount(), 7);
    EXPECT_TRUE(At(u"C").IsChecked());
    editor->UncheckAllStoryboards();
    EXPECT_EQ(Print(*editor->GetCheckedLesson()), "A:");
    editor->CheckAllStoryboards();
    editor->SetCheckboxes(false);
    EXPECT_EQ(editor->CheckedStoryboardCount(), 0);
    editor->CheckAllStoryboards();
    editor->SetLesson(MakeLesson("A: a"));
    EXPECT_EQ(editor->CheckedStoryboardCount(), 0) << "another lesson";
    EXPECT_EQ(Heard(), "selected -") << "no check event for what the program did; c is not in this lesson";
}

TEST_F(LessonMapEditorTest, ClicksToggleBranchesAndABurstIsToldOnce) {
    const auto checked = [this] {
        std::string keys;
        for (Node* node = tree->First(); node; node = modTVW::GetNextNode(node)) {
            if (node->IsChecked()) keys += ToUtf8(node->Key());
        }
        return keys;
    };
    enum Input { Click, CtrlClick, LabelClick, DblClick, CtrlDblClick, Space };
    const struct {
        Input input;
        Text key;
        const char* checked;
    } steps[] = {
        {Click, u"a", "abc"},   {CtrlClick, u"b", "ac"}, {LabelClick, u"a", "ac"}, {Click, u"b", "abc"},
        {DblClick, u"a", ""},   {Click, u"A", "Aabcd"},  {Click, u"a", "Ad"},      {CtrlDblClick, u"d", "Ad"},
        {Space, u"d", ""}, // the branch of the top row, A, whatever is selected
        {Space, u"d", "Aabcd"},
    };
    Open("A: a( b c ) d | B: e");
    editor->ExpandAll();
    Select(u"d");
    for (const auto& [input, key, after] : steps) {
        switch (input) {
        case Click:
            editor->Click(window.AtBox(At(key)), false);
            break;
        case CtrlClick:
            editor->Click(window.AtBox(At(key)), true);
            break;
        case LabelClick:
            editor->Click(window.At(At(key)), false);
            break;
        case DblClick:
            editor->DblClick(window.At(At(key)), false);
            break;
        case CtrlDblClick:
            editor->DblClick(window.At(At(key)), true);
            break;
        case Space:
            editor->KeyDown(32);
            break;
        }
        EXPECT_EQ(checked(), after) << input << ToUtf8(key);
    }
    EXPECT_EQ(Heard(), "");
    EXPECT_EQ(window.running.count(TreeTimer::Checkstate), 1u);
    editor->OnTimer(TreeTimer::Checkstate);
    EXPECT_EQ(Heard(), "checked");
    EXPECT_EQ(window.running.count(TreeTimer::Checkstate), 0u);
}

TEST_F(LessonMapEditorTest, KeysAndButtons) {
    Open("A: a( b( c ) )");
    editor->KeyDown(46);
    Select(u"A");
    editor->KeyDown(46);
    EXPECT_EQ(Heard(), "");
    Select(u"a");
    editor->KeyDown(46);
    editor->MouseUp(MouseButton::Right);
    EXPECT_EQ(Heard(), "delete, menu");
    EXPECT_FALSE(editor->KeyPress(27));
    editor->SetLocked(true);
    editor->KeyDown(46);
    editor->MouseUp(MouseButton::Right);
    EXPECT_EQ(Heard(), "");
    At(u"A").SetExpanded(true);
    editor->NodeExpanded(At(u"A"), false);
    EXPECT_FALSE(At(u"b").IsExpanded());
    editor->NodeExpanded(At(u"A"), true);
    EXPECT_TRUE(At(u"a").IsExpanded() && At(u"b").IsExpanded());
    editor->NodeCollapsed(At(u"A"), true);
    EXPECT_FALSE(At(u"a").IsExpanded() || At(u"b").IsExpanded());

    editor->LockDisplay();
    editor->LockDisplay();
    EXPECT_TRUE(window.isFrozen);
    editor->UnlockDisplay();
    EXPECT_FALSE(window.isFrozen);
    EXPECT_EQ(window.freezes, 2);
}

TEST_F(LessonMapEditorTest, DragsStoryboards) {
    const auto drag = [this](const Text& from, const Text& to, int part) {
        window.MoveTo(window.At(At(from)));
        editor->MouseDown(MouseButton::Left);
        window.MoveTo(window.At(At(from), 90));
        editor->MouseMove(MouseButton::Left);
        window.MoveTo(window.At(At(to), part));
        editor->MouseMove(MouseButton::Left);
        editor->MouseUp(MouseButton::Left);
    };
    const struct {
        Text from, to;
        int part;
        const char* shown;
        const char* told;
    } cases[] = {
        {u"d", u"a", 20, "A: d a( b c ) | B: e | C:", "selected d, changed 2"},
        {u"b", u"e", 80, "A: a( c ) d | B: e b | C:", "selected b, changed 2"},
        {u"a", u"C", 50, "A: d | B: e | C: a( b c )", "selected a, changed 2"},
        {u"e", u"A", 50, "A: e a( b c ) d | B: | C:", "selected e, changed 2"},
        {u"d", u"a", 80, "A: a( d b c ) | B: e | C:", "selected d, changed 2"},
        {u"a", u"c", 20, "A: a( b c ) d | B: e | C:", "selected a"},
        {u"A", u"e", 20, "A: a( b c ) d | B: e | C:", ""},
    };
    for (const auto& [from, to, part, shown, told] : cases) {
        Open("A: a( b c ) d | B: e | C:");
        editor->ExpandAll();
        drag(from, to, part);
        EXPECT_EQ(Shown(), shown);
        EXPECT_EQ(Heard(), told) << shown;
        EXPECT_EQ(editor->CurrentSBID(), from == u"A" ? Text() : from);
        EXPECT_EQ(lesson->CurrentSBID(), editor->CurrentSBID());
        EXPECT_FALSE(window.hasDragImage);
        editor->SetCurrentSBID(u"c");
        EXPECT_EQ(Heard(), "selected c") << "notifications flow again";
    }
    // Resting on a collapsed node opens it.
    Open("A: a( b c ) d | B: e | C:");
    window.MoveTo(window.At(At(u"d")));
    editor->MouseDown(MouseButton::Left);
    window.MoveTo(window.At(At(u"d"), 90));
    editor->MouseMove(MouseButton::Left);
    window.MoveTo(window.At(At(u"a"), 20));
    editor->MouseMove(MouseButton::Left);
    EXPECT_FALSE(At(u"a").IsExpanded());
    editor->OnTimer(TreeTimer::AutoExpand);
    EXPECT_TRUE(At(u"a").IsExpanded());
    editor->KeyPress(27);
    // Whatever ends a drag leaves the notifications on; a locked editor starts none.
    const std::function<void()> ends[] = {
        [this] { EXPECT_TRUE(editor->KeyPress(27)); }, [this] { editor->MouseDown(MouseButton::Right); },
        [this] { editor->SetLesson(lesson); },         [this] { editor->Refresh(); },
        [this] { editor->SetLocked(true); },           [this] { editor->MouseDown(MouseButton::Left); },
    };
    for (const auto& end : ends) {
        Open("A: a( b c ) d | B: e | C:");
        window.MoveTo(window.At(At(u"d")));
        editor->MouseDown(MouseButton::Left);
        window.MoveTo(window.At(At(u"d"), 90));
        editor->MouseMove(MouseButton::Left);
        const bool isLocked = editor->Locked();
        EXPECT_EQ(window.hasDragImage, !isLocked);
        EXPECT_EQ(editor->CanMoveCurrent(smtUp), false);
        end();
        EXPECT_FALSE(window.hasDragImage);
        heard.clear();
        editor->SetCurrentSBID(u"e");
        EXPECT_EQ(Heard(), "selected e");
    }
}

class Bag : public PropertyBag {
public:
    Value ReadProperty(const Text& name, const Value& defaultValue) override {
        return values.contains(name) ? values[name] : defaultValue;
    }
    void WriteProperty(const Text& name, const Value& value, const Value& defaultValue) override {
        order += ToUtf8(name) + " ";
        if (value != defaultValue) values[name] = value;
    }
    std::map<Text, Value> values;
    std::string order;
};

TEST_F(LessonMapEditorTest, PropertiesAreKept) {
    Bag bag;
    editor->WriteProperties(bag);
    EXPECT_EQ(bag.order, "AllowDragDrop CaptionStyle Checkboxes Locked ShowDefaultMapOnly ");
    EXPECT_TRUE(bag.values.empty()) << "all at their defaults";
    bag.values = {{u"AllowDragDrop", false},
                  {u"CaptionStyle", int64_t{1}},
                  {u"Checkboxes", true},
                  {u"Locked", true},
                  {u"ShowDefaultMapOnly", true}};
    editor->ReadProperties(bag);
    Bag again;
    editor->WriteProperties(again);
    EXPECT_EQ(again.values, bag.values);
    bag.values = {{u"AllowDragDrop", Text(u"?")}, {u"CaptionStyle", int64_t{1} << 40}, {u"Locked", Value()}};
    editor->ReadProperties(bag);
    EXPECT_TRUE(editor->AllowDragDrop() && !editor->Locked() && !editor->Checkboxes());
    EXPECT_EQ(editor->CaptionStyle(), csTitle);
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
    EXPECT_EQ(told, again.order);
}

} // namespace
} // namespace dax
