// A report list in a real window, or without one. A virtual list: it reads what it shows from the model.
#pragma once

#include "controls/Event.h"
#include "controls/ListModel.h"
#include "controls/win32/ListAccessible.h"

#include <commctrl.h>

#include <memory>
#include <vector>

namespace dax {

class ListViewWindow : private ListModelListener {
public:
    explicit ListViewWindow(std::shared_ptr<ListModel> model);
    ~ListViewWindow() override;
    ListViewWindow(const ListViewWindow&) = delete;
    ListViewWindow& operator=(const ListViewWindow&) = delete;

    // The window is destroyed with its parent; the rows stay. The parent forwards its messages.
    HWND Create(HWND parent);
    HWND Handle() const { return handle; }
    void OnHandleDestroyed();
    void SetFont(HFONT font);
    void SetColors(COLORREF text, COLORREF background);
    // Also divides the width among the columns, unless they were sized by content or by the user.
    void Fit(int width, int height);
    // An arrow in the header of that column, which is widened where its caption would be cut; -1 for none.
    void ShowSortArrow(int column, bool isDescending);
    LRESULT HandleNotification(const NMHDR& header); // raises the events below last
    Accessible& AccessibleContent() { return accessible; }

    // A picture of header and rows, as the window shows them; without one from the first row on.
    void DrawPicture(HDC dc, const RECT& place, HFONT font) const;

    Event<> Click;
    Event<size_t> ColumnClick;
    Event<int> KeyDown; // the key's code

private:
    void ColumnsChanged() override;
    void ItemsChanged() override;
    void AutosizeColumns() override;

    static int ShareOf(const Text& key); // of a column in the width, until columns are sized otherwise
    std::vector<int> SharedWidths(HDC dc, int width) const;
    std::vector<int> ColumnWidths(HDC dc, int width) const; // of the window, or of a picture without one
    void FillDisplay(LVITEMW& item) const;
    COLORREF MarkedColor() const;
    LRESULT CustomDraw(NMLVCUSTOMDRAW& draw) const;
    LRESULT FindRow(const NMLVFINDITEMW& find) const;
    void ReadSelection();
    void ShareWidth();
    // Scales the columns with the font; the former height of its letters is given.
    void FollowFont(int formerHeight);

    enum class Widths { Shared, Fitted, OfUser }; // where the columns' widths come from

    std::shared_ptr<ListModel> model;
    ListAccessible accessible{*model};
    HWND handle = nullptr;
    COLORREF textColor = 0x000000, backColor = 0xFFFFFF;
    Widths widths = Widths::Shared;
    int sortColumn = -1;        // -1: none
    HFONT markedFont = nullptr; // for rows with a mark
};

} // namespace dax
