// What a tree component needs of the window that shows its tree. The window itself mirrors the NodeTree as a
// TreeListener; these members are what only a window can supply. Points and rectangles are pixels of the
// window's client area.
#pragma once

#include "controls/Surface.h"
#include "tree/NodeTree.h"

#include <optional>

namespace dax {

struct TreeHit {
    Node* node = nullptr;
    unsigned flags = 0; // modTreeviewAPI::HitFlags
};

enum class MouseButton { None, Left, Right };

enum class TreeTimer { AutoExpand, Autoscroll, Checkstate };

class TreeWindow {
public:
    virtual ~TreeWindow() = default;

    virtual Rect ClientRect() const = 0;
    virtual Point Pointer() const = 0; // where the pointer is now
    // The distances at which a press becomes a drag, as the user has set them.
    virtual Point DragThreshold() const = 0;
    virtual bool IsCtrlDown() const = 0;
    virtual TreeHit HitTest(Point point) const = 0;
    // The node's row over the whole width; nothing while it is hidden in a collapsed branch.
    virtual std::optional<Rect> RowRect(const Node& node) const = 0;

    virtual void SetInsertMark(Node* node, bool after) = 0; // null takes the mark away
    virtual void SetDropHighlight(Node* node) = 0;
    virtual void BeginDragImage(Node& node, Point pointer) = 0;
    virtual void ShowDragImage(bool visible, Point pointer) = 0; // false before anything is painted under it
    virtual void EndDragImage() = 0;
    virtual void Scroll(unsigned bands) = 0; // ScrollBands: one line per band

    // Starts or restarts the timer; its ticks go to OnTimer of the component.
    virtual void StartTimer(TreeTimer timer, int milliseconds) = 0;
    virtual void StopTimer(TreeTimer timer) = 0;

    virtual bool HasCheckBoxes() const = 0;
    virtual void SetSingleExpand(bool on) = 0;
    virtual void EnsureVisible(Node& node) = 0; // scrolls as little as possible
    // Suspends drawing; calls nest.
    virtual void HoldDrawing(bool hold) = 0;
    // Shows a frozen picture instead of the tree, or the tree again, with the focus if it can be seen.
    virtual void FreezeDisplay(bool frozen) = 0;
};

} // namespace dax
