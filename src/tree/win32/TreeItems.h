// The items of a real tree view, kept equal to a NodeTree. Items hold a pointer to their node and a
// copy of its text; everything else that they show is read from it.
#pragma once

#include "controls/win32/Windows.h"
#include "tree/win32/RowsInView.h"

#include <commctrl.h>

#include <cstring>
#include <optional>

namespace dax {

// Items are inserted and deleted at once, with drawing off. Switching it on makes the system visit every row, and each
// change of an item another, so those wait until the window is updated: before it paints or answers anything, or by a
// message posted to it. However many changes there are until then, they cost no more than refilling the window.
class TreeItems : private TreeListener {
public:
    static constexpr UINT UpdateMessage = WM_APP + 0x3D2; // posted to the window; see OnPendingUpdate

    explicit TreeItems(NodeTree& model) : tree(model) {}
    ~TreeItems() override { Unbind(); }
    TreeItems(const TreeItems&) = delete;
    TreeItems& operator=(const TreeItems&) = delete;

    // Fills the window from the model and follows its changes from then on.
    void Bind(HWND newWindow);
    void Unbind(); // forgets the items; the window is being or was destroyed

    // Shows what has changed, scrolled as little as possible: the first row in view stays the first.
    void ApplyChanges();
    void OnPendingUpdate() { isPosted = false; }
    bool IsUpToDate() const { return !isOff && !isStale && changed.empty(); }
    // Drawing is switched off at the parent window first, then at the tree, and on in reverse order. Calls nest.
    void HoldDrawing(bool hold);
    // With the changes that wait, if there are any: the row of the selected node comes into view.
    void ShowSelectedRow();
    // During a drag the pointer decides what is in view, not the selected node.
    void SetIsDragging(bool isDragging) { followsSelection = !isDragging; }
    // Set while the tree's own procedure runs, which may hold items: only those of removed nodes are deleted meanwhile.
    void SetIsInSystemProcedure(bool isBusy);
    unsigned Removals() const { return removals; } // grows whenever items were deleted

    // True while a change of the model is being shown: the window's notifications then report nothing new.
    bool IsMirroring() const { return mirroring > 0; }
    static Node* NodeOf(const TVITEMW& item) { return reinterpret_cast<Node*>(item.lParam); }
    Node* NodeOf(HTREEITEM item) const; // null for none
    // May be null unless the window is up to date.
    static HTREEITEM ItemOf(const Node& node) { return static_cast<HTREEITEM>(node.windowItem); }

    void ShowCheck(const Node& node); // as the model has it, whatever the window made of a click
    void SetHasCheckBoxes(bool has) { hasCheckBoxes = has; }
    void Refill(); // after check boxes were added or removed

    // Of the item's row, or of its caption alone, out of view too; nothing while it is in a collapsed branch. `send`
    // sends a message to the tree.
    template <typename Send>
    static std::optional<RECT> ItemRect(HTREEITEM item, bool isCaption, const Send& send) {
        RECT rect{};
        std::memcpy(&rect, &item, sizeof item); // the message takes the item where it puts the rectangle
        if (!send(TVM_GETITEMRECT, isCaption, reinterpret_cast<LPARAM>(&rect))) return {};
        return rect;
    }

private:
    class Mirroring;
    enum Aspect : unsigned { Appearance = 1, Expansion = 2 };
    struct Change {
        const Node* node;
        unsigned aspects;
    };

    void UpdateStarted() override;
    void UpdateEnded() override;
    void NodeAdded(Node& node) override;
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;
    void NodeMoved(Node& node) override;
    void NodeChanged(Node& node, NodeAspect aspect) override;
    void SelectionMoved() override;

    // To the tree's own procedure, bypassing subclasses of the window: none is about items, and each costs time.
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const {
        return CallWindowProcW(procedure, window, message, wParam, lParam);
    }
    LRESULT Send(UINT message, WPARAM wParam, const Node& node) const {
        return Send(message, wParam, reinterpret_cast<LPARAM>(ItemOf(node)));
    }
    void StoreView(const Node* added = nullptr);
    void TurnDrawingOff(const Node* added = nullptr);
    void PostPendingUpdate();
    void Note(const Node& node, Aspect aspect);
    // Counts an item that was added, removed or moved; true when items need no more updates.
    bool SwitchToRebuild(Node* moved = nullptr);
    bool ShowChanges(); // true when rows were added or removed
    void ShowAppearance(const Node& node);
    bool ShowExpansion(const Node& node);
    bool IsOpen(const Node& node) const;
    void ShowSelection();
    void InsertItem(Node& node, HTREEITEM after);
    void InsertSiblings(Node* first, Node* last);
    void InsertBranch(Node* top); // the items of the branch below `top` (null: of the whole tree), top not included
    void RemoveItem(Node& node);
    void RemoveAllItems(const Node* except = nullptr);
    // Before items are deleted: the system deletes a branch by recursion, which overflows the stack for a deep one.
    void CutDeepBranches(Node* top, const Node* except = nullptr);

    void Scroll(bool mustShowSelection);
    void ScrollTo(const Node& first);
    std::optional<LONG> TopOf(const Node& node) const;

    NodeTree& tree;
    HWND window = nullptr;
    WNDPROC procedure = nullptr;
    RowsInView rowsBefore;
    std::vector<Change> changed; // what the items do not show yet
    int mirroring = 0, holds = 0, itemChanges = 0;
    unsigned removals = 0;
    bool hasRowsBefore = false, isUpdating = false, isOff = false, isParentOff = false;
    bool isStale = false;  // the window is refilled when it is updated; nodes may have no items until then
    bool hasItems = false; // any, stale ones included
    bool isPosted = false, isInSystemProcedure = false, followsSelection = true, mustShowSelected = false;
    bool hasCheckBoxes = false;
};

} // namespace dax
