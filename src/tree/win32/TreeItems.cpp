#include "tree/win32/TreeItems.h"

#include "tree/modTVW.h"

#include <algorithm>
#include <array>
#include <vector>

namespace dax {

namespace {

// More single changes than these in one update, and the window is filled anew at the end of it.
constexpr int ChangesWorthARebuild = 8;
constexpr int SafeDepth = 256; // of a branch that the system may delete

UINT CheckState(const Node& node) { return INDEXTOSTATEIMAGEMASK(node.IsChecked() ? 2u : 1u); }

// The tree measures every row whenever drawing is switched on again, and asking its owner for each text takes most of
// that time: items keep their texts, but for those of any length, of which only the beginning shows.
// Good until the next call on the thread.
LPWSTR ItemText(const Node& node) {
    thread_local std::array<wchar_t, 260> text;
    const Text caption = node.Caption();
    if (caption.size() >= text.size()) return LPSTR_TEXTCALLBACKW;
    *std::copy(caption.begin(), caption.end(), text.begin()) = 0;
    return text.data();
}

// The next node in pre-order that lies in the branch of `top` (null: anywhere); no recursion.
Node* NextInBranch(const Node& node, const Node* top) {
    if (node.FirstChild()) return node.FirstChild();
    for (const Node* at = &node; at && at != top; at = at->Parent())
        if (at->Next()) return at->Next();
    return nullptr;
}

} // namespace

// No echo meanwhile, and no opening and closing of the tree's own as the selection moves.
class TreeItems::Mirroring {
public:
    explicit Mirroring(TreeItems& items) : owner(items) {
        if (owner.mirroring++ > 0) return;
        style = GetWindowLongW(owner.window, GWL_STYLE);
        if (style & SingleExpand) SetWindowLongW(owner.window, GWL_STYLE, style & ~SingleExpand);
    }
    ~Mirroring() {
        if (--owner.mirroring == 0 && style & SingleExpand) SetWindowLongW(owner.window, GWL_STYLE, style);
    }
    Mirroring(const Mirroring&) = delete;
    Mirroring& operator=(const Mirroring&) = delete;

private:
    static constexpr LONG SingleExpand = TVS_SINGLEEXPAND;
    TreeItems& owner;
    LONG style = 0;
};

void TreeItems::Bind(HWND newWindow) {
    Unbind();
    window = newWindow;
    procedure = reinterpret_cast<WNDPROC>(GetClassLongPtrW(window, GCLP_WNDPROC));
    tree.AddListener(*this);
    Rebuild();
}

void TreeItems::Unbind() {
    if (!window) return;
    if (!isStale && IsWindow(window)) {
        const Mirroring guard(*this);
        CutDeepBranches(nullptr);
    }
    window = nullptr;
    isUpdating = isStale = false;
    tree.RemoveListener(*this);
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) node->windowItem = nullptr;
}

Node* TreeItems::NodeOf(HTREEITEM item) const {
    if (!item || !window) return nullptr;
    TVITEMW query{};
    query.mask = TVIF_PARAM | TVIF_HANDLE;
    query.hItem = item;
    return Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query)) ? NodeOf(query) : nullptr;
}

void TreeItems::InsertItem(Node& node, HTREEITEM after) {
    TVINSERTSTRUCTW insert{};
    insert.hParent = node.Parent() ? ItemOf(*node.Parent()) : TVI_ROOT;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = ItemText(node);
    insert.item.iImage = insert.item.iSelectedImage = node.Image();
    insert.item.lParam = reinterpret_cast<LPARAM>(&node);
    if (hasCheckBoxes) {
        insert.item.mask |= TVIF_STATE;
        insert.item.stateMask = TVIS_STATEIMAGEMASK;
        insert.item.state = CheckState(node);
    }
    node.windowItem = reinterpret_cast<void*>(Send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

// Siblings in reverse, each as the first: the only order that is linear on every system.
void TreeItems::InsertBranch(Node* top) {
    for (Node* node = top ? top : tree.First(); node; node = NextInBranch(*node, top)) {
        if (!top && !node->Parent() && !node->Previous())
            for (Node* sibling = tree.Last(); sibling; sibling = sibling->Previous()) InsertItem(*sibling, TVI_FIRST);
        for (Node* child = node->LastChild(); child; child = child->Previous()) InsertItem(*child, TVI_FIRST);
    }
    ShowExpansion(top);
}

// Children before their parents: then each expansion finds its rows as they will stay.
void TreeItems::ShowExpansion(Node* top) {
    std::vector<Node*> expanded;
    for (Node* node = top ? top : tree.First(); node; node = NextInBranch(*node, top))
        if (node->IsExpanded() && node->FirstChild()) expanded.push_back(node);
    for (auto node = expanded.rbegin(); node != expanded.rend(); ++node)
        Send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(ItemOf(**node)));
}

void TreeItems::Rebuild() {
    const Mirroring guard(*this);
    if (!isUpdating) Send(WM_SETREDRAW, FALSE, 0);
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    if (!tree.IsEmpty()) InsertBranch(nullptr);
    isStale = false;
    SelectionMoved();
    if (isUpdating) return;
    Send(WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window, nullptr, TRUE);
}

void TreeItems::UpdateStarted() {
    isUpdating = true;
    changes = 0;
    Send(WM_SETREDRAW, FALSE, 0);
}

void TreeItems::UpdateEnded() {
    if (isStale) Rebuild();
    isUpdating = false;
    // Items that went or closed took the selection elsewhere, and the model may have come back to the former one.
    SelectionMoved();
    Send(WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window, nullptr, TRUE);
}

bool TreeItems::GoesStale(Node* moved) {
    if (!isUpdating || isStale || ++changes <= ChangesWorthARebuild) return isStale;
    const Mirroring guard(*this);
    isStale = true;
    if (moved) RemoveItem(*moved); // the window has it in its former place
    CutDeepBranches(nullptr, moved);
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) node->windowItem = nullptr;
    return true;
}

void TreeItems::NodeAdded(Node& node) {
    if (GoesStale()) return;
    const Mirroring guard(*this);
    InsertItem(node, node.Previous() ? ItemOf(*node.Previous()) : TVI_FIRST);
    ShowFirstChild(node.Parent());
}

// An item without children can neither open nor close, and may still be what it was when it last had some.
void TreeItems::ShowFirstChild(const Node* parent) {
    if (!parent || parent->FirstChild() != parent->LastChild()) return;
    Send(TVM_EXPAND, parent->IsExpanded() ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(ItemOf(*parent)));
}

void TreeItems::RemoveItem(Node& node) {
    const Mirroring guard(*this);
    if (node.windowItem) {
        CutDeepBranches(&node);
        Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(ItemOf(node)));
    }
    node.windowItem = nullptr;
}

void TreeItems::CutDeepBranches(Node* top, const Node* except) {
    std::vector<HTREEITEM> pieces; // deeper ones later
    int depth = 0;
    for (Node* node = top ? top : tree.First(); node;) {
        if (node != except) {
            if (depth > 0 && depth % SafeDepth == 0 && node->windowItem) pieces.push_back(ItemOf(*node));
            if (node->FirstChild()) {
                node = node->FirstChild();
                ++depth;
                continue;
            }
        }
        for (; node && node != top && !node->Next(); node = node->Parent()) --depth;
        node = node == top || !node ? nullptr : node->Next();
    }
    for (auto item = pieces.rbegin(); item != pieces.rend(); ++item)
        Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(*item));
}

void TreeItems::NodeRemoving(Node& node) {
    if (!GoesStale()) RemoveItem(node);
}

void TreeItems::AllRemoving() {
    const Mirroring guard(*this);
    if (!isStale) {
        CutDeepBranches(nullptr);
        Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    }
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) node->windowItem = nullptr;
}

// The system knows no move: the branch is taken out and put in anew.
void TreeItems::NodeMoved(Node& node) {
    if (GoesStale(&node)) return;
    const Mirroring guard(*this);
    if (!isUpdating) Send(WM_SETREDRAW, FALSE, 0);
    RemoveItem(node);
    InsertItem(node, node.Previous() ? ItemOf(*node.Previous()) : TVI_FIRST);
    InsertBranch(&node);
    ShowFirstChild(node.Parent());
    SelectionMoved();
    if (isUpdating) return;
    Send(WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window, nullptr, TRUE);
}

void TreeItems::NodeChanged(Node& node, NodeAspect aspect) {
    if (isStale || !node.windowItem) return;
    const Mirroring guard(*this);
    TVITEMW item{};
    item.mask = TVIF_HANDLE;
    item.hItem = ItemOf(node);
    switch (aspect) {
    case NodeAspect::Caption:
        item.mask |= TVIF_TEXT;
        item.pszText = ItemText(node);
        Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        break;
    case NodeAspect::Image:
        item.mask |= TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        item.iImage = item.iSelectedImage = node.Image();
        Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        break;
    case NodeAspect::Expanded:
        if (GoesStale()) return;
        Send(TVM_EXPAND, node.IsExpanded() ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(ItemOf(node)));
        break;
    case NodeAspect::Checked:
        ShowCheck(node);
        break;
    case NodeAspect::Key:
    case NodeAspect::Tag:
        break;
    }
}

void TreeItems::SelectionMoved() {
    // The window would open the way to what is selected only for a while.
    if (isStale || isUpdating) return;
    const Node* const selected = tree.Selected();
    const auto item = reinterpret_cast<LPARAM>(selected ? ItemOf(*selected) : nullptr);
    if (Send(TVM_GETNEXTITEM, TVGN_CARET, 0) == item) return;
    const Mirroring guard(*this);
    Send(TVM_SELECTITEM, TVGN_CARET, item);
}

void TreeItems::ShowCheck(const Node& node) {
    if (!hasCheckBoxes || isStale || !node.windowItem) return;
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_STATE;
    item.hItem = ItemOf(node);
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = CheckState(node);
    Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void TreeItems::ShowAllChecks() {
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        if (!node->windowItem) continue;
        TVITEMW item{};
        item.mask = TVIF_HANDLE | TVIF_STATE;
        item.hItem = ItemOf(*node);
        item.stateMask = TVIS_STATEIMAGEMASK;
        item.state = hasCheckBoxes ? CheckState(*node) : 0;
        Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    InvalidateRect(window, nullptr, TRUE); // states alone do not repaint the rows
}

} // namespace dax
