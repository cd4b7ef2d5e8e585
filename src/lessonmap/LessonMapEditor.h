// The storyboards of one lesson, map by map, as a tree to select in, check, rearrange and search.
#pragma once

#include "base/Enumerations.h"
#include "base/Error.h"
#include "content/ContentLesson.h"
#include "controls/Event.h"
#include "controls/PropertyBag.h"
#include "lessonmap/PictureKeys.h"
#include "tree/LMEDragDropSupport.h"
#include "tree/LMESubclasser.h"

namespace dax {

// The lesson stays the host's. Its objects are called during operations: meanwhile, whatever would change
// or write back the map is refused with an Error. Their failures reach the caller; the tree stays consistent.
// Inside an event the host may do anything, also release the editor, which then ends the operation without events.
class LessonMapEditor : public std::enable_shared_from_this<LessonMapEditor> {
public:
    using StoryboardRef = std::shared_ptr<Storyboard>;

    // The last reference closes the editor: no event is raised from then on.
    static std::shared_ptr<LessonMapEditor> Create();
    LessonMapEditor(const LessonMapEditor&) = delete;
    LessonMapEditor& operator=(const LessonMapEditor&) = delete;

    std::shared_ptr<NodeTree> tvwObject() const { return tree; }
    void AttachWindow(TreeWindow* newWindow); // null for none, before it is destroyed
    // The available pictures; nodes get their numbers from it, again when it changes.
    const PictureKeys& ImageList() const { return *imageList; }
    void SetImageList(PictureKeys keys);

    std::shared_ptr<dax::Lesson> Lesson() const { return lesson; }
    void SetLesson(std::shared_ptr<dax::Lesson> newLesson); // null for none
    // Null, or the empty text: nothing or a map is selected. Setting it to one that no node shows does nothing.
    StoryboardRef CurrentStoryboard() const;
    void SetCurrentStoryboard(const StoryboardRef& storyboard);
    Text CurrentSBID() const;
    void SetCurrentSBID(const Text& sbid);

    void CheckAllStoryboards() { SetAllChecks(true); }
    void UncheckAllStoryboards() { SetAllChecks(false); }
    std::vector<StoryboardRef> CheckedStoryboards(); // in tree order; writes the layouts back first, as do the next two
    int32_t CheckedStoryboardCount() const;
    std::shared_ptr<dax::Lesson> GetCheckedLesson();  // the checked storyboards in their maps; null without lesson
    std::vector<StoryboardRef> OrphanedStoryboards(); // that no node shows
    int32_t GetChildStoryboardCount(const Text& sbid) const; // at all levels

    bool AllowDragDrop() const { return allowDragDrop; }
    void SetAllowDragDrop(bool isAllowed);
    LessonMapEditorCaptionStyles CaptionStyle() const { return captionStyle; }
    void SetCaptionStyle(LessonMapEditorCaptionStyles style);
    bool Checkboxes() const { return checkboxes; }
    void SetCheckboxes(bool isOn); // turning them off clears all checks
    bool Locked() const { return isLocked; }
    void SetLocked(bool locked);
    bool ShowDefaultMapOnly() const { return showDefaultMapOnly; }
    void SetShowDefaultMapOnly(bool isOnly);
    void ReadProperties(PropertyBag& bag);
    void WriteProperties(PropertyBag& bag) const;

    void LockDisplay() { FreezeDisplay(true); } // calls do not nest
    void UnlockDisplay() { FreezeDisplay(false); }
    void ExpandAll();
    void CollapseAll();
    void Refresh(); // raises no event
    void AddStoryboard(const StoryboardRef& storyboard);
    void UpdateStoryboard(const StoryboardRef& storyboard);
    void UpdateSBID(const Text& sbid);
    void RemoveStoryboard(const StoryboardRef& storyboard, bool includeChildren);
    bool CanMoveCurrent(StoryboardMovementTypes movement) const;
    void MoveCurrent(StoryboardMovementTypes movement);
    Text FindNextSBID(const Text& criteria, FindTypes findType, bool exactMatch, bool wrapSearch) const;

    bool IsDragging() const { return dragDrop.Active(); }
    // Runs an action of the user; what it throws is reported by Error, with `operation` as the last argument.
    template <typename Action>
    void ReportFailures(const char16_t* operation, const Action& action);

    // Input from the window: clicks and keys, and nodes expanded or collapsed by the user.
    void OnExpanded(Node& node, bool areCtrlAndShiftDown);
    void OnCollapsed(Node& node, bool areCtrlAndShiftDown);
    void OnKeyDown(int keyCode);
    bool OnKeyPress(int keyCode); // true: the tree must not receive the key
    void OnMouseDown(MouseButton button);
    void OnMouseMove(MouseButton button);
    void OnMouseUp(MouseButton button);
    void OnClick(Point point, bool isCtrlDown);
    void OnDblClick(Point point, bool isCtrlDown);
    void OnTimer(TreeTimer timer);

    // Old and new storyboard, cancel. Declared and never raised, deliberately.
    Event<StoryboardRef, StoryboardRef, bool&> BeforeSelectionChange;
    Event<StoryboardRef> AfterSelectionChange; // null: nothing or a map
    Event<> ItemChecked;                       // once for a burst of checks
    Event<MapChangeTypes> MapChanged;          // after the lesson got the new layout
    Event<> DeleteRequest;                     // the host decides and calls RemoveStoryboard
    Event<> ContextMenuRequest;
    // Number, description, the user's operation: the lesson's objects have failed without a caller that
    // could receive the error.
    Event<int32_t, Text, Text> Error;
    Event<> CheckboxesChanged;   // for the window: show or hide the boxes
    Event<Text> PropertyChanged; // the name of a property that the bag keeps; before the tree follows

private:
    class OperationGuard;
    class NotificationGuard;
    class DrawingGuard;
    class DepthGuard;
    static constexpr int maxEventDepth = 30, maxDepth = 60;
    using LessonRef = std::shared_ptr<dax::Lesson>;

    LessonMapEditor();
    void Close();
    bool IsCurrentLesson(const LessonRef& was) const { return !isClosed && lesson == was; }
    bool Build();
    void SaveLayouts() const;
    template <typename Action>
    void KeepEdit(const Action& edit);
    void SelectWithoutEvents(const Text& sbid);
    void ShowSelected(); // its row comes into view
    void SetAllChecks(bool checked);
    void FreezeDisplay(bool frozen);
    void CancelDrag();
    void RaisePropertyChanged(const Text& name);
    void UpdateCaption(const Text& sbid, const Storyboard& storyboard);
    std::vector<Text> CheckedKeys() const;
    void OnSelectionChanged();
    void OnDrop(Node& dragged, const DropTarget& target);
    void RecordSelection();
    void RaiseSelectionChange(const LessonRef& was);
    void RaiseError(const dax::Error& failure, const char16_t* operation);
    template <typename TheEvent, typename... Arguments>
    void Raise(const TheEvent& event, const Arguments&... arguments);

    std::shared_ptr<NodeTree> tree = std::make_shared<NodeTree>();
    std::shared_ptr<const PictureKeys> imageList = std::make_shared<PictureKeys>();
    TreeWindow* window = nullptr;
    LessonRef lesson;
    bool allowDragDrop = true, checkboxes = false, isLocked = false, showDefaultMapOnly = false;
    LessonMapEditorCaptionStyles captionStyle = csTitle;
    LMEDragDropSupport dragDrop;
    LMESubclasser subclasser;
    bool isClosed = false, isBusy = false, isDisplayLocked = false, isExpanding = false, isCollapsing = false;
    int suspendedNotifications = 0;
    mutable int depth = 0; // nesting of events and of calls to the lesson's objects
    Text sbidBeforeDrag;
};

template <typename Action>
void LessonMapEditor::ReportFailures(const char16_t* operation, const Action& action) {
    const auto self = shared_from_this();
    std::optional<dax::Error> failure;
    try {
        action();
    } catch (...) {
        failure = CurrentError();
    }
    if (failure) RaiseError(*failure, operation);
}

} // namespace dax
