// A report list in a real window, or without one. The window keeps no rows: it asks the model for what it shows.
#pragma once

#include "controls/Event.h"
#include "controls/ListModel.h"
#include "controls/win32/ListAccess.h"

#include <commctrl.h>

#include <memory>

namespace dax {

class ListViewWindow : private ListModelListener {
public:
    explicit ListViewWindow(std::shared_ptr<ListModel> model);
    ~ListViewWindow() override;
    ListViewWindow(const ListViewWindow&) = delete;
    ListViewWindow& operator=(const ListViewWindow&) = delete;

    // The window belongs to its parent and goes with it; the rows stay. The parent hands on what it hears.
    HWND Create(HWND parent);
    HWND Handle() const { return handle; }
    void HandleGone();
    void SetFont(HFONT font);
    void SetColors(COLORREF text, COLORREF background);
    // Also shares the width out to the columns, until they were sized by content or by the user.
    void Fit(int width, int height);
    // An arrow in the header of that column; -1 for none.
    void ShowSortArrow(int column, bool isDescending);
    LRESULT HandleNotification(const NMHDR& header); // raises the events below last
    Accessible& Access() { return access; }

    // A picture of header and rows for a control that has no window.
    void DrawPicture(HDC dc, const RECT& place, HFONT font) const;

    Event<> Click;
    Event<size_t> ColumnClick;
    Event<int> KeyDown; // the key's code

private:
    void ColumnsChanged() override;
    void ItemsChanged() override;
    void AutosizeColumns() override;

    void FillDisplay(LVITEMW& item) const;
    LRESULT FindRow(const NMLVFINDITEMW& find) const;
    void ReadSelection();
    void ShareWidth();

    std::shared_ptr<ListModel> model;
    ListAccess access{*model};
    HWND handle = nullptr;
    COLORREF textColor = 0x000000, backColor = 0xFFFFFF;
    bool isWidthShared = true;
};

} // namespace dax
