// What each edit of a hierarchy changed, for undo and redo: places, texts, expansion, the
// selection, and the identifiers whose rows are still to be inserted or deleted.
#pragma once

#include "base/IDCollection.h"
#include "tree/NodeTree.h"

#include <deque>
#include <optional>
#include <unordered_map>
#include <vector>

namespace dax {

// Memory grows with the number of changes, not with the size of the tree.
class EditHistory : private TreeListener {
public:
    static constexpr size_t maxEdits = 1000; // edits; the oldest ones are dropped

    EditHistory(NodeTree& tree, IDCollection& added, IDCollection& deleted);
    ~EditHistory() override;
    EditHistory(const EditHistory&) = delete;
    EditHistory& operator=(const EditHistory&) = delete;

    // True inside an edit as well, once it has changed something.
    bool CanUndo() const { return !done.empty() || !open.changes.empty(); }
    bool CanRedo() const { return !undone.empty(); }
    // False, and nothing done, when there is nothing, or inside an edit.
    bool Undo();
    bool Redo();
    void Clear();
    // The rows of the tree were written and the pending identifiers cleared; what was done can still be undone.
    void Saved();

    // While one exists, all changes of the tree belong to one edit. The editor must outlive it.
    class Edit {
    public:
        explicit Edit(EditHistory& history) : history(history) { history.Begin(); }
        ~Edit() { history.End(); }
        Edit(const Edit&) = delete;
        Edit& operator=(const Edit&) = delete;

    private:
        EditHistory& history;
    };

    // Inside an edit: gives the node other texts and another picture.
    void SetTexts(Node& node, const Text& caption, const Text& tag, int image);
    // Inside an edit: the lesson came into the tree, or left it.
    void MarkAdded(const Text& id);
    void MarkDeleted(const Text& id);

private:
    enum class Kind { Inserted, Removed, Moved, Texts, Expanded };
    // By identifiers, since an undone removal makes new nodes. Empty: the root; as `previous`: none.
    struct Position {
        Text parent, previous;
    };
    struct Entry { // of a branch, in the order of the tree
        Text key, caption, tag;
        int image = 0;
        bool isExpanded = false;
        int depth = 0; // below the top of the branch
    };
    struct Change {
        Kind kind;
        Text key;
        Position from = {}, to = {};
        std::vector<Entry> branch = {}; // of a node that is not in the tree; of Texts: what is not shown
        bool isExpanded = false;        // of Expanded: what the edit did
    };
    struct PendingChange {
        IDCollection* list;
        Text id;
        bool isAdded;
        Text next = {}; // the identifier that followed a removed one
    };
    struct Step {
        std::vector<Change> changes;
        std::vector<PendingChange> pending; // of the last time that the edit was done or undone
        unsigned saves = 0;                 // the number of saves before
        std::optional<Text> selectedBefore, selectedAfter;
    };

    void NodeAdded(Node& node) override;
    void NodeRemoving(Node& node) override;
    void NodeMoving(Node& node) override;
    void NodeMoved(Node& node) override;
    void NodeChanged(Node& node, NodeAspect aspect) override;

    // While a step is undone or redone no event is raised before its end: no edit begins within it.
    bool IsRecording() const { return depth > 0; }
    void Begin();
    void End();
    void Apply(Step& step, bool undo);
    void Apply(Change& change, bool undo);
    void ApplyPending(Step& step, bool undo);
    void Revert(const std::vector<PendingChange>& changes);
    void AddPending(IDCollection& list, const Text& id);
    void RemovePending(IDCollection& list, const Text& id);
    void Restore(const Change& change, const Position& position);
    void Exchange(Change& change);
    std::optional<Text> SelectedKey() const;
    Node& Find(const Text& key) const; // the root for the empty one; throws Error when it is not there
    static Position PositionOf(const Node& node);
    static std::vector<Entry> Capture(const Node& top);

    NodeTree& tree;
    IDCollection &added, &deleted;
    std::deque<Step> done;
    std::vector<Step> undone;
    Step open;
    bool isOpenDiscarded = false; // the tree was reloaded within the edit, which is dropped
    int depth = 0;
    unsigned saves = 0;
    // Whether the database has the row, for lessons that came or left since the last save. For others it follows from
    // the tree: the database has exactly the rows of what the tree showed then.
    std::unordered_map<Text, bool> stored;
};

} // namespace dax
