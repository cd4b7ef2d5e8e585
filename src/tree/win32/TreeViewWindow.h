// A tree view in a real window, or without one, bound to a NodeTree. It reports the user's input and shows what the
// model holds; the component decides what it means.
#pragma once

#include "controls/Event.h"
#include "controls/Reentrance.h"
#include "tree/TreeWindow.h"
#include "tree/win32/DragImage.h"
#include "tree/win32/TreeAccessible.h"
#include "tree/win32/TreeItems.h"
#include "tree/win32/WindowCapture.h"

#include <memory>

namespace dax {

inline constexpr UINT_PTR FirstTreeTimer = 0xDA0; // timers of the tree window; the system uses small numbers

class TreeViewWindow : public TreeWindow {
public:
    explicit TreeViewWindow(NodeTree& model);
    ~TreeViewWindow() override;
    TreeViewWindow(const TreeViewWindow&) = delete;
    TreeViewWindow& operator=(const TreeViewWindow&) = delete;

    // The window is destroyed with its parent; the model stays. The parent forwards its messages.
    HWND Create(HWND parent);
    HWND Handle() const { return handle; }
    void OnHandleDestroyed();
    void SetFont(HFONT font);
    void SetImages(HIMAGELIST images); // the caller's; must exist longer than the window
    // Rows of at least this height, and high enough for font and pictures, also after these have changed.
    void SetRowHeight(int least);
    void SetColors(COLORREF text, COLORREF background);
    void Fit(int width, int height);
    LRESULT HandleNotification(const NMHDR& header);
    Accessible& AccessibleContent() { return accessible; }
    // Before items are used: see TreeItems.
    void ApplyChanges();
    // As a click would do, with all that follows; a listener may release the component.
    void PressBox(Node& node);
    void PressButton(Node& node);

    // `pictures`, if given, replace the system's own and are removed with the boxes.
    void SetCheckBoxes(bool on, HIMAGELIST pictures = nullptr);
    bool IsFrozen() const { return !capture.IsEmpty(); }
    // For the parent, whose whole area the tree fills: frozen, what the tree looked like is painted in the place of the
    // hidden tree; with `isView`, for a control without a window, the rows.
    void PaintParent(HDC dc, SIZE size, COLORREF background, HFONT font, bool isView) const;
    // Keys that move through a tree or edit it; Tab, Enter, Space and Escape are not among them.
    static bool IsOwnKey(WPARAM key);

    Rect ClientRect() const override;
    Point Pointer() const override;
    Point DragThreshold() const override;
    bool IsCtrlDown() const override { return GetKeyState(VK_CONTROL) < 0; }
    TreeHit HitTest(Point point) const override;
    std::optional<Rect> RowRect(const Node& node) const override;
    void SetInsertMark(Node* node, bool after) override;
    void SetDropHighlight(Node* node) override;
    void BeginDragImage(Node& node, Point pointer) override;
    void ShowDragImage(bool visible, Point pointer) override;
    void EndDragImage() override;
    void Scroll(unsigned bands) override;
    void StartTimer(TreeTimer timer, int milliseconds) override;
    void StopTimer(TreeTimer timer) override;
    bool HasCheckBoxes() const override { return hasCheckBoxes; }
    void SetSingleExpand(bool on) override;
    void EnsureVisible(Node& node) override;
    void HoldDrawing(bool hold) override { items.HoldDrawing(hold); }
    void FreezeDisplay(bool frozen) override;

    // Listeners may do anything, also release the component.
    Event<MouseButton, Point> MouseDown, MouseMove, MouseUp;
    Event<int> KeyDown;       // the key's code
    Event<char16_t> KeyPress; // the character
    Event<Point, bool> Click; // point, whether Ctrl is down
    Event<Point, bool> DblClick;
    Event<Node&> Expanded, Collapsed; // by the user; the model is already updated
    Event<> MenuKey;                  // the Menu key or Shift+F10
    Event<> DragLost;                 // the mouse was taken away in the middle of a drag
    Event<TreeTimer> Timer;

private:
    void DrawPicture(HDC dc, const RECT& place, HFONT font) const;
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);
    // Nothing: the system's own handling follows.
    std::optional<LRESULT> PreprocessMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void PostprocessMessage(UINT message, LPARAM lParam);
    LRESULT CustomDraw(NMTVCUSTOMDRAW& draw) const;
    void ApplyUpdatesBefore(UINT message);
    LRESULT CallSystemProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void ItemExpanded(const NMTREEVIEWW& change);
    void SelectionChanged(const NMTREEVIEWW& change);
    LRESULT SingleExpand(const NMTREEVIEWW& change);
    void DeleteBoxes(HIMAGELIST successors = nullptr);
    void DrawInsertMark() const;
    void InvalidateMark();

    NodeTree& tree;
    TreeItems items;
    TreeAccessible accessible{tree, *this};
    HWND handle = nullptr;
    HIMAGELIST images = nullptr;
    int minRowHeight = 0;
    COLORREF textColor = 0x000000, backColor = 0xFFFFFF;
    bool hasCheckBoxes = false, isSingleExpand = false;
    Node* markNode = nullptr;
    bool isMarkAfter = false;
    Node* highlighted = nullptr;
    bool isPressed = false; // the left button went down here and has not come up
    int systemDepth = 0;    // nesting of the tree's own procedure
    std::unique_ptr<DragImage> dragImage;
    WindowCapture capture;
    Revision revision; // a listener may release the window
};

} // namespace dax
