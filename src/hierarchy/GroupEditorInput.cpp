// Handles mouse and keys of the tree window.

#include "controls/KeyCodes.h"
#include "hierarchy/GroupEditor.h"
#include "tree/modTVW.h"

namespace dax {

void GroupEditor::AttachWindow(TreeWindow* newWindow) {
    window = newWindow;
    dragDrop.Bind(&tree, window);
    if (!window) return;
    window->SetSingleExpand(isSingleExpand);
    if (isDisplayLocked) window->FreezeDisplay(true);
}

void GroupEditor::OnDblClick() {
    const auto self = shared_from_this();
    if (tree.Selected()) DblClick.Raise();
}

void GroupEditor::OnKeyDown(int keyCode) {
    const auto self = shared_from_this();
    const Node* const selected = tree.Selected();
    if (keyCode == deleteKey && !dragDrop.Active() && selected && selected->Parent()) DeleteRequest.Raise();
}

void GroupEditor::OnKeyPress(int keyCode) {
    const auto self = shared_from_this();
    if (keyCode == escapeKey) CancelDrag();
    if (keyCode == enterKey && isLocked && tree.Selected()) DblClick.Raise();
}

void GroupEditor::OnMouseDown(MouseButton button) {
    const auto self = shared_from_this();
    if (button == MouseButton::Left && allowDragDrop && !isLocked) dragDrop.OnMouseDown();
    if (button == MouseButton::Right) CancelDrag();
}

void GroupEditor::OnMouseMove(MouseButton button, Point point) {
    if (button != MouseButton::Left) return;
    const auto self = shared_from_this();
    if (dragDrop.ShouldBeginDrag()) {
        if (Node* const node = window->HitTest(point).node) tree.Select(node);
        // A listener may have changed everything; whatever forbids a drag cancels the press.
        if (!dragDrop.ShouldBeginDrag()) return;
        subclasser.SetActive(false);
        dragDrop.BeginDrag();
    }
    if (dragDrop.Active()) dragDrop.OnItemDrag();
}

void GroupEditor::OnMouseUp(MouseButton button) {
    const auto self = shared_from_this();
    if (button != MouseButton::Left) return;
    dragDrop.FinishDrag(); // which switches the notifications on again
}

void GroupEditor::OnCollapsed(Node& node) {
    if (!node.Parent()) CollapseAll(); // the root never stays collapsed: every group is collapsed instead
}

void GroupEditor::OnTimer(TreeTimer timer) {
    const auto self = shared_from_this();
    dragDrop.OnTimer(timer);
}

void GroupEditor::CancelDrag() { dragDrop.CancelDrag(); }

void GroupEditor::OnDrop(Node& node, const DropTarget& target) {
    const auto self = shared_from_this();
    const RevisionCheck shown(revision);
    const EditHistory::Edit edit(history);
    {
        const NotificationPause silence(subclasser);
        DropNode(tree, node, target);
    }
    AfterSelectionChange.Raise(CurrentLessonID());
    if (shown.IsCurrent()) MarkChanged();
}

} // namespace dax
