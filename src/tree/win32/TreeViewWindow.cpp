#include "tree/win32/TreeViewWindow.h"

#include "controls/win32/GdiSurface.h"
#include "tree/DropTarget.h"
#include "tree/win32/TreeStyle.h"

#include <algorithm>
#include <utility>

namespace dax {

namespace {

constexpr UINT_PTR SubclassId = 2;
constexpr UINT CheckStyle = TVS_CHECKBOXES;

POINT ToPoint(Point point) { return {point.x, point.y}; }

// Of the row, or of its caption alone; nothing while the node is hidden in a collapsed branch.
std::optional<RECT> ItemRect(HWND window, const Node& node, bool isCaption) {
    const auto send = [window](UINT message, WPARAM wParam, LPARAM lParam) {
        return SendMessageW(window, message, wParam, lParam);
    };
    return TreeItems::ItemRect(TreeItems::ItemOf(node), isCaption, send);
}

void SetStyle(HWND window, UINT bit, bool on) {
    const auto style = static_cast<UINT>(GetWindowLongW(window, GWL_STYLE));
    SetWindowLongW(window, GWL_STYLE, static_cast<LONG>(on ? style | bit : style & ~bit));
}

} // namespace

TreeViewWindow::TreeViewWindow(NodeTree& model) : tree(model), items(model) {}

TreeViewWindow::~TreeViewWindow() {
    if (handle) {
        RemoveWindowSubclass(handle, Procedure, SubclassId);
        if (hasCheckBoxes) DeleteBoxes();
    }
    OnHandleDestroyed();
}

HWND TreeViewWindow::Create(HWND parent) {
    INITCOMMONCONTROLSEX classes{sizeof classes, ICC_TREEVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    handle = CreateWindowExW(WS_EX_CLIENTEDGE, WC_TREEVIEWW, L"",
                             WS_CHILD | WS_VISIBLE | WS_TABSTOP | TVS_HASLINES | TVS_LINESATROOT | TVS_HASBUTTONS |
                                 TVS_SHOWSELALWAYS,
                             0, 0, 0, 0, parent, nullptr, ThisModule(), nullptr);
    if (!handle) return nullptr;
    SetWindowSubclass(handle, Procedure, SubclassId, reinterpret_cast<DWORD_PTR>(this));
    SetImages(images);
    if (std::exchange(hasCheckBoxes, false)) SetCheckBoxes(true);
    SetSingleExpand(isSingleExpand);
    items.Bind(handle);
    accessible.Bind();
    return handle;
}

void TreeViewWindow::OnHandleDestroyed() {
    dragImage.reset();
    accessible.Unbind();
    items.Unbind();
    handle = nullptr;
    markNode = nullptr;
    highlighted = nullptr;
    capture = {};
}

void TreeViewWindow::SetFont(HFONT font) {
    if (handle) SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    SetRowHeight(minRowHeight);
}

void TreeViewWindow::SetRowHeight(int least) {
    minRowHeight = least;
    if (!handle || least == 0) return;
    SendMessageW(handle, TVM_SETITEMHEIGHT, static_cast<WPARAM>(-1), 0); // the system's own choice
    if (SendMessageW(handle, TVM_GETITEMHEIGHT, 0, 0) < least)
        SendMessageW(handle, TVM_SETITEMHEIGHT, static_cast<WPARAM>(least), 0);
}

void TreeViewWindow::SetImages(HIMAGELIST list) {
    images = list;
    if (handle) SendMessageW(handle, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images));
}

void TreeViewWindow::SetColors(COLORREF text, COLORREF background) {
    textColor = text;
    backColor = background;
    if (!handle) return;
    SendMessageW(handle, TVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(text));
    SendMessageW(handle, TVM_SETBKCOLOR, 0, static_cast<LPARAM>(background));
}

void TreeViewWindow::Fit(int width, int height) {
    if (handle) MoveWindow(handle, 0, 0, std::max(0, width), std::max(0, height), TRUE);
}

void TreeViewWindow::SetCheckBoxes(bool on, HIMAGELIST pictures) {
    const bool isOther = std::exchange(hasCheckBoxes, on) != on;
    items.SetHasCheckBoxes(on);
    if (!handle) {
        if (pictures) ImageList_Destroy(pictures);
        return;
    }
    if (isOther) SetStyle(handle, CheckStyle, on);
    if (!on || pictures) DeleteBoxes(pictures);
    if (!isOther) return;
    if (!on) SetStyle(handle, CheckStyle, on);
    items.Refill();
}

// The system neither removes its boxes nor frees their pictures.
void TreeViewWindow::DeleteBoxes(HIMAGELIST successors) {
    const auto boxes = SendMessageW(handle, TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(successors));
    if (boxes) ImageList_Destroy(reinterpret_cast<HIMAGELIST>(boxes));
    // Not every system updates its layout for boxes of another width; for a font each does.
    SendMessageW(handle, WM_SETFONT, static_cast<WPARAM>(SendMessageW(handle, WM_GETFONT, 0, 0)), FALSE);
}

void TreeViewWindow::SetSingleExpand(bool on) {
    isSingleExpand = on;
    if (handle) modGeneric::SetTreeSingleExpandStyle(handle, on);
}

Rect TreeViewWindow::ClientRect() const {
    RECT client{};
    if (handle) GetClientRect(handle, &client);
    return {client.left, client.top, client.right, client.bottom};
}

Point TreeViewWindow::Pointer() const {
    POINT point{};
    GetCursorPos(&point);
    if (handle) ScreenToClient(handle, &point);
    return {point.x, point.y};
}

Point TreeViewWindow::DragThreshold() const { return {GetSystemMetrics(SM_CXDRAG), GetSystemMetrics(SM_CYDRAG)}; }

TreeHit TreeViewWindow::HitTest(Point point) const {
    if (!handle) return {};
    TVHITTESTINFO hit{};
    hit.pt = ToPoint(point);
    SendMessageW(handle, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return {items.NodeOf(hit.hItem), hit.flags};
}

std::optional<Rect> TreeViewWindow::RowRect(const Node& node) const {
    if (!handle) return {};
    SendMessageW(handle, TVM_GETCOUNT, 0, 0); // as any query, this updates the window
    if (!node.windowItem) return {};
    const auto row = ItemRect(handle, node, false);
    if (!row) return {};
    return Rect{row->left, row->top, row->right, row->bottom};
}

// The mark is drawn by us after each painting: the system's own cannot be removed everywhere.
void TreeViewWindow::SetInsertMark(Node* node, bool after) {
    if (node == markNode && after == isMarkAfter) return;
    ApplyChanges();
    InvalidateMark();
    markNode = node;
    isMarkAfter = after;
    InvalidateMark();
    if (handle) UpdateWindow(handle);
}

void TreeViewWindow::InvalidateMark() {
    const auto row = markNode ? RowRect(*markNode) : std::nullopt;
    if (!row) return;
    const int y = isMarkAfter ? row->bottom : row->top;
    const RECT strip{row->left, y - 3, row->right, y + 3};
    InvalidateRect(handle, &strip, TRUE);
}

void TreeViewWindow::DrawInsertMark() const {
    const auto row = markNode ? RowRect(*markNode) : std::nullopt;
    if (!row) return;
    const RECT label = ItemRect(handle, *markNode, true).value_or(RECT{});
    const int y = isMarkAfter ? row->bottom : row->top;
    const RECT line{label.left, y - 1, std::max<LONG>(label.right, label.left + 40), y + 1};
    const RECT leftEnd{line.left, y - 3, line.left + 2, y + 3}, rightEnd{line.right - 2, y - 3, line.right, y + 3};
    const HDC dc = GetDC(handle);
    for (const RECT& part : {line, leftEnd, rightEnd}) FillRect(dc, &part, GetSysColorBrush(COLOR_WINDOWTEXT));
    ReleaseDC(handle, dc);
}

void TreeViewWindow::SetDropHighlight(Node* node) {
    if (!handle || node == highlighted) return;
    ApplyChanges();
    const Node* const former = std::exchange(highlighted, node);
    SendMessageW(handle, TVM_SELECTITEM, TVGN_DROPHILITE,
                 reinterpret_cast<LPARAM>(node ? TreeItems::ItemOf(*node) : nullptr));
    if (former && former->windowItem) { // not every system clears it by selecting another, or nothing
        TVITEMW state{};
        state.mask = TVIF_HANDLE | TVIF_STATE;
        state.hItem = TreeItems::ItemOf(*former);
        state.stateMask = TVIS_DROPHILITED;
        SendMessageW(handle, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&state));
    }
    UpdateWindow(handle);
}

void TreeViewWindow::BeginDragImage(Node& node, Point pointer) {
    if (!handle) return;
    items.SetIsDragging(true);
    const auto row = RowRect(node);
    const RECT label = ItemRect(handle, node, true).value_or(RECT{});
    int iconWidth = 0, iconHeight = 0;
    if (images) ImageList_GetIconSize(images, &iconWidth, &iconHeight);
    const POINT hotSpot{pointer.x - (label.left - iconWidth - 3), row ? pointer.y - row->top : 0};
    dragImage = std::make_unique<DragImage>(handle, images, node.Image(), node.Caption(), hotSpot);
    dragImage->Show(ToPoint(pointer));
    SetCapture(handle);
}

void TreeViewWindow::ShowDragImage(bool visible, Point pointer) {
    if (!dragImage) return;
    if (!visible) return dragImage->Hide();
    ApplyChanges();
    UpdateWindow(handle);
    dragImage->Show(ToPoint(pointer));
}

void TreeViewWindow::EndDragImage() {
    dragImage.reset();
    items.SetIsDragging(false);
    if (handle && GetCapture() == handle) ReleaseCapture();
}

void TreeViewWindow::Scroll(unsigned bands) {
    if (!handle) return;
    if (bands & ScrollBands::Left) SendMessageW(handle, WM_HSCROLL, SB_LINELEFT, 0);
    if (bands & ScrollBands::Top) SendMessageW(handle, WM_VSCROLL, SB_LINEUP, 0);
    if (bands & ScrollBands::Right) SendMessageW(handle, WM_HSCROLL, SB_LINERIGHT, 0);
    if (bands & ScrollBands::Bottom) SendMessageW(handle, WM_VSCROLL, SB_LINEDOWN, 0);
    UpdateWindow(handle);
}

void TreeViewWindow::StartTimer(TreeTimer timer, int milliseconds) {
    if (handle)
        SetTimer(handle, FirstTreeTimer + static_cast<UINT_PTR>(timer), static_cast<UINT>(milliseconds), nullptr);
}

void TreeViewWindow::StopTimer(TreeTimer timer) {
    if (handle) KillTimer(handle, FirstTreeTimer + static_cast<UINT_PTR>(timer));
}

void TreeViewWindow::EnsureVisible(Node& node) {
    if (node.IsSelected()) return items.ShowSelectedRow();
    ApplyChanges();
    if (handle && node.windowItem)
        SendMessageW(handle, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(TreeItems::ItemOf(node)));
}

// Drawing and scrolling under a drag image would damage it.
void TreeViewWindow::ApplyChanges() {
    if (items.IsUpToDate()) return;
    const bool hasImage = dragImage && dragImage->IsShown();
    if (hasImage) dragImage->Hide();
    items.ApplyChanges();
    if (hasImage) dragImage->ShowAgain();
}

void TreeViewWindow::FreezeDisplay(bool frozen) {
    if (!handle) return;
    if (frozen) {
        capture = WindowCapture(handle);
        ShowWindow(handle, SW_HIDE);
        UpdateWindow(GetParent(handle)); // no message may be dispatched before the tree is back
        return;
    }
    capture = {};
    ShowWindow(handle, SW_SHOW);
    if (IsWindowVisible(handle)) SetFocus(handle);
}

bool TreeViewWindow::IsOwnKey(WPARAM key) {
    switch (key) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_HOME:
    case VK_END:
    case VK_DELETE:
    case VK_BACK:
    case VK_ADD:
    case VK_SUBTRACT:
    case VK_MULTIPLY:
        return true;
    default:
        return false;
    }
}

void TreeViewWindow::PaintParent(HDC dc, SIZE size, COLORREF background, HFONT font, bool isView) const {
    const RECT whole{0, 0, size.cx, size.cy};
    FillWith(dc, whole, background);
    if (IsFrozen() && IsRasterDevice(dc))
        capture.Draw(dc, 0, 0);
    else if (isView)
        DrawPicture(dc, whole, font); // otherwise the tree paints itself
}

} // namespace dax
