// The groups and lessons of one content database as an editable tree: loading, saving, editing, questions and events.
// Complete without a window; with one it also turns mouse and keys into its events.
#pragma once

#include "base/Error.h"
#include "controls/PropertyBag.h"
#include "controls/Reentrance.h"
#include "hierarchy/EditHistory.h"
#include "hierarchy/HierarchyRows.h"
#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

namespace dax {

// Always held by a shared pointer: a listener of an event may do anything, including releasing the editor.
class GroupEditor : public std::enable_shared_from_this<GroupEditor> {
public:
    static std::shared_ptr<GroupEditor> Create(PropertyCollectionFactory factory = NewPropertyCollection);
    ~GroupEditor();

    bool AllowDragDrop() const { return allowDragDrop; }
    void SetAllowDragDrop(bool allow);
    bool Locked() const { return isLocked; }
    void SetLocked(bool locked);
    bool SingleExpand() const { return isSingleExpand; }
    void SetSingleExpand(bool single);
    // When true, SaveDatabase saves nothing once another author has changed the rows of the hierarchy since they were
    // loaded or last saved: Error with ErrorNumbers::Conflict names the changes, and the edits stay in the tree. When
    // false, the default, the last save wins.
    bool ConflictCheck() const { return checksConflicts; }
    void SetConflictCheck(bool check);
    int32_t NodeCount() const { return tree.Count(); }
    const Text& ConnectionString() const { return connectionString; }
    void SetConnectionString(const Text& connection) { connectionString = connection; }
    const Text& DatabaseTitle() const { return databaseTitle; }
    void SetDatabaseTitle(const Text& title);
    Text CurrentLessonID() const;
    void SetCurrentLessonID(const Text& lessonID); // an unknown one selects nothing

    void LockDisplay();
    void UnlockDisplay();
    void ExpandAll();
    void CollapseAll(); // but for the root

    bool Clear(); // false always, deliberately; it is no failure
    // Both return false after having raised Error.
    bool LoadDatabase();
    bool SaveDatabase();

    void AddLesson(const Text& lessonID, const Text& title, const Text& identifier, LessonTypes type);
    void UpdateLesson(const Text& lessonID, const Text& title, const Text& identifier, LessonTypes type);
    // Without the children these come up one level, in reverse order, to where the lesson was.
    void RemoveLesson(const Text& lessonID, bool includeChildren);
    bool CanMoveCurrent(GroupMovementTypes movement) const;
    void MoveCurrent(GroupMovementTypes movement);

    // Adding, updating, removing, moving and dropping are undone and done again, the last edit first, a thousand of
    // them. A save keeps them, loading and Clear drop them. Both raise DataChanged, and AfterSelectionChange when
    // another entry is selected. Like a movement they are not possible while the editor is locked or during a drag;
    // then, and when there is nothing to undo, they do nothing.
    bool CanUndo() const;
    void Undo();
    bool CanRedo() const;
    void Redo();

    // The empty identifier is that of the database.
    Text GetLessonTitle(const Text& lessonID) const;
    Text GetLessonIdentifier(const Text& lessonID) const;
    LessonTypes GetLessonType(const Text& lessonID) const;
    int32_t GetChildLessonCount(const Text& lessonID) const; // descendants at every depth; 0 for the database
    IDCollection GetChildLessonIDCollection(const Text& lessonID) const;
    // Selects the next entry in whose title, identifier or lessonID the text occurs, whatever its case, and returns its
    // lessonID; empty when there is none. The search begins after the selected entry, goes down the tree whether
    // expanded or not, and, when it wraps around, ends before that entry. The database itself is never found. As in the
    // lesson map, all three fields are looked at, whatever `findType` says.
    Text FindLesson(const Text& text, FindTypes findType, bool wrapAround);
    // As loaded; null for a lesson that was added later.
    std::shared_ptr<PropertyCollection> GetLessonProperties(const Text& lessonID);
    std::shared_ptr<PropertyCollection> GetAggregateProperties(const Text& lessonID) const;
    std::shared_ptr<PropertyCollection> GetLessonTokens(const Text& lessonID) const;

    Event<Text> AfterSelectionChange; // the selected lesson
    Event<> DataChanged;
    Event<> DeleteRequest;                          // the host decides; nothing was deleted
    Event<int32_t, const Text&, const Text&> Error; // number, description, method
    Event<> DblClick;
    Event<Text> PropertyChanged; // for the host's property bag: the name of a property to be stored

    void ReadProperties(PropertyBag& bag);
    void WriteProperties(PropertyBag& bag) const;

    // The window that shows Tree(); null before it is destroyed.
    void AttachWindow(TreeWindow* newWindow);
    NodeTree& Tree() { return tree; }
    bool IsDragging() const { return dragDrop.Active(); }
    void SetProgress(HierarchyProgress newProgress) { progress = std::move(newProgress); }

    // Input from the window. Keys and characters are virtual-key and character codes.
    void OnDblClick();
    void OnKeyDown(int keyCode);
    void OnKeyPress(int keyCode);
    void OnMouseDown(MouseButton button);
    void OnMouseMove(MouseButton button, Point point);
    void OnMouseUp(MouseButton button);
    void OnCollapsed(Node& node);
    void OnTimer(TreeTimer timer);

private:
    explicit GroupEditor(PropertyCollectionFactory factory);
    void MarkChanged();
    void ShowSelected(); // scrolls its row into view
    void BeginLoading();
    void Empty();
    void RaiseError(const dax::Error& failure, const char16_t* method);
    void CancelDrag();
    void OnDrop(Node& node, const DropTarget& target);

    PropertyCollectionFactory factory;
    NodeTree tree;
    LMESubclasser subclasser;
    LMEDragDropSupport dragDrop;
    TreeWindow* window = nullptr;
    LessonPropertyStore lessonPropertyStore;
    RowFingerprints knownRows;
    IDCollection addedLessonIDs, deletedLessonIDs;
    EditHistory history{tree, addedLessonIDs, deletedLessonIDs};
    HierarchyProgress progress;
    Text connectionString;
    Text databaseTitle = u"velmora database";
    bool allowDragDrop = true, isLocked = false, isSingleExpand = false, checksConflicts = false;
    bool isDisplayLocked = false;
    bool isLoading = false;
    // Counts the databases shown so far: a listener that loads another one ends the operation that called it.
    Revision revision;
};

} // namespace dax
