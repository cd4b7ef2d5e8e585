// The user's input in the window of LessonMapEditor.
#include "lessonmap/LessonMapEditor.h"

#include "controls/KeyCodes.h"
#include "controls/Reentrance.h"
#include "lessonmap/LessonMapEditorGuards.h"
#include "tree/modTVW.h"

namespace dax {

void LessonMapEditor::OnExpanded(Node& node, bool areCtrlAndShiftDown) {
    const auto self = shared_from_this();
    const FlagGuard entered(isExpanding);
    if (entered.IsFirst() && areCtrlAndShiftDown) modTVW::ExpandSubtree(&node);
}

void LessonMapEditor::OnCollapsed(Node& node, bool areCtrlAndShiftDown) {
    const auto self = shared_from_this();
    const FlagGuard entered(isCollapsing);
    if (entered.IsFirst() && areCtrlAndShiftDown) modTVW::CollapseSubtree(&node);
}

void LessonMapEditor::OnKeyDown(int keyCode) {
    const auto self = shared_from_this();
    subclasser.OnKeyDown(keyCode);
    if (keyCode != deleteKey || dragDrop.Active() || isLocked) return;
    if (!modTVW::IsRootNode(tree->Selected())) Raise(DeleteRequest);
}

bool LessonMapEditor::OnKeyPress(int keyCode) {
    const auto self = shared_from_this();
    if (keyCode != escapeKey || !dragDrop.Active()) return false;
    CancelDrag();
    return true;
}

void LessonMapEditor::OnMouseDown(MouseButton button) {
    const auto self = shared_from_this();
    if (isLocked) return;
    if (button == MouseButton::Left && allowDragDrop && !dragDrop.Active()) dragDrop.OnMouseDown();
    if (button == MouseButton::Right && dragDrop.Active()) CancelDrag();
}

void LessonMapEditor::OnMouseMove(MouseButton button) {
    const auto self = shared_from_this();
    if (button != MouseButton::Left) return;
    if (dragDrop.Active()) {
        dragDrop.OnItemDrag();
        return;
    }
    if (!dragDrop.ShouldBeginDrag()) return;
    ReportFailures(u"Select", [this] {
        if (Node* const node = window->HitTest(window->Pointer()).node) tree->Select(node);
    });
    // The host's handler of the selection may have done anything.
    if (!dragDrop.ShouldBeginDrag() || isBusy) return;
    sbidBeforeDrag = CurrentSBID();
    subclasser.SetActive(false);
    dragDrop.BeginDrag();
}

void LessonMapEditor::OnMouseUp(MouseButton button) {
    const auto self = shared_from_this();
    if (button == MouseButton::Left) {
        const bool wasDrag = dragDrop.Active();
        const LessonRef was = lesson;
        if (wasDrag) {
            dragDrop.FinishDrag();
        } else {
            dragDrop.CancelDrag();
        }
        // Setting it stops a check event that is due, so only when it is off.
        if (!subclasser.Active() && suspendedNotifications == 0) subclasser.SetActive(true);
        // Also a drop that was refused has selected its target.
        if (wasDrag && IsCurrentLesson(was) && CurrentSBID() != sbidBeforeDrag) {
            ReportFailures(u"Select", [this] { OnSelectionChanged(); });
        }
    } else if (button == MouseButton::Right && !dragDrop.Active() && !isLocked) {
        Raise(ContextMenuRequest);
    }
}

void LessonMapEditor::CancelDrag() {
    dragDrop.CancelDrag();
    if (!subclasser.Active() && suspendedNotifications == 0) subclasser.SetActive(true);
}

void LessonMapEditor::OnClick(Point point, bool isCtrlDown) {
    const auto self = shared_from_this();
    subclasser.OnClick(point, isCtrlDown);
}

void LessonMapEditor::OnDblClick(Point point, bool isCtrlDown) {
    const auto self = shared_from_this();
    subclasser.OnDblClick(point, isCtrlDown);
}

void LessonMapEditor::OnTimer(TreeTimer timer) {
    const auto self = shared_from_this();
    if (timer == TreeTimer::Checkstate) {
        subclasser.OnTimer(timer);
    } else {
        dragDrop.OnTimer(timer);
    }
}

} // namespace dax
