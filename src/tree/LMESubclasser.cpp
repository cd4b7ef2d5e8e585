#include "tree/LMESubclasser.h"

#include "controls/KeyCodes.h"
#include "tree/modTreeviewAPI.h"

namespace dax {

using namespace modTreeviewAPI;

namespace {

constexpr int checkstateDelay = 50; // milliseconds after the last check change

} // namespace

LMESubclasser::~LMESubclasser() { RegisterWindows(nullptr, nullptr); }

void LMESubclasser::RegisterWindows(NodeTree* newTree, TreeWindow* newWindow) {
    if (window) window->StopTimer(TreeTimer::Checkstate);
    listener = {};
    tree = newTree;
    window = newWindow;
    if (!tree) return;
    listener = tree->SelectionChanged.Add([this] {
        if (isActive) SelectionChanged.Raise();
    });
}

void LMESubclasser::SetActive(bool active) {
    if (window) window->StopTimer(TreeTimer::Checkstate);
    isActive = active;
}

void LMESubclasser::OnClick(Point point, bool isCtrlDown) {
    if (!isActive || !window || !window->HasCheckBoxes()) return;
    const TreeHit hit = window->HitTest(point);
    if (hit.node && (hit.flags & HitFlags::OnItemStateIcon)) Toggle(*hit.node, !isCtrlDown);
}

void LMESubclasser::OnDblClick(Point point, bool isCtrlDown) {
    if (!isActive || !window || !window->HasCheckBoxes()) return;
    const TreeHit hit = window->HitTest(point);
    // With Ctrl only the tree's own toggle of the box counts, so there is none beside the box.
    if (hit.node && (!isCtrlDown || (hit.flags & HitFlags::OnItemStateIcon))) Toggle(*hit.node, !isCtrlDown);
    // Raised after every double click, deliberately, whether or not it has changed a box.
    window->StartTimer(TreeTimer::Checkstate, checkstateDelay);
}

void LMESubclasser::OnKeyDown(int keyCode) {
    if (!isActive || !window || !window->HasCheckBoxes() || keyCode != spaceKey) return;
    // The top visible row, not the selected one: the fixed point is deliberate.
    if (const TreeHit hit = window->HitTest(Point()); hit.node) Toggle(*hit.node, true);
}

void LMESubclasser::OnTimer(TreeTimer timer) {
    if (timer != TreeTimer::Checkstate) return;
    if (window) window->StopTimer(TreeTimer::Checkstate);
    CheckStateChanged.Raise();
}

void LMESubclasser::Toggle(Node& node, bool isBranch) {
    const bool checked = !node.IsChecked();
    if (isBranch) {
        SetSubtreeCheck(node, checked);
    } else {
        node.SetChecked(checked);
    }
    window->StartTimer(TreeTimer::Checkstate, checkstateDelay);
}

} // namespace dax
