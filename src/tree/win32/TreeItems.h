// The items of a real tree view, kept equal to a NodeTree. The model is the truth: items hold a pointer to their node
// and a copy of its text; what they show else they ask it for.
#pragma once

#include "controls/win32/Windows.h"
#include "tree/NodeTree.h"

#include <commctrl.h>

namespace dax {

class TreeItems : private TreeListener {
public:
    explicit TreeItems(NodeTree& model) : tree(model) {}
    ~TreeItems() override { Unbind(); }
    TreeItems(const TreeItems&) = delete;
    TreeItems& operator=(const TreeItems&) = delete;

    // Fills the window from the model and follows the model from then on.
    void Bind(HWND newWindow);
    void Unbind(); // forgets the items; the window is going or gone

    // True while a change of the model is being shown: what the window notifies then is an echo.
    bool IsMirroring() const { return mirroring > 0; }
    static Node* NodeOf(const TVITEMW& item) { return reinterpret_cast<Node*>(item.lParam); }
    Node* NodeOf(HTREEITEM item) const; // null for none
    static HTREEITEM ItemOf(const Node& node) { return static_cast<HTREEITEM>(node.windowItem); }

    void ShowCheck(const Node& node); // as the model has it, whatever the window made of a click
    void ShowAllChecks();             // after the boxes came or went
    void SetHasCheckBoxes(bool has) { hasCheckBoxes = has; }

private:
    class Mirroring;

    void UpdateStarted() override;
    void UpdateEnded() override;
    void NodeAdded(Node& node) override;
    void NodeRemoving(Node& node) override;
    void AllRemoving() override;
    void NodeMoved(Node& node) override;
    void NodeChanged(Node& node, NodeAspect aspect) override;
    void SelectionMoved() override;

    // To the tree's own procedure, past whatever hooks the window: none of them is about items, and each costs time.
    LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const {
        return CallWindowProcW(procedure, window, message, wParam, lParam);
    }
    void InsertItem(Node& node, HTREEITEM after);
    void InsertBranch(Node* top); // the items of the branch below `top` (null: of the whole tree), top not included
    void ShowExpansion(Node* top);
    void ShowFirstChild(const Node* parent);
    void Rebuild();
    // One more change in this update, perhaps the move of that branch; true once it is cheaper to begin anew at its
    // end.
    bool GoesStale(Node* moved = nullptr);
    void RemoveItem(Node& node);
    // Before items go: the system deletes a branch by recursion, which a deep one would not survive.
    void CutDeepBranches(Node* top, const Node* except = nullptr);

    NodeTree& tree;
    HWND window = nullptr;
    WNDPROC procedure = nullptr;
    int mirroring = 0;
    bool isUpdating = false;
    bool isStale = false; // the window is empty until the end of the update
    int changes = 0;
    bool hasCheckBoxes = false;
};

} // namespace dax
