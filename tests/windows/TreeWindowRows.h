// What a tree window shows, asked of the window item by item, and what it should show by its model.
#pragma once

#include "controls/win32/Windows.h"
#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace dax::test {

using Rows = std::vector<std::string>;

inline HTREEITEM NextItem(HWND tree, WPARAM relation, HTREEITEM item = nullptr) {
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

inline RECT ItemPlace(HWND tree, HTREEITEM item, bool isCaption) {
    RECT rect{};
    std::memcpy(&rect, &item, sizeof item);
    EXPECT_TRUE(SendMessageW(tree, TVM_GETITEMRECT, isCaption, reinterpret_cast<LPARAM>(&rect)));
    return rect;
}

inline HTREEITEM ItemOf(const Node* node) { return node ? static_cast<HTREEITEM>(node->windowItem) : nullptr; }

inline TVITEMW AskItem(HWND tree, HTREEITEM item, std::vector<wchar_t>& buffer) {
    TVITEMW query{};
    query.mask = TVIF_HANDLE | TVIF_STATE | TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM;
    query.hItem = item;
    query.stateMask = ~0u;
    query.pszText = buffer.data();
    query.cchTextMax = static_cast<int>(buffer.size());
    EXPECT_TRUE(SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query)));
    return query;
}

inline std::string RowText(int depth, const std::string& caption, int image, bool isOpen, bool isSelected,
                           bool isChecked) {
    return std::string(static_cast<size_t>(depth), ' ') + caption + "#" + std::to_string(image) + (isOpen ? "-" : "") +
           (isSelected ? "<" : "") + (isChecked ? "x" : "");
}

// All items in pre-order.
inline Rows WindowRows(HWND tree) {
    Rows rows;
    std::vector<wchar_t> buffer(260);
    const HTREEITEM caret = NextItem(tree, TVGN_CARET);
    int depth = 0;
    for (HTREEITEM item = NextItem(tree, TVGN_ROOT); item;) {
        const TVITEMW query = AskItem(tree, item, buffer);
        const HTREEITEM child = NextItem(tree, TVGN_CHILD, item);
        EXPECT_EQ(query.iImage, query.iSelectedImage);
        EXPECT_EQ(ItemOf(reinterpret_cast<const Node*>(query.lParam)), item);
        EXPECT_EQ((query.state & TVIS_SELECTED) != 0, item == caret);
        rows.push_back(RowText(depth, ToUtf8(FromWide(query.pszText)), query.iImage,
                               child && (query.state & TVIS_EXPANDED), item == caret, (query.state >> 12) == 2));
        if (child) {
            item = child;
            ++depth;
            continue;
        }
        HTREEITEM next = nullptr;
        while (item && !(next = NextItem(tree, TVGN_NEXT, item))) {
            item = NextItem(tree, TVGN_PARENT, item);
            --depth;
        }
        item = next;
    }
    return rows;
}

inline Rows ModelRows(const NodeTree& tree, bool hasChecks) {
    Rows rows;
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node))
        rows.push_back(RowText(modTVW::GetIndentLevel(node), ToUtf8(Shorten(node->Caption(), 259)), node->Image(),
                               node->FirstChild() && node->IsExpanded(), node->IsSelected(),
                               hasChecks && node->IsChecked()));
    return rows;
}

// The rows that show stand one below the other without a gap, in the order of the model.
inline void ExpectVisibleRows(HWND window, const NodeTree& tree) {
    const Node* node = tree.First();
    if (!node) {
        EXPECT_EQ(NextItem(window, TVGN_ROOT), nullptr);
        return;
    }
    const LONG height = static_cast<LONG>(SendMessageW(window, TVM_GETITEMHEIGHT, 0, 0));
    const LONG top = ItemPlace(window, ItemOf(node), false).top;
    LONG row = 0;
    for (; node; node = modTreeviewAPI::NextVisible(*node), ++row) {
        const HTREEITEM item = ItemOf(node);
        ASSERT_EQ(ItemPlace(window, item, false).top, top + row * height) << ToUtf8(node->Caption());
        const Node* const next = modTreeviewAPI::NextVisible(*node);
        // Beyond the last row in sight some systems answer nothing.
        if (next && ItemPlace(window, ItemOf(next), false).top < 4096) {
            ASSERT_EQ(NextItem(window, TVGN_NEXTVISIBLE, item), ItemOf(next)) << ToUtf8(node->Caption());
        }
    }
}

#define EXPECT_MIRROR(window, tree, hasChecks)                                                                         \
    do {                                                                                                               \
        EXPECT_EQ(WindowRows(window), ModelRows(tree, hasChecks));                                                     \
        ExpectVisibleRows(window, tree);                                                                               \
    } while (false)

// A point of a row, in screen coordinates.
enum class RowPart { Box, Label, LabelTop, LabelBottom, Button };

inline POINT PointOf(HWND tree, const Node& node, RowPart part) {
    const RECT label = ItemPlace(tree, ItemOf(&node), true);
    POINT point{label.left + 2, (label.top + label.bottom) / 2};
    if (part == RowPart::LabelTop) point.y = label.top + 1;
    if (part == RowPart::LabelBottom) point.y = label.bottom - 2;
    const unsigned wanted = part == RowPart::Box      ? TVHT_ONITEMSTATEICON
                            : part == RowPart::Button ? TVHT_ONITEMBUTTON
                                                      : 0;
    for (TVHITTESTINFO hit{}; wanted && point.x >= 0; --point.x) {
        hit.pt = point;
        SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
        if (!(hit.flags & wanted)) continue;
        point.x -= 3;
        break;
    }
    EXPECT_GE(point.x, 0);
    ClientToScreen(tree, &point);
    return point;
}

} // namespace dax::test
