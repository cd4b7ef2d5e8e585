// Which rows of the tree are in view, before and after changes.
#include "tree/win32/TreeItems.h"

#include "tree/modTreeviewAPI.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace dax {

void TreeItems::StoreView(const Node* added) {
    if (std::exchange(hasRowsBefore, true)) return;
    const auto first = hasItems ? reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0)) : nullptr;
    rowsBefore.Store(tree, NodeOf(first), static_cast<int>(Send(TVM_GETVISIBLECOUNT, 0, 0)), added);
}

void TreeItems::ShowSelectedRow() {
    mustShowSelected = true;
    if (!IsUpToDate() || !window) return;
    StoreView();
    ApplyChanges();
}

void TreeItems::Scroll(bool mustShowSelection) {
    Node* first = rowsBefore.First(tree);
    if (!first) first = NodeOf(reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0)));
    if (!first) return;
    if (Node* const selected = mustShowSelection ? tree.Selected() : nullptr) {
        const auto top = TopOf(*first), selectedTop = TopOf(*selected);
        const LONG rows = std::max<LONG>(1, static_cast<LONG>(Send(TVM_GETVISIBLECOUNT, 0, 0)));
        const LONG height = std::max<LONG>(1, static_cast<LONG>(Send(TVM_GETITEMHEIGHT, 0, 0)));
        if (top && selectedTop && (*selectedTop < *top || *selectedTop >= *top + rows * height)) {
            first = selected;
            for (LONG row = 1; row<rows&& * selectedTop> * top; ++row)
                if (Node* const above = modTreeviewAPI::PreviousVisible(*first)) first = above;
        }
    }
    ScrollTo(*first);
}

void TreeItems::ScrollTo(const Node& first) {
    const auto scroll = [this](const Node& node) {
        const auto isDone = [&] {
            return Send(TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0) == reinterpret_cast<LRESULT>(ItemOf(node));
        };
        if (!isDone()) Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, node);
        return isDone();
    };
    if (scroll(first)) return;
    // Not every system does so with the row that is selected.
    const Node* const next = modTreeviewAPI::NextVisible(first);
    if (next && scroll(*next)) Send(WM_VSCROLL, SB_LINEUP, 0);
}

// Of a row, in pixels of the window, also out of view; nothing while it is in a collapsed branch.
std::optional<LONG> TreeItems::TopOf(const Node& node) const {
    const auto send = [this](UINT message, WPARAM wParam, LPARAM lParam) { return Send(message, wParam, lParam); };
    const auto rect = ItemRect(ItemOf(node), false, send);
    return rect ? std::optional(rect->top) : std::nullopt;
}

} // namespace dax
