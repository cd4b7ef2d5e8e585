// Edits, moves, saves and reloads of the hierarchy, from bytes.
#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"
#include "tree/ReferenceTree.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace dax::fuzz {

namespace {

constexpr const char16_t* ids[] = {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"\u00E9\U0001D11E", u"it's", u" "};
constexpr const char16_t* titles[] = {u"", u"O'Neil", u"\\;--#", u"\U0001D11E \u00E4", u"{fn ?}", u"#1/2/2000#"};
// A letter for each byte: add, update, remove, move, select, save or expand, load or clear.
constexpr char actions[] = {'a', 'a', 'a', 'a', 'u', 'r', 'r', 'm', 'm', 'm', 'm', 's', 's', 'S', 'S', 'l'};
constexpr int types[] = {ltGroup, ltLesson, ltUnknown, ltInvalid, ltDatabase, 7};

struct Model : test::ReferenceTree {
    std::map<Text, std::pair<Text, int>> texts; // title, and type as it is stored
    std::set<Text> added, deleted;              // since it was loaded or saved

    void SetTexts(const Text& id, const Text& title, int type) {
        texts[id] = {title, type == ltGroup || type == ltLesson ? type : int{ltUnknown}};
    }
    std::map<Text, Text> Rows() const {
        std::map<Text, Text> rows;
        for (const auto& [id, parent] : parents) {
            int depth = 1;
            for (Text up = parent; !up.empty(); up = parents.at(up)) ++depth;
            rows[id] = texts.at(id).first + u"|i" + id + u"|" + parent + u"|" + ToText(depth) + u"|" +
                       ToText(static_cast<int>(Index(id)) + 1) + u"|" + ToText(texts.at(id).second) + u"||";
        }
        return rows;
    }
    // Against a table with those rows: an identifier with a quote breaks its statement, deliberately, and an insert
    // finds the row of an entry that was removed and added again.
    bool SaveFails(const Model& saved) const {
        const auto breaks = [](const Text& id) { return id.find(u'\'') != Text::npos; };
        return std::ranges::any_of(parents, breaks, &std::pair<const Text, Text>::first) ||
               std::ranges::any_of(deleted, breaks) ||
               std::ranges::any_of(added, [&](const Text& id) { return saved.Has(id); });
    }
};

class HierarchyDriver : public ControlDriver<GroupEditor> {
public:
    HierarchyDriver(Input input, const test::TestDatabase& content) : ControlDriver(input, {}), database(content) {
        control = std::move(recorded.editor);
        database.Run({u"DELETE FROM velmoraLessons"});
        editor.SetConnectionString(database.ConnectionString());
        Require(editor.LoadDatabase(), "an empty table loads");
        CallBackIn(editor.DataChanged, editor.AfterSelectionChange, editor.Error);
    }

private:
    void Round() override {
        recorded.Take();
        const auto before = Description();
        const bool couldUndo = editor.CanUndo();
        isEdit = false;
        Step();
        if (control) CheckTree(editor.Tree());
        if (callsBack) return;
        Check();
        if (isEdit && bytes.Below(3) == 0) UndoAndRedoOne(before, couldUndo);
        if (isOpen && bytes.Below(16) == 15) UndoAndRedoAll();
    }

    void Finish() override {
        if (Save() && control) Load();
    }

    void Do() override {
        const char action = bytes.OneOf(actions);
        const Text id = bytes.OneOf(ids);
        isEdit = std::string_view("aurm").find(action) != std::string_view::npos;
        switch (action) {
        case 'a':
        case 'u': {
            const Text title = bytes.OneOf(titles);
            const int type = bytes.OneOf(types);
            if (isOpen && action == 'a' && !model.Has(id)) {
                const bool isFirst = current.empty();
                model.Insert(id, isFirst ? Text() : model.parents.at(current), isFirst ? 0 : model.Index(current) + 1);
                model.added.insert(id);
                model.deleted.erase(id);
            }
            if (model.Has(id)) model.SetTexts(id, title, type);
            if (action == 'u') return editor.UpdateLesson(id, title, u"i" + id, LessonTypes(type));
            if (isOpen) current = id;
            return editor.AddLesson(id, title, u"i" + id, LessonTypes(type));
        }
        case 'r': {
            const bool withChildren = bytes.Below(2) == 0;
            for (const Text& gone : model.Has(id) ? model.Remove(id, withChildren, current) : std::vector<Text>()) {
                model.deleted.insert(gone);
                model.added.erase(gone);
            }
            return editor.RemoveLesson(id, withChildren);
        }
        case 'm': {
            const auto movement = static_cast<GroupMovementTypes>(bytes.Below(6)); // 0 and 5 are none
            const auto to = current.empty() ? std::nullopt : model.Destination(current, movement);
            Require(callsBack || editor.CanMoveCurrent(movement) == to.has_value(), "CanMoveCurrent");
            if (to) model.Place(current, to->first, to->second);
            return editor.MoveCurrent(movement);
        }
        case 's':
            current = model.Has(id) ? id : Text(); // an unknown one selects nothing
            return editor.SetCurrentLessonID(id);
        case 'S':
            return bytes.Below(2) ? (void)Save() : editor.ExpandAll();
        default:
            if (const size_t which = bytes.Below(6); which > 1) return Load();
            if (callsBack)
                return editor.SetConnectionString(bytes.Below(2) ? u"Provider=none;PWD=secret" : u"none/such.db");
            editor.Clear();
            model = loaded = {};
            current.clear();
            isOpen = false;
        }
    }

    // Everything that an undone edit must leave as it was: the nodes, and what is selected.
    std::pair<Text, Text> Description() const {
        Text text;
        for (const Node* node = editor.Tree().First(); node; node = modTVW::GetNextNode(node)) {
            text += ToText(modTVW::GetIndentLevel(node)) + (node->IsExpanded() ? u"+" : u"-") + node->Key() + u"|" +
                    node->Caption() + u"|" + node->Tag() + u"|" + ToText(node->Image()) + u"\n";
        }
        return {text, editor.CurrentLessonID()};
    }

    void UndoAndRedoOne(const std::pair<Text, Text>& before, bool couldUndo) {
        const auto after = Description();
        if (before.first == after.first) return;
        Require(editor.CanUndo(), "an edit can be undone");
        editor.Undo();
        RequireEqual(Description(), before, "the tree after an edit was undone");
        Require(editor.CanRedo() && (couldUndo || !editor.CanUndo()), "what was undone can be redone");
        editor.Redo();
        RequireEqual(Description(), after, "the tree after an edit was redone");
    }

    // Back to the tree that was loaded, perhaps saved so, and forward again.
    void UndoAndRedoAll() {
        size_t count = 0;
        for (; editor.CanUndo(); ++count) editor.Undo();
        RequireTree(loaded, "the tree with everything undone");
        if (bytes.Below(2)) {
            Require(editor.SaveDatabase(), "a save with everything undone fails: " + ToUtf8(recorded.error));
            saved = loaded;
            RequireRows("the rows that were loaded");
            model.added.clear();
            for (const auto& row : model.parents)
                if (!loaded.Has(row.first)) model.added.insert(row.first);
        }
        for (; editor.CanRedo(); --count) editor.Redo();
        Require(count == 0, "as many edits are redone as were undone");
        RequireTree(model, "the tree with everything redone");
        current = editor.CurrentLessonID();
    }

    void RequireTree(const Model& should, const char* what) const {
        RequireEqual(test::ReferenceTree(editor.Tree()).children, should.children, what);
    }
    void RequireRows(const char* what) const {
        RequireEqual(test::ReadRows(database.ConnectionString()), saved.Rows(), what);
    }

    void Check() const {
        Require(editor.Tree().IsEmpty() != isOpen, "a root, as long as it is open");
        RequireTree(model, "the tree");
        RequireEqual(editor.CurrentLessonID(), current, "the selected lesson");
        for (const auto& row : model.parents) {
            const auto& [title, type] = model.texts.at(row.first);
            RequireEqual(editor.GetLessonTitle(row.first), title, "the title of " + ToUtf8(row.first));
            Require(editor.GetLessonType(row.first) == type, "the type of " + ToUtf8(row.first));
        }
    }

    bool Save() {
        const bool fails = !isOpen || model.SaveFails(saved);
        const bool isSaved = editor.SaveDatabase();
        if (callsBack) return isSaved;
        Require(isSaved != fails, fails ? "a save that must fail" : "a save fails: " + ToUtf8(recorded.error));
        Require((recorded.Take().find(u"ESaveDatabase") != Text::npos) == fails, "failures are reported");
        if (isSaved) {
            model.added.clear();
            model.deleted.clear();
            saved = model;
        }
        RequireRows("the rows that were saved last");
        return isSaved;
    }

    void Load() {
        const bool isLoaded = editor.LoadDatabase();
        if (callsBack) return;
        Require(isLoaded, "what was saved loads");
        model = loaded = saved;
        isOpen = true;
        if (!model.Has(current)) current.clear();
        Check();
    }

    bool isOpen = true, isEdit = false; // the last step was an edit
    const test::TestDatabase& database;
    test::RecordingEditor recorded;
    GroupEditor& editor = *recorded.editor;
    Model model, saved, loaded;
    Text current;
};

} // namespace

void DriveHierarchyOn(Input input, const test::TestDatabase& database) { HierarchyDriver(input, database).Run(); }

void DriveHierarchy(Input input) {
    static const test::EmptyCourse course;
    DriveHierarchyOn(input, course);
}

} // namespace dax::fuzz
