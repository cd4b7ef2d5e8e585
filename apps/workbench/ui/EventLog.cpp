#include "ui/EventLog.h"

#include <algorithm>
#include <commctrl.h>
#include <cstring>
#include <cwchar>

namespace dax::workbench {

namespace {

constexpr int keptLines = 5000;
constexpr int columns = 5;
constexpr int argumentColumn = 4;

std::wstring Cell(HWND window, int row, int column) {
    wchar_t text[2048];
    ListView_GetItemText(window, row, column, text, static_cast<int>(std::size(text)));
    return text;
}

int TextWidth(HWND window, const std::wstring& text) {
    constexpr int room = 16; // that the list needs round a cell's text, in pixels
    return static_cast<int>(SendMessageW(window, LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(text.c_str()))) +
           room;
}

} // namespace

bool EventLog::Create(HWND parent, int id, const Style& style) {
    window = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"Events",
                             WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER, 0,
                             0, 10, 10, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                             GetModuleHandleW(nullptr), nullptr);
    if (!window) return false;
    constexpr DWORD extended = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;
    ListView_SetExtendedListViewStyleEx(window, extended, extended);
    const wchar_t* titles[columns] = {L"Time", L"Kind", L"Control", L"Member", L"Arguments and results"};
    for (int i = 0; i < columns; ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<wchar_t*>(titles[i]);
        column.cx = 50;
        column.iSubItem = i;
        SendMessageW(window, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    }
    StyleChanged(style);
    return true;
}

void EventLog::StyleChanged(const Style& style) {
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(style.Plain()), TRUE);
    const wchar_t* longest[argumentColumn] = {L"00:00:00.000", L"event", L"DatabaseValidator",
                                              L"ValidateCommonConnection"};
    for (int i = 0; i < argumentColumn; ++i)
        ListView_SetColumnWidth(window, i, style.TextWidth(longest[i]) + style.Scale(20));
    widest = least = style.Scale(240);
    const int count = ListView_GetItemCount(window);
    for (int row = 0; row < count; ++row)
        widest = std::max(widest, TextWidth(window, Cell(window, row, argumentColumn)));
    Resized();
}

// The last column takes what is left, and more when its texts need it: the list scrolls then.
void EventLog::Resized() {
    RECT area;
    GetClientRect(window, &area);
    int left = area.right;
    for (int i = 0; i < argumentColumn; ++i) left -= ListView_GetColumnWidth(window, i);
    left = std::max(left, widest);
    if (left != ListView_GetColumnWidth(window, argumentColumn)) ListView_SetColumnWidth(window, argumentColumn, left);
}

void EventLog::AddEvent(const std::wstring& control, const ControlEvent& event) {
    Add(L"event", control, event.name, DescribeArguments(event));
}

void EventLog::AddCall(const std::wstring& control, const std::wstring& member, const std::wstring& outcome) {
    Add(L"call", control, member, outcome);
}

void EventLog::Add(const wchar_t* kind, const std::wstring& control, const std::wstring& member,
                   const std::wstring& arguments) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t time[16];
    std::swprintf(time, std::size(time), L"%02u:%02u:%02u.%03u", now.wHour, now.wMinute, now.wSecond,
                  now.wMilliseconds);
    while (ListView_GetItemCount(window) >= keptLines) ListView_DeleteItem(window, 0);
    std::wstring cells[columns] = {time, kind, control, member, arguments};
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = ListView_GetItemCount(window);
    for (item.iSubItem = 0; item.iSubItem < columns; ++item.iSubItem) {
        std::wstring& cell = cells[item.iSubItem];
        std::replace_if(
            cell.begin(), cell.end(), [](wchar_t c) { return c < L' '; }, L' ');
        item.pszText = cell.data();
        SendMessageW(window, item.iSubItem == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    widest = std::max(widest, TextWidth(window, cells[argumentColumn]));
    Resized();
    ListView_EnsureVisible(window, item.iItem, FALSE);
}

void EventLog::Clear() {
    ListView_DeleteAllItems(window);
    widest = least;
    Resized();
}

void EventLog::Copy() const {
    const int count = ListView_GetItemCount(window);
    const bool all = ListView_GetSelectedCount(window) == 0;
    std::wstring text;
    for (int row = 0; row < count; ++row) {
        if (!all && !ListView_GetItemState(window, row, LVIS_SELECTED)) continue;
        for (int column = 0; column < columns; ++column)
            text += Cell(window, row, column) + (column + 1 < columns ? L"\t" : L"\r\n");
    }
    const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (!memory) return;
    std::memcpy(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    bool given = false;
    if (OpenClipboard(window)) {
        given = EmptyClipboard() && SetClipboardData(CF_UNICODETEXT, memory);
        CloseClipboard();
    }
    if (!given) GlobalFree(memory);
}

} // namespace dax::workbench
