// Edits, moves, saves and reloads of the hierarchy, from bytes.
#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"
#include "tree/ReferenceTree.h"

#include <set>

namespace dax::fuzz {

namespace {

constexpr const char16_t* ids[] = {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"\u00E9\U0001D11E", u"it's", u" "};
constexpr const char16_t* titles[] = {u"", u"O'Neil", u"\\;--#", u"\U0001D11E \u00E4", u"{fn ?}", u"#1/2/2000#"};
constexpr const char16_t* elsewhere[] = {u"", u"none/such.db", u"Driver={none}", u"Provider=none;PWD=secret"};
// A letter for each byte: add, update, remove, move, select, save, load.
constexpr char actions[] = {'a', 'a', 'a', 'a', 'u', 'r', 'r', 'm', 'm', 'm', 'm', 's', 's', 'S', 'S', 'l'};
constexpr int types[] = {ltGroup, ltLesson, ltUnknown, ltInvalid, ltDatabase, 7};

struct Model {
    test::ReferenceTree tree;
    std::map<Text, std::pair<Text, int>> texts; // title, and type as it is stored

    bool Has(const Text& id) const { return tree.parents.contains(id); }
    std::map<Text, Text> Rows() const {
        std::map<Text, Text> rows;
        for (const auto& [id, parent] : tree.parents) {
            int depth = 1;
            for (Text up = parent; !up.empty(); up = tree.parents.at(up)) ++depth;
            rows[id] = texts.at(id).first + u"|i" + id + u"|" + parent + u"|" + ToText(depth) + u"|" +
                       ToText(static_cast<int>(tree.Index(id)) + 1) + u"|" + ToText(texts.at(id).second) + u"||";
        }
        return rows;
    }
    Text Shape(const Text& top = {}) const {
        Text shape = top;
        const auto& children = tree.children.at(top);
        for (size_t i = 0; i < children.size(); ++i) shape += (i ? u" " : u"(") + Shape(children[i]);
        return children.empty() ? shape : shape + u")";
    }
};

class HierarchyDriver {
public:
    HierarchyDriver(Input input, const test::TestDatabase& content)
        : bytes(input), callsBack(bytes.Below(4) == 0), database(content) {
        database.Run({u"DELETE FROM velmoraLessons"});
        editor.SetConnectionString(database.ConnectionString());
        Require(editor.LoadDatabase(), "an empty table loads");
        if (!callsBack) return;
        const auto callBack = [this] {
            if (depth < 2 && bytes.Below(3) == 0) Step();
            if (bytes.Below(40) == 39) heard.editor.reset(); // the host lets go of it
        };
        editor.DataChanged.Add(callBack);
        editor.AfterSelectionChange.Add([callBack](const Text&) { callBack(); });
        editor.Error.Add([callBack](int32_t, const Text&, const Text&) { callBack(); });
    }

    void Run() {
        while (!bytes.AtEnd()) {
            heard.Take();
            const Text before = Description(), selected = editor.CurrentLessonID();
            const bool couldUndo = editor.CanUndo();
            const unsigned number = ++steps;
            Step();
            if (!heard.editor) return;
            if (!callsBack && number == edits && bytes.Below(3) == 0) UndoAndRedoOne(before, selected, couldUndo);
            if (!callsBack && bytes.Below(16) == 15) UndoAndRedoAll();
            if (!heard.editor) return;
            Check();
        }
        if (!isOpen && !callsBack) return;
        if (!editor.SaveDatabase() || !heard.editor) return;
        const Text shape = heard.Shape();
        if (callsBack) return; // the listener may change it in between
        Require(editor.LoadDatabase(), "what was saved loads");
        RequireEqual(ToUtf8(heard.Shape()), ToUtf8(shape), "the tree loaded again");
    }

private:
    void Step() {
        if (!heard.editor) return;
        ++depth;
        switch (bytes.OneOf(actions)) {
        case 'a':
            Add();
            break;
        case 'u':
            Update();
            break;
        case 'r':
            Remove();
            break;
        case 'm':
            Move();
            break;
        case 's':
            Select();
            break;
        case 'S':
            bytes.Below(2) ? Save() : editor.ExpandAll();
            break;
        default:
            if (const size_t which = bytes.Below(6); which > 1)
                Load();
            else if (which == 0)
                Clear();
            else if (callsBack)
                editor.SetConnectionString(bytes.OneOf(elsewhere));
        }
        --depth;
    }

    // Everything that an undone edit must leave as it was.
    Text Description() const {
        Text text;
        for (const Node* node = editor.Tree().First(); node; node = modTVW::GetNextNode(node)) {
            text += node->Key() + u"|" + node->Caption() + u"|" + node->Tag() + u"|" + ToText(node->Image()) +
                    (node->IsExpanded() ? u"+" : u"-") + (node->FirstChild() ? u"(" : u")") + u"\n";
        }
        return heard.Shape() + u"\n" + text;
    }

    void UndoAndRedoOne(const Text& before, const Text& selected, bool couldUndo) {
        const Text after = Description();
        if (before == after) return;
        Require(editor.CanUndo(), "an edit can be undone");
        editor.Undo();
        RequireEqual(ToUtf8(Description()), ToUtf8(before), "the tree after an edit was undone");
        RequireEqual(ToUtf8(editor.CurrentLessonID()), ToUtf8(selected), "what is selected after an edit was undone");
        Require(editor.CanRedo() && (couldUndo || !editor.CanUndo()), "what was undone can be redone");
        editor.Redo();
        RequireEqual(ToUtf8(Description()), ToUtf8(after), "the tree after an edit was redone");
    }

    // Back to the tree that was loaded, perhaps saved so, and forward again.
    void UndoAndRedoAll() {
        if (!isOpen) return;
        const Text shape = heard.Shape();
        size_t count = 0;
        for (; editor.CanUndo(); ++count) editor.Undo();
        RequireEqual(ToUtf8(heard.Shape()), ToUtf8(loaded.Shape()), "the tree with everything undone");
        if (bytes.Below(2)) {
            Require(editor.SaveDatabase(), "a save with everything undone fails: " + ToUtf8(heard.error));
            Require(test::ReadRows(database.ConnectionString()) == loaded.Rows(),
                    "the rows are those that were loaded");
            saved = loaded;
            added.clear();
            for (const auto& row : model.tree.parents)
                if (!loaded.Has(row.first)) added.insert(row.first);
        }
        for (; editor.CanRedo(); --count) editor.Redo();
        Require(count == 0, "as many edits are redone as were undone");
        RequireEqual(ToUtf8(heard.Shape()), ToUtf8(shape), "the tree with everything redone");
        current = editor.CurrentLessonID();
    }

    void Check() {
        CheckTree(editor.Tree());
        if (callsBack) return;
        Require(editor.NodeCount() == (isOpen ? static_cast<int32_t>(model.tree.parents.size()) + 1 : 0), "NodeCount");
        RequireEqual(ToUtf8(heard.Shape()), ToUtf8(isOpen ? model.Shape() : Text()), "the tree");
        RequireEqual(ToUtf8(editor.CurrentLessonID()), ToUtf8(current), "the selected lesson");
        for (const auto& [id, text] : model.texts) {
            if (!model.Has(id)) continue;
            RequireEqual(ToUtf8(editor.GetLessonTitle(id)), ToUtf8(text.first), "the title of " + ToUtf8(id));
            Require(editor.GetLessonType(id) == text.second, "the type of " + ToUtf8(id));
        }
    }

    void Add() {
        const Text id = bytes.OneOf(ids), title = bytes.OneOf(titles);
        const int type = bytes.OneOf(types);
        if (isOpen && !model.Has(id)) {
            if (current.empty()) {
                model.tree.Insert(id, {}, 0);
            } else {
                model.tree.Insert(id, model.tree.parents.at(current), model.tree.Index(current) + 1);
            }
            added.insert(id);
            deleted.erase(id);
        }
        edits = steps;
        if (isOpen) {
            model.texts[id] = {title, Stored(type)};
            current = id;
        }
        editor.AddLesson(id, title, u"i" + id, LessonTypes(type));
    }

    void Update() {
        const Text id = bytes.OneOf(ids), title = bytes.OneOf(titles);
        const int type = bytes.OneOf(types);
        edits = steps;
        if (model.Has(id)) model.texts[id] = {title, Stored(type)};
        editor.UpdateLesson(id, title, u"i" + id, LessonTypes(type));
    }

    void Remove() {
        const Text id = bytes.OneOf(ids);
        const bool withChildren = bytes.Below(2) == 0;
        if (model.Has(id)) {
            for (const Text& gone : model.tree.Remove(id, withChildren, current)) {
                deleted.insert(gone);
                added.erase(gone);
            }
        }
        edits = steps;
        editor.RemoveLesson(id, withChildren);
    }

    void Move() {
        const auto movement = static_cast<GroupMovementTypes>(bytes.Below(6)); // 0 and 5 are none
        const bool isMovement = movement >= gmtUp && movement <= gmtOutdent;
        const auto to =
            current.empty() || !isMovement ? std::nullopt : model.tree.Destination(current, static_cast<int>(movement));
        Require(callsBack || editor.CanMoveCurrent(movement) == to.has_value(), "CanMoveCurrent");
        if (to) model.tree.Place(current, to->first, to->second);
        edits = steps;
        editor.MoveCurrent(movement);
    }

    void Select() {
        const Text id = bytes.Below(4) ? Text(bytes.OneOf(ids)) : Text();
        current = model.Has(id) ? id : Text(); // an unknown one selects nothing
        editor.SetCurrentLessonID(id);
    }

    void Save() {
        const auto breaks = [](const Text& id) { return id.find(u'\'') != Text::npos; };
        bool fails = !isOpen;
        for (const auto& row : model.tree.parents) fails = fails || breaks(row.first);
        for (const Text& id : deleted) fails = fails || breaks(id);
        for (const Text& id : added) fails = fails || saved.Has(id); // the insert finds the row that is still there
        const bool isSaved = editor.SaveDatabase();
        if (callsBack) return;
        Require(isSaved != fails, fails ? "a save that must fail" : "a save fails: " + ToUtf8(heard.error));
        Require((heard.Take().find(u"ESaveDatabase") != Text::npos) == fails, "failures are told");
        if (isSaved) {
            saved = model;
            added.clear();
            deleted.clear();
        }
        Require(test::ReadRows(database.ConnectionString()) == saved.Rows(), "the rows are what was saved last");
    }

    void Load() {
        const bool isLoaded = editor.LoadDatabase();
        if (callsBack) return;
        Require(isLoaded, "what was saved loads");
        model = loaded = saved;
        added.clear();
        deleted.clear();
        isOpen = true;
        if (!model.Has(current)) current.clear();
    }

    void Clear() {
        editor.Clear();
        model = loaded = {};
        added.clear();
        deleted.clear();
        current.clear();
        isOpen = false;
    }

    static int Stored(int type) { return type == ltGroup || type == ltLesson ? type : int{ltUnknown}; }

    Bytes bytes;
    bool callsBack, isOpen = true;
    int depth = 0;
    const test::TestDatabase& database;
    test::HeardEditor heard;
    GroupEditor& editor = *heard.editor;
    Model model, saved, loaded;
    unsigned steps = 0, edits = 0; // the number of the step that was an edit
    Text current;
    std::set<Text> added, deleted;
};

} // namespace

void DriveHierarchyOn(Input input, const test::TestDatabase& database) { HierarchyDriver(input, database).Run(); }

void DriveHierarchy(Input input) {
    static const test::TestDatabase database(Engine::SQLite);
    static const bool isMade = (test::CreateTables(database), true);
    if (isMade) DriveHierarchyOn(input, database);
}

} // namespace dax::fuzz
