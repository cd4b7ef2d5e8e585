// The editor on a SQLite file: members, events, input.

#include "hierarchy/EditorFixture.h"
#include "tree/FakeTreeWindow.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

class EditorOnFile : public ::testing::Test, protected test::HeardEditor {
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
    EXPECT_EQ(editor->NodeCount(), 8);
    EXPECT_TRUE(editor->Tree().First()->IsExpanded());
    EXPECT_FALSE(At(u"g").IsExpanded());
    EXPECT_EQ(At(u"b").Caption() + At(u"b").Tag(), u"O'Neilid b");
    editor->SetCurrentLessonID(u"c");
    EXPECT_EQ(Take(), u"Sc ");
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"Sc ");
    EXPECT_EQ(editor->CurrentLessonID(), u"c");
    editor->SetCurrentLessonID(u"unknown");
    EXPECT_FALSE(editor->Tree().Selected());
    EXPECT_EQ(Take(), u"S ");
    EXPECT_FALSE(editor->Clear());
    EXPECT_EQ(Take(), u"S ");
    EXPECT_EQ(editor->NodeCount(), 0);
    EXPECT_FALSE(editor->SaveDatabase());
    EXPECT_EQ(Take(), u"ESaveDatabase ");
    EXPECT_EQ(errorNumber, -2147221504);
    EXPECT_EQ(error, u"No database open.");
    editor->AddLesson(u"x", u"", u"", ltLesson);
    editor->SetConnectionString({});
    EXPECT_TRUE(editor->LoadDatabase());
    EXPECT_EQ(Take(), u"S ");
    EXPECT_EQ(editor->NodeCount(), 0);
}

TEST_F(EditorOnFile, Questions) {
    editor->SetDatabaseTitle(u"Course");
    EXPECT_EQ(editor->Tree().First()->Caption(), u"Course");
    EXPECT_EQ(editor->GetLessonTitle(u""), u"Course");
    EXPECT_EQ(editor->GetLessonTitle(u"b") + editor->GetLessonIdentifier(u"b"), u"O'Neilid b");
    EXPECT_EQ(editor->GetLessonTitle(u"no") + editor->GetLessonIdentifier(u"no") + editor->GetLessonIdentifier(u""),
              u"");
    const std::pair<Text, LessonTypes> types[] = {
        {u"", ltDatabase}, {u"g", ltGroup}, {u"a", ltLesson}, {u"d", ltUnknown}, {u"no", ltInvalid}};
    for (const auto& [id, type] : types) EXPECT_EQ(editor->GetLessonType(id), type) << ToUtf8(id);
    EXPECT_EQ(editor->GetChildLessonCount(u"g"), 5);
    EXPECT_EQ(editor->GetChildLessonCount(u""), 0);
    const auto ids = [&](const Text& id) {
        Text all;
        for (const Text& each : editor->GetChildLessonIDCollection(id)) all += each;
        return all;
    };
    EXPECT_EQ(ids(u""), u"gabscdh");
    EXPECT_EQ(ids(u"g"), u"abscdg");
    EXPECT_EQ(ids(u"a"), u"a");
    EXPECT_EQ(ids(u"no"), u"no");

    editor->UpdateLesson(u"a", u"New", u"new", ltLesson);
    const auto loaded = editor->GetLessonProperties(u"a");
    EXPECT_EQ(GetText(*loaded, u"Title", {}) + GetText(*loaded, u"Identifier", {}), u"Aid a");
    EXPECT_EQ(GetNumber(*editor->GetLessonProperties(u"d"), u"LessonType", -5), 7);
    EXPECT_FALSE(editor->GetLessonProperties(u"no"));
    const auto figures = [&](const Text& id) {
        const auto all = editor->GetAggregateProperties(id);
        EXPECT_EQ(all->Name(), u"AggregateProperties");
        Text text;
        for (const Text& name : all->ValueNames()) text += GetText(*all, name, {}) + u"|";
        return text;
    };
    EXPECT_EQ(figures(u"a"), u"0|1|3|New|new|1|secret|");
    EXPECT_EQ(figures(u"s"), u"2|1|2|S|id s|0|public|"); // another type counts as a group
    EXPECT_EQ(figures(u"g"), u"3|3|9|G:1|id g|0|[multiple classifications]|");
    EXPECT_EQ(figures(u""), u"4|3|9|Course||-2|[multiple classifications]|");
    EXPECT_EQ(figures(u"no"), u"1|0|0|||-1||");
    editor->AddLesson(u"late", u"Late", u"", ltLesson);
    EXPECT_EQ(figures(u"late"), u"0|1|0|Late||1||");
}

TEST_F(EditorOnFile, Find) {
    struct Case {
        Text from, wanted;
        bool wraps;
        Text found;
    };
    editor->UpdateLesson(u"b", u"\u01AFU TI\u00CAN", u"K\u00FCrzel", ltLesson);
    const Case cases[] = {
        {u"", u"s", false, u"s"},
        {u"s", u"c", false, u"c"},                // the selected entry itself is passed over
        {u"", u"\u01B0u ti\u00EAn", false, u"b"}, // titles,
        {u"", u"K\u00DCRZEL", false, u"b"},       // identifiers
        {u"", u"ID D", false, u"d"},              //
        {u"h", u"D", true, u"g"},                 // "id g"
        {u"h", u"c", false, u""},                 //
        {u"h", u"c", true, u"c"},                 // behind the end begins the top
        {u"b", u"tien", true, u""},               //
        {u"b", u"K\u00FCrzel", true, u""},        // nor is it found when it alone has the text
        {u"unknown", u"velmora", true, u""},      // the database is no entry
        {u"", u"", false, u"g"},
    };
    for (const Case& each : cases) {
        editor->SetCurrentLessonID(each.from);
        const Text selected = editor->CurrentLessonID();
        EXPECT_EQ(editor->FindLesson(each.wanted, ftID, each.wraps), each.found) << ToUtf8(each.wanted);
        EXPECT_EQ(editor->CurrentLessonID(), each.found.empty() ? selected : each.found);
    }
    editor->Clear();
    EXPECT_EQ(editor->FindLesson(u"", ftTitle, true), u"");
}

TEST_F(EditorOnFile, Tokens) {
    const auto tokens = [&](const Text& id) {
        const auto all = editor->GetLessonTokens(id);
        EXPECT_EQ(all->Name(), u"tokens");
        Text text;
        for (const Text& name : all->ValueNames()) text += name + u"=" + GetText(*all, name, {}) + u"\n";
        return text;
    };
    EXPECT_EQ(tokens(u"c"), u"LessonTitle=C\nLessonIdentifier=id c\nLessonID=c\nLessonTitlePath=G_1\\S\\C\n"
                            u"LessonIdentifierPath=id g\\id s\\id c\nTopTitle=G:1\nTopIdentifier=id g\n"
                            u"TopTitlePath=G_1\nTopIdentifierPath=id g\nParentTitle=S\nParentIdentifier=id s\n"
                            u"ParentTitlePath=G_1\\S\nParentIdentifierPath=id g\\id s\n");
    EXPECT_NE(tokens(u"g").find(u"ParentTitle=G:1\nParentIdentifier=id g\n"), Text::npos) << "its own parent";
    EXPECT_EQ(tokens(u"no") + tokens(u""), u"");
}

TEST_F(EditorOnFile, EditsAndTheirEvents) {
    editor->AddLesson(u"n", u"N", u"nn", ltGroup); // the root is selected: first at the top
    EXPECT_EQ(Take(), u"D Sn ");
    editor->AddLesson(u"m", u"M", u"", ltUnknown); // after the selected one
    EXPECT_EQ(Shape(), u"(n m g(a b s(c d)) h)");
    editor->AddLesson(u"a", u"again", u"", ltGroup); // there already
    EXPECT_EQ(Take(), u"D Sm D Sa ");
    EXPECT_EQ(editor->GetLessonType(u"a"), ltGroup);
    editor->UpdateLesson(u"b", u"O'Neil", u"id b", ltGroup); // only the type
    EXPECT_EQ(editor->GetLessonType(u"b"), ltGroup);
    editor->UpdateLesson(u"b", u"O'Neil", u"id b", ltLesson);
    EXPECT_EQ(Take(), u"D D ");
    editor->UpdateLesson(u"no", u"", u"", ltGroup);
    editor->RemoveLesson(u"no", true);
    editor->RemoveLesson(u"", true);
    editor->AddLesson(u"", u"", u"", ltGroup);
    EXPECT_EQ(Take(), u"");
    editor->SetCurrentLessonID(u"b");
    Take();
    editor->RemoveLesson(u"g", false); // its children come up in reverse order
    EXPECT_EQ(Shape(), u"(n m s(c d) b a h)");
    EXPECT_EQ(Take(), u"D ");
    EXPECT_EQ(editor->CurrentLessonID(), u"b");
    editor->RemoveLesson(u"b", true);
    EXPECT_EQ(Take(), u"Sa D ");
    EXPECT_TRUE(editor->CanMoveCurrent(gmtUp));
    editor->MoveCurrent(gmtIndent);
    EXPECT_EQ(Shape(), u"(n m s(c d a) h)");
    EXPECT_EQ(Take(), u"D ");
    editor->SetLocked(true);
    EXPECT_FALSE(editor->CanMoveCurrent(gmtUp));
    editor->MoveCurrent(gmtUp);
    editor->RemoveLesson(u"n", true); // Locked is no bar to the host
    EXPECT_EQ(Shape(), u"(m s(c d a) h)");
    EXPECT_EQ(Take(), u"D ");
    editor->SetLocked(false);
}

TEST_F(EditorOnFile, AListenerMayDoAnything) {
    editor->SetCurrentLessonID(u"b");
    // It clears the editor in the middle of a removal, and the removal marks nothing in what comes then.
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
    editor->SetCurrentLessonID(u"b");
    editor->RemoveLesson(u"g", true);
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    number = {};
    ASSERT_TRUE(editor->SaveDatabase()); // nothing was left pending by the interrupted edits
    EXPECT_EQ(test::ReadRows(database.ConnectionString()).size(), 7u);
}

TEST_F(EditorOnFile, UndoesWhatWasSavedAndTakenBack) {
    const auto expansion = [this] {
        Text keys;
        for (const Text& key : modTVW::GetExpandedKeys(editor->Tree())) keys += key + u" ";
        return keys;
    };
    // What a save would send, without what it writes for every entry.
    const auto pending = [this] {
        Text sent;
        SetStatementObserver([&](TextView statement) {
            if (statement.starts_with(u"DELETE") || statement.starts_with(u"INSERT"))
                sent += Text(statement.substr(0, 6)) + Text(statement.substr(statement.find(u'\''), 4)) + u" ";
        });
        database.Run({u"CREATE TRIGGER full BEFORE UPDATE ON velmoraLessons BEGIN SELECT RAISE(FAIL, 'full'); END"});
        EXPECT_FALSE(editor->SaveDatabase());
        database.Run({u"DROP TRIGGER full"});
        SetStatementObserver({});
        return sent;
    };
    ASSERT_TRUE(editor->SaveDatabase());
    editor->UpdateLesson(u"b", u"O'Neil", u"id b", ltLesson);
    EXPECT_FALSE(editor->CanUndo()) << "nothing was changed";
    editor->SetCurrentLessonID(u"c"); // expands g and s
    editor->RemoveLesson(u"b", true);
    editor->RemoveLesson(u"a", true);
    editor->RemoveLesson(u"g", true);
    const Text all = pending();
    editor->Undo();
    EXPECT_EQ(expansion(), u" g s ");
    EXPECT_EQ(editor->CurrentLessonID(), u"c");
    EXPECT_EQ(pending(), u"DELETE'b' DELETE'a' ");
    editor->Redo();
    EXPECT_EQ(pending(), all);
    while (editor->CanUndo()) editor->Undo();
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    EXPECT_EQ(pending(), u"");

    for (const Text id : {u"n", u"m"}) editor->AddLesson(id, u"", u"", ltLesson);
    const Text added = pending();
    editor->RemoveLesson(u"n", true);
    editor->Undo();
    EXPECT_EQ(pending(), added); // in the same order
    editor->Undo();
    editor->Undo();
    EXPECT_EQ(pending(), u"");

    // Gone for one save, there for the next, and taken back to the beginning: the row is still there.
    editor->RemoveLesson(u"h", true);
    ASSERT_TRUE(editor->SaveDatabase());
    editor->AddLesson(u"h", u"again", u"", ltLesson);
    ASSERT_TRUE(editor->SaveDatabase());
    editor->Undo();
    EXPECT_EQ(pending(), u"DELETE'h' ");
    editor->Undo();
    EXPECT_EQ(pending(), u"");
    EXPECT_EQ(editor->GetLessonTitle(u"h"), u"H");
    ASSERT_TRUE(editor->SaveDatabase());
    EXPECT_EQ(test::ReadRows(database.ConnectionString()).size(), 7u);

    // A host that saves at every change.
    Subscription saving = editor->DataChanged.Add([this] { EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error); });
    editor->AddLesson(u"auto", u"", u"", ltLesson);
    editor->RemoveLesson(u"h", true);
    for (int steps : {1, 2}) {
        for (int i = 0; i < steps; ++i) editor->Undo();
        EXPECT_EQ(test::ReadRows(database.ConnectionString()).size(), steps == 1 ? 8u : 7u);
        for (int i = 0; i < steps; ++i) editor->Redo();
        EXPECT_EQ(test::ReadRows(database.ConnectionString()).size(), 7u);
        EXPECT_FALSE(test::ReadRows(database.ConnectionString()).contains(u"h"));
    }
    editor->Undo();
    editor->Undo();
    saving = {};

    editor->SetLocked(true);
    EXPECT_FALSE(editor->CanUndo() || editor->CanRedo());
    editor->SetLocked(false);
    Take();
    bool couldUndo = false;
    Subscription number = editor->DataChanged.Add([&] {
        couldUndo = editor->CanUndo();
        editor->Undo(); // not inside the edit
        editor->Redo();
    });
    editor->UpdateLesson(u"h", u"New", u"", ltLesson);
    EXPECT_EQ(editor->GetLessonTitle(u"h"), u"New");
    EXPECT_TRUE(couldUndo && !editor->CanRedo()); // a new edit ends what could be redone
    number = {};
    editor->Undo();
    EXPECT_EQ(Take(), u"D D ");
    for (int i = 0; i < 1200; ++i) editor->UpdateLesson(u"h", ToText(i), u"", ltLesson);
    int undone = 0;
    for (; editor->CanUndo(); ++undone) editor->Undo();
    EXPECT_EQ(undone, 1000);
    EXPECT_EQ(editor->GetLessonTitle(u"h"), u"199");
    ASSERT_TRUE(editor->LoadDatabase());
    EXPECT_FALSE(editor->CanRedo());
}

struct Bag : PropertyBag {
    Value ReadProperty(const Text& name, const Value& defaultValue) override {
        const auto found = values.find(name);
        return found == values.end() ? defaultValue : found->second;
    }
    void WriteProperty(const Text& name, const Value& value, const Value& defaultValue) override {
        if (value != defaultValue) values[name] = value;
    }
    std::map<Text, Value> values;
};

TEST_F(EditorOnFile, PropertiesAndDisplay) {
    Text changed;
    editor->PropertyChanged.Add([&](const Text& name) { changed += name + u" "; });
    test::FakeTreeWindow window(editor->Tree());
    editor->AttachWindow(&window);
    Bag usual, set;
    editor->WriteProperties(usual);
    editor->SetSingleExpand(true);
    editor->SetLocked(true);
    editor->SetAllowDragDrop(false);
    editor->SetConflictCheck(true);
    EXPECT_EQ(changed, u"SingleExpand Locked AllowDragDrop ConflictCheck ");
    EXPECT_TRUE(window.isSingleExpand);
    editor->WriteProperties(set);
    EXPECT_TRUE(usual.values.empty()) << "nothing but defaults";
    EXPECT_EQ(set.values,
              (std::map<Text, Value>{
                  {u"AllowDragDrop", false}, {u"ConflictCheck", true}, {u"Locked", true}, {u"SingleExpand", true}}));
    for (Bag* bag : {&usual, &set}) {
        Bag read, other;
        editor->ReadProperties(*bag);
        editor->WriteProperties(read);
        EXPECT_EQ(read.values, bag->values);
        EXPECT_EQ(window.isSingleExpand, bag == &set);
        other.values[u"Locked"] = Text(u"of another kind");
        editor->ReadProperties(other);
        editor->WriteProperties(usual);
        EXPECT_TRUE(usual.values.empty());
    }
    editor->LockDisplay();
    editor->LockDisplay();
    EXPECT_TRUE(window.isFrozen);
    EXPECT_EQ(window.freezes, 1);
    test::FakeTreeWindow another(editor->Tree());
    editor->AttachWindow(&another);
    EXPECT_TRUE(another.isFrozen);
    editor->UnlockDisplay();
    EXPECT_FALSE(another.isFrozen);
    editor->AttachWindow(&window);
    editor->SetCurrentLessonID(u"a");
    editor->ExpandAll();
    EXPECT_TRUE(At(u"s").IsExpanded() && !At(u"c").IsExpanded());
    const std::function<void()> showing[] = {[&] { editor->ExpandAll(); }, [&] { editor->MoveCurrent(gmtDown); },
                                             [&] { editor->RemoveLesson(u"s", false); }};
    for (const auto& act : showing) {
        window.Told();
        act();
        EXPECT_NE(window.Told().find("ensure:a"), std::string::npos) << &act - showing;
    }
    ASSERT_TRUE(editor->LoadDatabase());
    editor->ExpandAll();
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
        Text heard;
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

TEST_F(EditorOnFile, ADragThatComesToNothingLeavesTheNotificationsOn) {
    test::FakeTreeWindow window(editor->Tree());
    editor->AttachWindow(&window);
    const auto drag = [&](const Text& from, Point to, MouseButton button = MouseButton::Left,
                          MouseButton buttons = MouseButton::Left) {
        window.MoveTo(window.At(At(from)));
        editor->OnMouseDown(button);
        window.MoveTo(to);
        editor->OnMouseMove(buttons, window.At(At(from)));
        editor->OnMouseMove(buttons, to);
        return editor->DragDrop().Active();
    };
    editor->ExpandAll();
    const Point behindA = window.At(At(u"a"), 10);
    const std::function<void()> ends[] = {[&] { editor->OnKeyPress(27); },
                                          [&] { editor->OnMouseDown(MouseButton::Right); },
                                          [&] { editor->SetLocked(true); }, [&] { editor->SetAllowDragDrop(false); }};
    for (const auto& end : ends) {
        ASSERT_TRUE(drag(u"b", behindA));
        editor->OnMouseDown(MouseButton::Left); // nor does it begin anew
        editor->OnMouseUp(MouseButton::Right);
        EXPECT_TRUE(editor->DragDrop().Active());
        end();
        EXPECT_FALSE(editor->DragDrop().Active());
        editor->OnMouseUp(MouseButton::Left);
        if (!editor->Locked() && editor->AllowDragDrop()) continue;
        EXPECT_FALSE(drag(u"b", behindA));
        editor->SetLocked(false);
        editor->SetAllowDragDrop(true);
        editor->OnMouseMove(MouseButton::Left, behindA); // what was pressed before does not count
        EXPECT_FALSE(editor->DragDrop().Active());
    }
    EXPECT_FALSE(drag(u"b", behindA, MouseButton::Right) || drag(u"b", behindA, MouseButton::Left, MouseButton::Right));
    editor->OnMouseUp(MouseButton::Left);
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    Take();
    drag(u"b", window.At(At(u"a"), 10));
    EXPECT_FALSE(editor->CanMoveCurrent(gmtDown));
    editor->OnKeyDown(46);
    editor->OnMouseUp(MouseButton::Left);
    EXPECT_EQ(Shape(), u"(g(b a s(c d)) h)");
    EXPECT_EQ(Take(), u"Sa D "); // the drop's target is the selected one, deliberately
    editor->Undo();
    EXPECT_EQ(Shape(), u"(g(a b s(c d)) h)");
    editor->Redo();
    EXPECT_EQ(Shape() + Take(), u"(g(b a s(c d)) h)D D ");
    drag(u"a", window.At(At(u"h"), 10));
    ASSERT_TRUE(editor->DragDrop().Active());
    editor->RemoveLesson(u"a", true); // the dragged one
    EXPECT_FALSE(editor->DragDrop().Active());
    Take();
    editor->SetCurrentLessonID(u"h");
    EXPECT_EQ(Take(), u"Sh ");
    editor->AttachWindow(nullptr);
}

} // namespace
} // namespace dax
