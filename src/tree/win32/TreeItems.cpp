#include "tree/win32/TreeItems.h"

#include "tree/modTVW.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dax {

namespace {

constexpr int SafeDepth = 256; // of a branch that the system may delete

// How many items may be added, removed, moved or changed one by one before refilling the window is faster: measured
// with 400 to 100,000 rows. For a changed item some systems visit every row and draw the scroll bars.
int MaxItemChanges(int32_t count) { return 800 + count / 4; }
size_t MaxChanges(int32_t count) { return 8 + static_cast<size_t>(count) / 1000; }

UINT CheckState(const Node& node) { return INDEXTOSTATEIMAGEMASK(node.IsChecked() ? 2u : 1u); }

// The tree measures every row whenever drawing is switched on again, and asking its owner for each text takes most of
// that time: items keep their texts, except very long ones, of which only the beginning shows.
// Valid until the next call on the thread.
LPWSTR ItemText(const Node& node) {
    thread_local std::array<wchar_t, 260> text;
    const Text caption = node.Caption();
    if (caption.size() >= text.size()) return LPSTR_TEXTCALLBACKW;
    *std::copy(caption.begin(), caption.end(), text.begin()) = 0;
    return text.data();
}

// The next node in pre-order that lies in the branch of `top` (null: anywhere); no recursion.
Node* NextInBranch(const Node& node, const Node* top) { return modTVW::GetNextNode(&node, top); }

void ClearItemPointers(Node* top) {
    for (Node* node = top; node; node = NextInBranch(*node, top)) node->windowItem = nullptr;
}

} // namespace

// Suppresses notifications meanwhile, and the tree's own expanding and collapsing when the selection moves.
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
    isStale = true;
    ApplyChanges();
}

void TreeItems::Unbind() {
    if (!window) return;
    if (hasItems && IsWindow(window)) {
        const Mirroring guard(*this);
        CutDeepBranches(nullptr);
        ++removals;
    }
    window = nullptr;
    holds = 0;
    isUpdating = isOff = isStale = hasItems = isPosted = isInSystemProcedure = hasRowsBefore = false;
    itemChanges = 0;
    changed.clear();
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

// Invalidates the whole window, so that it is painted, and thereby updated, when it becomes visible.
void TreeItems::TurnDrawingOff(const Node* added) {
    if (isOff) return;
    StoreView(added);
    isOff = true;
    InvalidateRect(window, nullptr, TRUE);
    Send(WM_SETREDRAW, FALSE, 0);
    PostPendingUpdate();
}

void TreeItems::PostPendingUpdate() {
    if (!isPosted && window) isPosted = PostMessageW(window, UpdateMessage, 0, 0) != 0;
}

void TreeItems::SetIsInSystemProcedure(bool isBusy) {
    isInSystemProcedure = isBusy;
    if (!isBusy && !IsUpToDate()) PostPendingUpdate();
}

void TreeItems::ApplyChanges() {
    if (!window || isUpdating || holds > 0 || mirroring > 0) return;
    const Mirroring guard(*this);
    if (isStale && hasItems && isInSystemProcedure) {
        if (std::exchange(isOff, false)) Send(WM_SETREDRAW, TRUE, 0); // shows the former rows until then
        return;
    }
    const bool isAnew = isStale;
    if (isStale) {
        TurnDrawingOff();
        if (hasItems) RemoveAllItems();
        isStale = false;
        InsertBranch(nullptr);
    }
    const bool areOtherRows = ShowChanges() || isOff;
    itemChanges = 0;
    if (std::exchange(isOff, false)) {
        SendMessageW(window, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(window, nullptr, TRUE);
    }
    const auto selected = reinterpret_cast<LPARAM>(tree.Selected() ? ItemOf(*tree.Selected()) : nullptr);
    const bool isOther = Send(TVM_GETNEXTITEM, TVGN_CARET, 0) != selected;
    if (areOtherRows || mustShowSelected)
        Scroll(followsSelection && (isAnew || isOther || mustShowSelected || rowsBefore.HeldSelection()));
    hasRowsBefore = mustShowSelected = false;
    ShowSelection();
}

void TreeItems::HoldDrawing(bool hold) {
    if (!window) return;
    const HWND parent = GetParent(window);
    if (hold) {
        ApplyChanges();
        if (holds++ > 0) return;
        isParentOff = GetWindowLongW(parent, GWL_STYLE) & WS_VISIBLE;
        if (isParentOff) SendMessageW(parent, WM_SETREDRAW, FALSE, 0);
        StoreView();
        isOff = true;
        const Mirroring guard(*this);
        SendMessageW(window, WM_SETREDRAW, FALSE, 0);
        return;
    }
    if (holds == 0 || --holds > 0) return;
    ApplyChanges();
    if (!isParentOff) return;
    SendMessageW(parent, WM_SETREDRAW, TRUE, 0);
    RedrawWindow(parent, nullptr, nullptr, RDW_ERASE | RDW_FRAME | RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void TreeItems::Note(const Node& node, Aspect aspect) {
    if (isStale || !node.windowItem) return;
    StoreView();
    const auto known =
        std::find_if(changed.begin(), changed.end(), [&](const Change& each) { return each.node == &node; });
    if (known != changed.end()) {
        known->aspects |= aspect;
    } else if (changed.size() < MaxChanges(tree.Count())) {
        changed.push_back({&node, aspect});
    } else {
        changed.clear();
        isStale = true;
    }
}

bool TreeItems::ShowChanges() {
    bool areOtherRows = false;
    for (const Change& each : changed) {
        if (each.aspects & Appearance) ShowAppearance(*each.node);
        if (each.aspects & Expansion) areOtherRows |= ShowExpansion(*each.node);
    }
    changed.clear();
    return areOtherRows;
}

void TreeItems::ShowAppearance(const Node& node) {
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    item.hItem = ItemOf(node);
    item.pszText = ItemText(node);
    item.iImage = item.iSelectedImage = node.Image();
    if (hasCheckBoxes) {
        item.mask |= TVIF_STATE;
        item.stateMask = TVIS_STATEIMAGEMASK;
        item.state = CheckState(node);
    }
    Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

bool TreeItems::IsOpen(const Node& node) const {
    return Send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(node.windowItem), TVIS_EXPANDED) & TVIS_EXPANDED;
}

// An item without children can neither expand nor collapse; it may keep the state of when it last had some.
bool TreeItems::ShowExpansion(const Node& node) {
    if (!node.FirstChild()) return false;
    const bool isOpen = IsOpen(node);
    if (isOpen == node.IsExpanded()) return false;
    // Some systems number the rows wrongly when a branch out of view collapses, until drawing is switched on again.
    const Node* const parent = node.Parent();
    if (changed.size() > 1 || (parent && !IsOpen(*parent))) TurnDrawingOff();
    Send(TVM_EXPAND, isOpen ? TVE_COLLAPSE : TVE_EXPAND, node);
    return true;
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
    hasItems = true;
}

// Many are inserted in reverse, each as the first: the only order that is linear on every system. Few are inserted as
// they will be read, so that they are adjacent in memory: visiting every row takes half the time.
void TreeItems::InsertSiblings(Node* first, Node* last) {
    constexpr int few = 64;
    int count = 0;
    for (const Node* node = first; node && count <= few; node = node->Next()) ++count;
    if (count > few)
        for (; last; last = last->Previous()) InsertItem(*last, TVI_FIRST);
    else
        for (; first; first = first->Next()) InsertItem(*first, TVI_LAST);
}

// Then children expand before their parents.
void TreeItems::InsertBranch(Node* top) {
    std::vector<Node*> open;
    if (!top) InsertSiblings(tree.First(), tree.Last());
    for (Node* node = top ? top : tree.First(); node; node = NextInBranch(*node, top)) {
        InsertSiblings(node->FirstChild(), node->LastChild());
        if (node->IsExpanded() && node->FirstChild()) open.push_back(node);
    }
    for (auto node = open.rbegin(); node != open.rend(); ++node) Send(TVM_EXPAND, TVE_EXPAND, **node);
}

void TreeItems::UpdateStarted() {
    StoreView();
    isUpdating = true;
}

// The first change of a burst is shown at once; the following ones are shown at its end.
void TreeItems::UpdateEnded() {
    isUpdating = false;
    if (holds > 0) return;
    const bool isUpToDate = IsUpToDate();
    if (isUpToDate || (!isOff && !isStale && !isPosted && !isInSystemProcedure)) ApplyChanges();
    if (!isUpToDate) PostPendingUpdate();
    if (IsUpToDate()) hasRowsBefore = false;
}

bool TreeItems::SwitchToRebuild(Node* moved) {
    if (isStale || ++itemChanges <= MaxItemChanges(tree.Count())) return isStale;
    isStale = true;
    changed.clear();
    if (isInSystemProcedure) return true;
    const Mirroring guard(*this);
    if (moved) RemoveItem(*moved); // the window still has it in its former place
    RemoveAllItems(moved);
    return true;
}

void TreeItems::NodeAdded(Node& node) {
    TurnDrawingOff(&node);
    if (SwitchToRebuild()) return;
    const Mirroring guard(*this);
    InsertItem(node, node.Previous() ? ItemOf(*node.Previous()) : TVI_FIRST);
    if (node.Parent() && !node.Previous() && !node.Next()) Note(*node.Parent(), Expansion);
}

void TreeItems::RemoveItem(Node& node) {
    CutDeepBranches(&node);
    Send(TVM_DELETEITEM, 0, node);
    node.windowItem = nullptr;
    ++removals;
}

void TreeItems::RemoveAllItems(const Node* except) {
    CutDeepBranches(nullptr, except);
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) node->windowItem = nullptr;
    hasItems = false;
    ++removals;
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
    TurnDrawingOff();
    rowsBefore.OnNodesRemoved();
    std::erase_if(changed, [&](const Change& each) { return modTVW::IsInBranch(each.node, &node); });
    SwitchToRebuild();
    const Mirroring guard(*this);
    if (node.windowItem) RemoveItem(node);
}

void TreeItems::AllRemoving() {
    TurnDrawingOff();
    rowsBefore.OnNodesRemoved();
    changed.clear();
    isStale = true;
    const Mirroring guard(*this);
    if (hasItems) RemoveAllItems();
}

// The system cannot move items: the branch is deleted and inserted again.
void TreeItems::NodeMoved(Node& node) {
    TurnDrawingOff();
    rowsBefore.NodeMoved(node);
    const bool isRebuilding = SwitchToRebuild(&node);
    const Mirroring guard(*this);
    if (node.windowItem) {
        RemoveItem(node);
        ClearItemPointers(&node);
    }
    if (isRebuilding) return;
    InsertItem(node, node.Previous() ? ItemOf(*node.Previous()) : TVI_FIRST);
    InsertBranch(&node);
    if (node.Parent() && !node.Previous() && !node.Next()) Note(*node.Parent(), Expansion);
}

void TreeItems::NodeChanged(Node& node, NodeAspect aspect) {
    if (aspect == NodeAspect::Key || aspect == NodeAspect::Tag) return;
    const bool isAlone = !isUpdating;
    if (isAlone) UpdateStarted();
    Note(node, aspect == NodeAspect::Expanded ? Expansion : Appearance);
    if (isAlone) UpdateEnded();
}

void TreeItems::SelectionMoved() {
    if (IsUpToDate() && !isUpdating && holds == 0) ShowSelection();
}

// Not before all rows exist: the window would expand ancestors of the selected one temporarily.
void TreeItems::ShowSelection() {
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

void TreeItems::Refill() {
    if (!window) return;
    StoreView();
    isStale = true;
    PostPendingUpdate();
    InvalidateRect(window, nullptr, TRUE);
}

} // namespace dax
