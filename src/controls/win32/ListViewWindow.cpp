#include "controls/win32/ListViewWindow.h"

#include "controls/win32/GdiSurface.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace dax {

namespace {

// Left and right together, for letters as high as those of 8 points at 96 dpi: of the system's cells, and of its
// captions with room for an arrow.
constexpr int CellPadding = 12, CaptionPadding = 24, LetterHeight = 13;

// Columns are changed without drawing, scroll bars and placing the header after each of them. Only while the window is
// shown: the message would show it.
class RedrawOff {
public:
    explicit RedrawOff(HWND list) : window(GetWindowLongPtrW(list, GWL_STYLE) & WS_VISIBLE ? list : nullptr) {
        if (window) SendMessageW(window, WM_SETREDRAW, FALSE, 0);
    }
    ~RedrawOff() {
        if (!window) return;
        SendMessageW(window, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(window, nullptr, TRUE);
    }
    RedrawOff(const RedrawOff&) = delete;
    RedrawOff& operator=(const RedrawOff&) = delete;

private:
    HWND window;
};

// Widths of many texts: those of letters that always look the same are added up, everything else is measured by the
// system as a whole.
class TextMeasure {
public:
    explicit TextMeasure(HDC context) : dc(context) { GetTextMetricsW(dc, &metrics); }

    // The font gives the resolution: the monitor's may differ from the system's.
    int Scale(int padding) const {
        return MulDiv(padding, std::max<int>(metrics.tmHeight, LetterHeight), LetterHeight);
    }
    int Height() const { return metrics.tmHeight; }
    int CaptionWidth(const Text& caption) { return Width(caption) + Scale(CaptionPadding); }

    int Width(TextView text) {
        int width = 0;
        for (const char16_t unit : text) {
            if (!IsAlwaysTheSame(unit)) return Measure(Units(text), std::min<size_t>(text.size(), 4096));
            int16_t& known = widths[unit];
            if (known < 0) known = static_cast<int16_t>(Measure(reinterpret_cast<const wchar_t*>(&unit), 1));
            width += known;
        }
        return width;
    }

private:
    // Of the alphabets of Latin, Greek and Cyrillic, and of kana, kanji and hangul: no marks, no joining.
    static bool IsAlwaysTheSame(char16_t unit) {
        return (unit >= 0x20 && unit < 0x7F) || (unit >= 0xA0 && unit < 0x300 && unit != 0xAD) ||
               (unit >= 0x370 && unit < 0x483) || (unit >= 0x48A && unit < 0x530) ||
               (unit >= 0x3041 && unit < 0x3097) || (unit >= 0x309B && unit < 0xA000) ||
               (unit >= 0xAC00 && unit < 0xD7A4);
    }
    int Measure(const wchar_t* text, size_t length) const {
        SIZE size{};
        GetTextExtentPoint32W(dc, text, static_cast<int>(length), &size);
        return size.cx;
    }

    HDC dc;
    TEXTMETRICW metrics{};
    std::vector<int16_t> widths = std::vector<int16_t>(0xD800, -1); // by character; -1: not known yet
};

HFONT CreateItalicFont(HFONT font) {
    LOGFONTW description{};
    GetObjectW(font, sizeof description, &description);
    description.lfItalic = TRUE;
    return CreateFontIndirectW(&description);
}

// A context of the list, with its font.
class ListContext {
public:
    explicit ListContext(HWND list)
        : window(list), dc(GetDC(list)),
          former(SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(list, WM_GETFONT, 0, 0)))) {}
    ~ListContext() {
        SelectObject(dc, former);
        ReleaseDC(window, dc);
    }
    ListContext(const ListContext&) = delete;
    ListContext& operator=(const ListContext&) = delete;
    HDC Get() const { return dc; }

private:
    HWND window;
    HDC dc;
    HGDIOBJ former;
};

} // namespace

int ListViewWindow::ShareOf(const Text& key) {
    static const std::pair<const char16_t*, int> shares[] = {
        {u"title", 20}, {u"lockdate", 20}, {u"age", 17}, {u"locktype", 14}, {u"user", 9}};
    for (const auto& [name, share] : shares)
        if (key == name) return share;
    return 12;
}

ListViewWindow::ListViewWindow(std::shared_ptr<ListModel> listModel) : model(std::move(listModel)) {
    model->SetListener(this);
}

ListViewWindow::~ListViewWindow() {
    model->SetListener(nullptr);
    if (markedFont) DeleteObject(markedFont);
}

void ListViewWindow::OnHandleDestroyed() {
    accessible.Disconnect();
    handle = nullptr;
}

HWND ListViewWindow::Create(HWND parent) {
    INITCOMMONCONTROLSEX classes{sizeof classes, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    handle = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"",
                             WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS, 0, 0,
                             0, 0, parent, nullptr, ThisModule(), nullptr);
    if (!handle) return nullptr;
    accessible.Connect(handle);
    const auto style = static_cast<DWORD>(SendMessageW(handle, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0));
    SendMessageW(handle, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(style | LVS_EX_FULLROWSELECT));
    ColumnsChanged();
    ItemsChanged();
    for (size_t item = 0; item < model->Items().size(); ++item)
        if (model->Items()[item].isSelected) {
            LVITEMW state{};
            state.state = state.stateMask = LVIS_SELECTED;
            SendMessageW(handle, LVM_SETITEMSTATE, item, reinterpret_cast<LPARAM>(&state));
        }
    return handle;
}

void ListViewWindow::SetFont(HFONT font) {
    const HFONT former = std::exchange(markedFont, CreateItalicFont(font));
    if (handle) {
        const int height = TextMeasure(ListContext(handle).Get()).Height();
        SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
        FollowFont(height);
    }
    if (former) DeleteObject(former);
}

// Paler than the other rows, but still easy to read; in high contrast only the italics distinguish them from the
// others.
COLORREF ListViewWindow::MarkedColor() const {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    if (SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
        (contrast.dwFlags & HCF_HIGHCONTRASTON))
        return textColor;
    const auto blend = [](BYTE text, BYTE ground) { return static_cast<BYTE>((text * 3 + ground) / 4); };
    return RGB(blend(GetRValue(textColor), GetRValue(backColor)), blend(GetGValue(textColor), GetGValue(backColor)),
               blend(GetBValue(textColor), GetBValue(backColor)));
}

LRESULT ListViewWindow::CustomDraw(NMLVCUSTOMDRAW& draw) const {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const auto row = static_cast<size_t>(draw.nmcd.dwItemSpec);
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || row >= model->Items().size() || model->Items()[row].mark.empty())
        return CDRF_DODEFAULT;
    draw.clrText = MarkedColor();
    SelectObject(draw.nmcd.hdc, markedFont);
    return CDRF_NEWFONT;
}

void ListViewWindow::SetColors(COLORREF text, COLORREF background) {
    textColor = text;
    backColor = background;
    if (!handle) return;
    SendMessageW(handle, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(text));
    SendMessageW(handle, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(background));
    SendMessageW(handle, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(background));
    InvalidateRect(handle, nullptr, TRUE);
}

void ListViewWindow::Fit(int width, int height) {
    if (!handle) return;
    MoveWindow(handle, 0, 0, width, height, TRUE);
    if (widths == Widths::Shared) ShareWidth();
}

// Where there is room for all captions, each column gets its own and a share of what is left; else the shares alone
// decide, and only the column with the arrow gets its caption.
std::vector<int> ListViewWindow::SharedWidths(HDC dc, int width) const {
    TextMeasure measure(dc);
    int sum = 0, rest = width;
    std::vector<int> captions, shares;
    for (const ListColumn& column : model->Columns()) {
        sum += ShareOf(column.key);
        captions.push_back(measure.CaptionWidth(column.caption));
        rest -= captions.back();
    }
    for (size_t column = 0; column < captions.size(); ++column) {
        const int share = ShareOf(model->Columns()[column].key);
        const int least = static_cast<int>(column) == sortColumn ? captions[column] : 0;
        shares.push_back(rest >= 0 ? captions[column] + MulDiv(rest, share, sum)
                                   : std::max(least, MulDiv(width, share, sum)));
    }
    return shares;
}

void ListViewWindow::ShareWidth() {
    RECT client;
    GetWindowRect(handle, &client);
    const int frame = 2 * GetSystemMetrics(SM_CXEDGE);
    const int width = client.right - client.left - frame - GetSystemMetrics(SM_CXVSCROLL);
    if (width <= 0) return;
    const std::vector<int> shares = SharedWidths(ListContext(handle).Get(), width);
    const RedrawOff redraw(handle);
    for (size_t column = 0; column < shares.size(); ++column)
        SendMessageW(handle, LVM_SETCOLUMNWIDTH, column, shares[column]);
}

void ListViewWindow::FollowFont(int formerHeight) {
    const int height = TextMeasure(ListContext(handle).Get()).Height();
    if (height == formerHeight) return;
    if (widths != Widths::OfUser) ShareWidth(); // from which the system fits the columns as it did at first
    if (widths == Widths::Fitted) AutosizeColumns();
    for (size_t column = 0; widths == Widths::OfUser && column < model->Columns().size(); ++column) {
        const auto width = static_cast<int>(SendMessageW(handle, LVM_GETCOLUMNWIDTH, column, 0));
        SendMessageW(handle, LVM_SETCOLUMNWIDTH, column, MulDiv(width, height, formerHeight));
    }
}

void ListViewWindow::ColumnsChanged() {
    if (!handle) return;
    const RedrawOff redraw(handle);
    while (SendMessageW(handle, LVM_DELETECOLUMN, 0, 0)) {
    }
    for (size_t index = 0; index < model->Columns().size(); ++index) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<LPWSTR>(Wide(model->Columns()[index].caption));
        column.cx = 80;
        column.iSubItem = static_cast<int>(index);
        SendMessageW(handle, LVM_INSERTCOLUMNW, index, reinterpret_cast<LPARAM>(&column));
    }
    sortColumn = -1;
    widths = Widths::Shared;
    ShareWidth();
    accessible.Reordered();
}

void ListViewWindow::ItemsChanged() {
    if (!handle) return;
    const size_t count = model->Items().size();
    if (count == 0) { // else the list would keep selection and focus of removed rows
        LVITEMW state{};
        state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(handle, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&state));
    }
    SendMessageW(handle, LVM_SETITEMCOUNT, count, 0);
    for (LRESULT item = -1;
         (item = SendMessageW(handle, LVM_GETNEXTITEM, static_cast<WPARAM>(item), LVNI_SELECTED)) >= 0;) {
        if (static_cast<size_t>(item) < count && model->Items()[static_cast<size_t>(item)].isSelected) continue;
        LVITEMW state{};
        state.stateMask = LVIS_SELECTED;
        SendMessageW(handle, LVM_SETITEMSTATE, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(&state));
    }
    accessible.Reordered();
    InvalidateRect(handle, nullptr, FALSE);
}

// The system sizes a virtual list by the visible rows, or queries every cell; the widest of all is
// found here, and the system is not used where that would take long. The last column takes what is left.
void ListViewWindow::AutosizeColumns() {
    constexpr size_t many = 1000;
    if (!handle) return;
    widths = Widths::Fitted;
    const ListContext context(handle);
    TextMeasure measure(context.Get());
    const size_t rows = model->Items().size(), columns = model->Columns().size();
    RECT client;
    GetClientRect(handle, &client);
    int rest = client.right;
    for (size_t column = 0; column < columns; ++column) {
        int widest = 0;
        for (size_t item = 0; item < rows; ++item) widest = std::max(widest, measure.Width(model->Cell(item, column)));
        widest = std::max(measure.CaptionWidth(model->Columns()[column].caption), widest + measure.Scale(CellPadding));
        if (rows <= many) {
            SendMessageW(handle, LVM_SETCOLUMNWIDTH, column, LVSCW_AUTOSIZE_USEHEADER);
            widest = std::max(widest, static_cast<int>(SendMessageW(handle, LVM_GETCOLUMNWIDTH, column, 0)));
        } else if (column + 1 == columns) {
            widest = std::max(widest, rest);
        }
        if (widest != SendMessageW(handle, LVM_GETCOLUMNWIDTH, column, 0))
            SendMessageW(handle, LVM_SETCOLUMNWIDTH, column, widest);
        rest -= widest;
    }
}

void ListViewWindow::ShowSortArrow(int column, bool isDescending) {
    sortColumn = column;
    if (!handle) return;
    const auto header = reinterpret_cast<HWND>(SendMessageW(handle, LVM_GETHEADER, 0, 0));
    for (int index = 0; index < static_cast<int>(model->Columns().size()); ++index) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (index == column) item.fmt |= isDescending ? HDF_SORTDOWN : HDF_SORTUP;
        SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    }
    if (column < 0 || column >= static_cast<int>(model->Columns().size())) return;
    if (widths == Widths::Shared) return ShareWidth();
    const ListContext context(handle);
    const int least = TextMeasure(context.Get()).CaptionWidth(model->Columns()[static_cast<size_t>(column)].caption);
    if (SendMessageW(handle, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0) < least)
        SendMessageW(handle, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column), least);
}

void ListViewWindow::FillDisplay(LVITEMW& item) const {
    if (!(item.mask & LVIF_TEXT) || item.cchTextMax <= 0) return;
    const TextView cell = model->Cell(static_cast<size_t>(item.iItem), static_cast<size_t>(item.iSubItem));
    const TextView shown = Shorten(cell, static_cast<size_t>(item.cchTextMax) - 1);
    std::copy(shown.begin(), shown.end(), item.pszText);
    item.pszText[shown.size()] = 0;
}

// Typed letters find a row by the beginning of its first cell. -1: there is none.
LRESULT ListViewWindow::FindRow(const NMLVFINDITEMW& find) const {
    if (!(find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) || !find.lvfi.psz) return -1;
    const Text requested = FromWide(find.lvfi.psz);
    const size_t count = model->Items().size();
    const size_t start = find.iStart < 0 ? 0 : static_cast<size_t>(find.iStart);
    for (size_t step = 0; step < count; ++step) {
        const size_t row = (start + step) % count;
        const TextView cell = model->Cell(row, 0);
        const int length = static_cast<int>(std::min(cell.size(), requested.size()));
        if (cell.size() >= requested.size() && CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, Units(cell), length,
                                                              Wide(requested), length) == CSTR_EQUAL)
            return static_cast<LRESULT>(row);
    }
    return -1;
}

void ListViewWindow::ReadSelection() {
    std::vector<bool> isSelected(model->Items().size());
    for (LRESULT item = -1;
         (item = SendMessageW(handle, LVM_GETNEXTITEM, static_cast<WPARAM>(item), LVNI_SELECTED)) >= 0;)
        if (static_cast<size_t>(item) < isSelected.size()) isSelected[static_cast<size_t>(item)] = true;
    for (size_t item = 0; item < isSelected.size(); ++item)
        if (model->Items()[item].isSelected != isSelected[item]) model->SetSelected(item, isSelected[item]);
}

LRESULT ListViewWindow::HandleNotification(const NMHDR& header) {
    if (header.code == HDN_ENDTRACKW) widths = Widths::OfUser; // of the list's header
    if (header.hwndFrom != handle) return 0;
    switch (header.code) {
    case LVN_GETDISPINFOW:
        FillDisplay(reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(&header))->item);
        return 0;
    case LVN_ITEMCHANGED: {
        const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
        if (!(change.uChanged & LVIF_STATE)) return 0;
        if (change.iItem < 0)
            ReadSelection(); // all rows at once
        else if (static_cast<size_t>(change.iItem) < model->Items().size())
            model->SetSelected(static_cast<size_t>(change.iItem), (change.uNewState & LVIS_SELECTED) != 0);
        accessible.Changed(change);
        return 0;
    }
    case LVN_ODSTATECHANGED:
        ReadSelection();
        accessible.SeveralChanged();
        return 0;
    case NM_SETFOCUS:
        accessible.OnFocusGained();
        return 0;
    case LVN_COLUMNCLICK:
        ColumnClick.Raise(static_cast<size_t>(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem));
        return 0;
    case LVN_KEYDOWN:
        ReadSelection();
        KeyDown.Raise(reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey);
        return 0;
    case NM_CUSTOMDRAW:
        return CustomDraw(*reinterpret_cast<NMLVCUSTOMDRAW*>(const_cast<NMHDR*>(&header)));
    case NM_CLICK:
    case NM_RCLICK: // it selects as the left button does
        ReadSelection();
        Click.Raise();
        return 0;
    case LVN_ODFINDITEMW:
        return FindRow(reinterpret_cast<const NMLVFINDITEMW&>(header));
    default:
        return 0;
    }
}

} // namespace dax
