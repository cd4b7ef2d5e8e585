// The editor on a SQLite file: members, events, input.

#include "hierarchy/EditorFixture.h"
#include "support/PropertyMap.h"
#include "tree/FakeTreeWindow.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

class EditorOnFile : public ::testing::Test, protected test::RecordingEditor {
protected:
    EditorOnFile() {
        test::CreateTables(database);
        database.Run(test::SampleRows());
        editor->SetConnectionString(database.ConnectionString());
        EXPECT_TRUE(editor->LoadDatabase());
        EXPECT_EQ(Take(), u"S ");
    }
    Node& At(const Text& id) { return *editor->Tree().Find(id); }

    test::TestDatabase database{Engine::SQLite};
};

TEST_F(EditorOnFile, LoadsAndReselects) {
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    EXPECT_TRUE(editor->Tree().First()->IsExpanded() && !At(u"g").IsExpanded());
    EXPECT_EQ(At(u"b").Caption() + At(u"b").Tag(), u"O'Neilid b");
    editor->SetCurrentLessonID(u"c");
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"Sc Sc ");
    EXPECT_EQ(editor->CurrentLessonID(), u"c");
    editor->SetCurrentLessonID(u"unknown");
    EXPECT_FALSE(editor->Tree().Selected());
    EXPECT_FALSE(editor->Clear() || editor->GetLessonProperties(u"a"));
    EXPECT_FALSE(editor->SaveDatabase());
    EXPECT_EQ(Take(), u"S S ESaveDatabase ");
    EXPECT_EQ(ToText(errorNumber) + error, u"-2147221504No database open.");
    editor->AddLesson(u"x", u"", u"", ltLesson);
    editor->SetConnectionString({});
    EXPECT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"S ");
    EXPECT_EQ(editor->NodeCount(), 0);
}

TEST_F(EditorOnFile, Questions) {
    editor->SetDatabaseTitle(u"Course");
    EXPECT_EQ(editor->Tree().First()->Caption(), u"Course");
    editor->UpdateLesson(u"a", u"New", u"new", ltLesson);
    editor->AddLesson(u"late", u"Late", u"", ltLesson); // without properties yet
    const struct {
        Text lessonID, ids;
        int children;
        Text figures; // groups, lessons, storyboards, title, identifier, type, classification
    } cases[] = {
        {u"", u"lategabscdh", 0, u"4|4|9|Course||-2|[multiple classifications]|"},
        {u"g", u"abscdg", 5, u"3|3|9|G:1|id g|0|[multiple classifications]|"},
        {u"s", u"cds", 2, u"2|1|2|S|id s|0|public|"}, // another type counts as a group
        {u"d", u"d", 0, u"1|0|0|D|id d|2||"},
        {u"a", u"a", 0, u"0|1|3|New|new|1|secret|"},
        {u"late", u"late", 0, u"0|1|0|Late||1||"},
        {u"no", u"no", 0, u"1|0|0|||-1||"},
    };
    const auto textOf = [](const PropertyCollection& all, bool hasNames = false) {
        Text text;
        for (const Text& name : all.ValueNames())
            text += (hasNames ? name + u"=" : Text()) + GetText(all, name, {}) + u"|";
        return text;
    };
    for (const auto& [lessonID, ids, children, figures] : cases) {
        Text found;
        for (const Text& each : editor->GetChildLessonIDCollection(lessonID)) found += each;
        EXPECT_EQ(found, ids);
        EXPECT_EQ(editor->GetChildLessonCount(lessonID), children);
        const auto all = editor->GetAggregateProperties(lessonID);
        EXPECT_EQ(all->Name() + u" " + textOf(*all), u"AggregateProperties " + figures);
    }
    const auto loaded = editor->GetLessonProperties(u"a");
    EXPECT_EQ(GetText(*loaded, u"Title", {}) + GetText(*loaded, u"Identifier", {}), u"Aid a");
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"d"), u"LessonType", -5), 7);
    EXPECT_FALSE(editor->GetLessonProperties(u"no"));

    const auto tokens = editor->GetLessonTokens(u"c");
    EXPECT_EQ(tokens->Name(), u"tokens");
    EXPECT_EQ(textOf(*tokens, true),
              u"LessonTitle=C|LessonIdentifier=id c|LessonID=c|LessonTitlePath=G_1\\S\\C|"
              u"LessonIdentifierPath=id g\\id s\\id c|TopTitle=G:1|TopIdentifier=id g|TopTitlePath=G_1|"
              u"TopIdentifierPath=id g|ParentTitle=S|ParentIdentifier=id s|ParentTitlePath=G_1\\S|"
              u"ParentIdentifierPath=id g\\id s|");
    for (const char16_t* id : {u"g", u"a"}) { // the top is its own parent
        const auto below = editor->GetLessonTokens(id);
        EXPECT_EQ(GetText(*below, u"ParentTitle", {}) + GetText(*below, u"ParentIdentifier", {}), u"G:1id g");
    }
    EXPECT_EQ(textOf(*editor->GetLessonTokens(u"no")) + textOf(*editor->GetLessonTokens(u"")), u"");
}

TEST_F(EditorOnFile, Find) {
    editor->UpdateLesson(u"b", u"\u01AFU TI\u00CAN", u"K\u00FCrzel", ltLesson);
    const struct {
        Text from, requested;
        bool wraps;
        Text found;
    } cases[] = {
        {u"", u"s", false, u"s"},
        {u"s", u"c", false, u"c"},                // the selected entry itself is passed over
        {u"", u"\u01B0u ti\u00EAn", false, u"b"}, // titles,
        {u"", u"K\u00DCRZEL", false, u"b"},       // identifiers
        {u"h", u"D", true, u"g"},                 // "id g"
        {u"h", u"c", true, u"c"},                 // wraps around at the end
        {u"b", u"K\u00FCrzel", true, u""},        // nor is it found when it alone has the text
        {u"unknown", u"velmora", true, u""},      // the database is no entry
        {u"", u"", false, u"g"},
    };
    for (const auto& [from, requested, wraps, found] : cases) {
        editor->SetCurrentLessonID(from);
        const Text selected = editor->CurrentLessonID();
        EXPECT_EQ(editor->FindLesson(requested, ftID, wraps), found) << ToUtf8(requested);
        EXPECT_EQ(editor->CurrentLessonID(), found.empty() ? selected : found);
    }
    editor->Clear();
    EXPECT_EQ(editor->FindLesson(u"", ftTitle, true), u"");
}

TEST_F(EditorOnFile, EditsAndTheirEvents) {
    const struct {
        std::function<void()> act;
        Text received, shape;
    } steps[] = {
        // The root is selected: first at the top; then after the selected one; where it is.
        {[&] { editor->AddLesson(u"n", u"N", u"nn", ltGroup); }, u"D Sn ", u"(n g(a b s(c d)) h)"},
        {[&] { editor->AddLesson(u"m", u"M", u"", ltUnknown); }, u"D Sm ", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->AddLesson(u"a", u"again", u"", ltGroup); }, u"D Sa ", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->UpdateLesson(u"b", u"O'Neil", u"id b", ltGroup); }, u"D ", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->AddLesson(u"", u"", u"", ltGroup); }, u"", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->UpdateLesson(u"no", u"", u"", ltGroup); }, u"", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->RemoveLesson(u"no", true); }, u"", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->RemoveLesson(u"", true); }, u"", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->SetCurrentLessonID(u"b"); }, u"Sb ", u"(n m g(a b s(c d)) h)"},
        {[&] { editor->RemoveLesson(u"g", false); }, u"D ", u"(n m s(c d) b a h)"}, // deliberately in reverse order
        {[&] { editor->RemoveLesson(u"b", true); }, u"Sa D ", u"(n m s(c d) a h)"},
        {[&] { editor->MoveCurrent(gmtIndent); }, u"D ", u"(n m s(c d a) h)"},
        {[&] { editor->SetLocked(true), editor->MoveCurrent(gmtUp); }, u"", u"(n m s(c d a) h)"},
        {[&] { editor->RemoveLesson(u"n", true); }, u"D ", u"(m s(c d a) h)"}, // Locked does not restrict the host
    };
    for (const auto& [act, events, shape] : steps) {
        act();
        EXPECT_EQ(Take(), events);
        EXPECT_EQ(Shape(), shape);
    }
}

TEST_F(EditorOnFile, AListenerMayDoAnything) {
    editor->SetCurrentLessonID(u"b");
    // It clears the editor in the middle of a removal, which then marks nothing as pending.
    Subscription number = editor->AfterSelectionChange.Add([this](const Text&) {
        if (editor->NodeCount() > 0) editor->Clear();
    });
    editor->RemoveLesson(u"b", true);
    EXPECT_EQ(editor->NodeCount(), 0);
    EXPECT_EQ(Take(), u"Sb Ss S ");
    number = {};
    ASSERT_TRUE(editor->LoadDatabase());
    number = editor->DataChanged.Add([this] { editor->LoadDatabase(); });
    editor->AddLesson(u"new", u"", u"", ltLesson);
    EXPECT_EQ(editor->GetLessonType(u"new"), ltInvalid);
    EXPECT_EQ(editor->Tree().Selected(), editor->Tree().First()) << "what was loaded stays as it is";
    EXPECT_FALSE(editor->CanUndo());
    editor->SetCurrentLessonID(u"b");
    editor->RemoveLesson(u"g", true);
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    number = {};
    ASSERT_TRUE(editor->SaveDatabase()); // nothing was left pending by the interrupted edits
    EXPECT_EQ(test::ReadRows(database.ConnectionString()).size(), 7u);
}

// That each edit is undone and done again, also over a save, is among the random edits.
TEST_F(EditorOnFile, UndoDuringOperations) {
    editor->UpdateLesson(u"b", u"O'Neil", u"id b", ltLesson);
    EXPECT_FALSE(editor->CanUndo()) << "nothing was changed";
    editor->SetCurrentLessonID(u"c"); // expands g and s
    editor->RemoveLesson(u"g", true);
    editor->Undo();
    EXPECT_EQ(Shape() + editor->CurrentLessonID(), u"(g(a b s(c d)) h)c");
    EXPECT_TRUE(At(u"s").IsExpanded());
    // Removed at one save, present at the next, and undone completely: the row is still there.
    editor->RemoveLesson(u"h", true);
    ASSERT_TRUE(editor->SaveDatabase());
    editor->AddLesson(u"h", u"again", u"", ltLesson);
    ASSERT_TRUE(editor->SaveDatabase());
    while (editor->CanUndo()) editor->Undo();
    EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    const auto rows = [this] { return test::ReadRows(database.ConnectionString()); };
    EXPECT_TRUE(rows().contains(u"h"));
    // A host that saves at every change.
    Subscription listener = editor->DataChanged.Add([this] { EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error); });
    editor->AddLesson(u"auto", u"", u"", ltLesson);
    editor->RemoveLesson(u"h", true);
    for (const size_t steps : {1, 2}) {
        for (size_t i = 0; i < steps; ++i) editor->Undo();
        EXPECT_EQ(rows().size(), 9 - steps);
        for (size_t i = 0; i < steps; ++i) editor->Redo();
        EXPECT_TRUE(rows().size() == 7 && !rows().contains(u"h"));
    }
    while (editor->CanUndo()) editor->Undo();
    editor->SetLocked(true);
    EXPECT_FALSE(editor->CanUndo() || editor->CanRedo());
    editor->SetLocked(false);
    Take();
    bool couldUndo = false;
    listener = editor->DataChanged.Add([&] {
        couldUndo = editor->CanUndo();
        editor->Undo(); // not inside the edit
        editor->Redo();
    });
    editor->UpdateLesson(u"h", u"New", u"", ltLesson);
    EXPECT_EQ(editor->GetLessonTitle(u"h"), u"New");
    EXPECT_TRUE(couldUndo && !editor->CanRedo()); // a new edit ends what could be redone
    listener = {};
    editor->Undo();
    EXPECT_EQ(Take(), u"D D ");
    for (int i = 0; i < 1200; ++i) editor->UpdateLesson(u"h", ToText(i), u"", ltLesson);
    int undone = 0;
    for (; editor->CanUndo(); ++undone) editor->Undo();
    EXPECT_EQ(undone, 1000);
    EXPECT_EQ(editor->GetLessonTitle(u"h"), u"199");
    editor->Redo(); // so that there is something to undo and to redo
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_FALSE(editor->CanUndo() || editor->CanRedo());
}

TEST_F(EditorOnFile, PropertiesAndDisplay) {
    Text changed;
    editor->PropertyChanged.AddPermanent([&](const Text& name) { changed += name + u" "; });
    test::FakeTreeWindow window(editor->Tree()), another(editor->Tree());
    editor->AttachWindow(&window);
    test::PropertyMap usual, set, odd;
    editor->WriteProperties(usual);
    EXPECT_TRUE(usual.empty()) << "nothing but defaults";
    editor->SetSingleExpand(true);
    editor->SetLocked(true);
    editor->SetAllowDragDrop(false);
    editor->SetConflictCheck(true);
    EXPECT_EQ(changed, u"SingleExpand Locked AllowDragDrop ConflictCheck ");
    EXPECT_TRUE(window.isSingleExpand);
    editor->WriteProperties(set);
    EXPECT_EQ(set.size(), 4u);
    odd[u"Locked"] = Text(u"of another kind");
    for (test::PropertyMap* bag : {&usual, &set, &odd}) {
        test::PropertyMap read;
        editor->ReadProperties(*bag);
        editor->WriteProperties(read);
        EXPECT_TRUE(read == (bag == &set ? set : usual));
        EXPECT_EQ(window.isSingleExpand, bag == &set);
    }
    for (int i = 0; i < 2; ++i) editor->LockDisplay();
    editor->AttachWindow(&another);
    EXPECT_TRUE(window.isFrozen && window.freezes == 1 && another.isFrozen);
    for (const bool isFrozen : {false, true, false}) {
        isFrozen ? editor->LockDisplay() : editor->UnlockDisplay();
        EXPECT_EQ(another.isFrozen, isFrozen);
    }
    editor->AttachWindow(&window);
    editor->SetCurrentLessonID(u"a");
    const std::function<void()> showing[] = {[&] { editor->ExpandAll(); }, [&] { editor->MoveCurrent(gmtDown); },
                                             [&] { editor->RemoveLesson(u"s", false); }};
    for (const auto& act : showing) {
        window.TakeCalls();
        act();
        EXPECT_NE(window.TakeCalls().find("ensure:a"), std::string::npos) << &act - showing;
    }
    ASSERT_TRUE(editor->LoadDatabase());
    editor->ExpandAll();
    EXPECT_TRUE(At(u"s").IsExpanded() && !At(u"c").IsExpanded());
    editor->SetCurrentLessonID(u"c");
    editor->Tree().First()->SetExpanded(false);
    editor->OnCollapsed(*editor->Tree().First());
    EXPECT_TRUE(editor->Tree().First()->IsExpanded() && !At(u"g").IsExpanded() && !At(u"s").IsExpanded());
    editor->AttachWindow(nullptr);
}

TEST_F(EditorOnFile, KeysAndDoubleClicks) {
    enum Input { Key, Character, DoubleClick };
    const struct {
        Text selected; // "": the root
        bool isLocked;
        Input input;
        int code;
        Text received;
    } cases[] = {
        {u"b", false, Key, 46, u"X "},       {u"b", true, Key, 46, u"X "},          {u"b", false, Key, 45, u""},
        {u"", false, Key, 46, u""},          {u"none", false, Key, 46, u""},        {u"b", true, Character, 13, u"2 "},
        {u"b", false, Character, 13, u""},   {u"none", true, Character, 13, u""},   {u"b", true, Character, 27, u""},
        {u"", false, DoubleClick, 0, u"2 "}, {u"none", false, DoubleClick, 0, u""},
    };
    for (const auto& [selected, isLocked, input, code, expected] : cases) {
        editor->SetCurrentLessonID(selected);
        if (selected.empty()) editor->Tree().Select(editor->Tree().First());
        editor->SetLocked(isLocked);
        Take();
        if (input == Key) editor->OnKeyDown(code);
        if (input == Character) editor->OnKeyPress(code);
        if (input == DoubleClick) editor->OnDblClick();
        EXPECT_EQ(Take(), expected) << ToUtf8(selected) << code;
    }
}

TEST_F(EditorOnFile, ACancelledDragLeavesTheNotificationsOn) {
    test::FakeTreeWindow window(editor->Tree());
    editor->AttachWindow(&window);
    const auto drag = [&](const Text& from, Point to, MouseButton button = MouseButton::Left,
                          MouseButton buttons = MouseButton::Left) {
        window.MoveTo(window.At(At(from)));
        editor->OnMouseDown(button);
        window.MoveTo(to);
        editor->OnMouseMove(buttons, window.At(At(from)));
        editor->OnMouseMove(buttons, to);
        return editor->IsDragging();
    };
    editor->ExpandAll();
    const Point behindA = window.At(At(u"a"), 10);
    const std::function<void()> ends[] = {[&] { editor->OnKeyPress(27); },
                                          [&] { editor->OnMouseDown(MouseButton::Right); },
                                          [&] { editor->SetLocked(true); }, [&] { editor->SetAllowDragDrop(false); }};
    for (const auto& end : ends) {
        ASSERT_TRUE(drag(u"b", behindA));
        editor->OnMouseDown(MouseButton::Left); // nor does it begin again
        editor->OnMouseUp(MouseButton::Right);
        EXPECT_TRUE(editor->IsDragging());
        end();
        EXPECT_FALSE(editor->IsDragging());
        const bool isForbidden = editor->Locked() || !editor->AllowDragDrop();
        EXPECT_EQ(drag(u"b", behindA), !isForbidden);
        if (!isForbidden) editor->OnKeyPress(27);
        editor->SetLocked(false);
        editor->SetAllowDragDrop(true);
        editor->OnMouseMove(MouseButton::Left, behindA); // what was pressed before does not count
        EXPECT_FALSE(editor->IsDragging());
    }
    EXPECT_FALSE(drag(u"b", behindA, MouseButton::Right) || drag(u"b", behindA, MouseButton::Left, MouseButton::Right));
    editor->OnMouseUp(MouseButton::Left);
    Take();
    drag(u"b", behindA);
    EXPECT_FALSE(editor->CanMoveCurrent(gmtDown));
    editor->OnKeyDown(46);
    editor->OnMouseUp(MouseButton::Left);
    EXPECT_EQ(Shape() + Take(), u"(g(b a s(c d)) h)Sa D "); // the drop's target is selected, deliberately
    editor->Undo();
    editor->SetCurrentLessonID(u"b");
    EXPECT_EQ(Shape() + Take(), u"(g(a b s(c d)) h)D Sb ");
    At(u"s").SetExpanded(false); // and is expanded again when the pointer stays
    ASSERT_TRUE(drag(u"a", window.At(At(u"s"), 5)));
    editor->OnTimer(TreeTimer::AutoExpand);
    EXPECT_TRUE(At(u"s").IsExpanded());
    editor->RemoveLesson(u"a", true); // the dragged one
    EXPECT_FALSE(editor->IsDragging());
    Take();
    editor->SetCurrentLessonID(u"h");
    EXPECT_EQ(Take(), u"Sh ");
    editor->AttachWindow(nullptr);
}

} // namespace
} // namespace dax
