#include "tree/LMEDragDropSupport.h"

#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

#include <cstdlib>
#include <utility>

namespace dax {

namespace {

constexpr int expandDelay = 800; // milliseconds of hovering over a collapsed node
constexpr int scrollDelay = 60;  // milliseconds for each line

} // namespace

LMEDragDropSupport::~LMEDragDropSupport() { Bind(nullptr, nullptr); }

void LMEDragDropSupport::Bind(NodeTree* newTree, TreeWindow* newWindow) {
    CancelDrag();
    if (tree) tree->RemoveListener(*this);
    tree = newTree;
    window = newWindow;
    if (tree) tree->AddListener(*this);
}

void LMEDragDropSupport::OnMouseDown() {
    if (isActive || !window) return;
    pressed = window->Pointer();
    isArmed = true;
}

bool LMEDragDropSupport::ShouldBeginDrag() const {
    if (isActive || !isArmed || !window) return false;
    const Point now = window->Pointer();
    const Point threshold = window->DragThreshold();
    if (std::abs(now.y - pressed.y) < threshold.y && std::abs(now.x - pressed.x) < threshold.x) return false;
    const TreeHit hit = window->HitTest(pressed);
    return hit.node && (hit.flags & modTreeviewAPI::HitFlags::OnItem) && hit.node->Parent();
}

void LMEDragDropSupport::BeginDrag() {
    if (isActive || !isArmed || !window) return;
    dragged = window->HitTest(pressed).node;
    if (!dragged) return;
    isActive = true;
    window->BeginDragImage(*dragged, window->Pointer());
    window->StartTimer(TreeTimer::AutoExpand, expandDelay);
    window->StartTimer(TreeTimer::Autoscroll, scrollDelay);
}

void LMEDragDropSupport::OnItemDrag() {
    if (!isActive) return;
    const Point pointer = window->Pointer();
    window->ShowDragImage(false, pointer);
    const TreeHit hit = window->HitTest(pointer);
    const Rect row = hit.node ? window->RowRect(*hit.node).value_or(Rect{}) : Rect{};
    ShowTarget(hit.node && window->IsCtrlDown() ? FindDropInto(hit, *dragged)
                                                : FindDropTarget(*tree, hit, row, pointer, *dragged));
    window->ShowDragImage(true, pointer);
}

void LMEDragDropSupport::ShowTarget(const DropTarget& newTarget) {
    if (newTarget.node != target.node) window->StartTimer(TreeTimer::AutoExpand, expandDelay);
    target = newTarget;
    window->SetDropHighlight(target.node);
    window->SetInsertMark(target.markNode, target.markAfter);
}

void LMEDragDropSupport::FinishDrag() {
    if (!isActive) return;
    const DropTarget to = target;
    Node* const node = dragged;
    if (!to.node) {
        CancelDrag();
        return;
    }
    // A listener of the selection may do anything; the drag may be over afterwards.
    NodeTree& theTree = *tree;
    theTree.Select(to.node);
    if (!isActive || dragged != node || target.node != to.node) return;
    CancelDrag();
    if (modTVW::IsInBranch(to.node, node)) return;
    Drop.Raise(*node, to);
}

void LMEDragDropSupport::CancelDrag() {
    isArmed = false;
    target = {};
    dragged = nullptr;
    if (!std::exchange(isActive, false)) return;
    window->StopTimer(TreeTimer::AutoExpand);
    window->StopTimer(TreeTimer::Autoscroll);
    window->EndDragImage();
    window->SetInsertMark(nullptr, false);
    window->SetDropHighlight(nullptr);
    Ended.Raise();
}

void LMEDragDropSupport::OnTimer(TreeTimer timer) {
    if (!isActive) return;
    const Point pointer = window->Pointer();
    if (timer == TreeTimer::AutoExpand && target.node && target.node->FirstChild() && !target.node->IsExpanded()) {
        window->ShowDragImage(false, pointer);
        AutoExpand.Raise(*target.node);
        if (isActive) window->ShowDragImage(true, pointer);
    }
    if (timer != TreeTimer::Autoscroll) return;
    const unsigned bands = FindScrollBands(window->ClientRect(), pointer);
    if (!bands) return;
    window->ShowDragImage(false, pointer);
    window->Scroll(bands);
    window->ShowDragImage(true, pointer);
}

void LMEDragDropSupport::NodeRemoving(Node& node) {
    if (!isActive) return;
    if (modTVW::IsInBranch(dragged, &node)) {
        CancelDrag();
    } else if (modTVW::IsInBranch(target.node, &node) || modTVW::IsInBranch(target.markNode, &node)) {
        ShowTarget({});
    }
}

void LMEDragDropSupport::AllRemoving() { CancelDrag(); }

} // namespace dax
