#include "controls/win32/ComboBoxWindow.h"

#include <algorithm>

namespace dax {

HWND ComboBoxWindow::Create(HWND parent) {
    constexpr DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_HASSTRINGS;
    handle = CreateWindowExW(0, L"COMBOBOX", L"", style, 0, 0, 0, 0, parent, nullptr, ThisModule(), nullptr);
    if (handle) EnableWindow(handle, isEnabled);
    Fill();
    return handle;
}

void ComboBoxWindow::SetFont(HFONT font) {
    if (handle) SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

void ComboBoxWindow::FitWidth(int width) {
    if (handle) SetWindowPos(handle, nullptr, 0, 0, width, 200, SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOMOVE);
}

void ComboBoxWindow::Fill() {
    if (!handle) return;
    SendMessageW(handle, WM_SETREDRAW, FALSE, 0);
    SendMessageW(handle, CB_RESETCONTENT, 0, 0);
    const auto add = [this](const Text& text) {
        SendMessageW(handle, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text)));
    };
    if (sample)
        add(*sample);
    else
        std::for_each(items.begin(), items.end(), add);
    SendMessageW(handle, CB_SETCURSEL, sample ? 0 : static_cast<WPARAM>(listIndex), 0);
    SendMessageW(handle, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(handle, nullptr, TRUE);
}

void ComboBoxWindow::ShowSample(std::optional<Text> text) {
    if (sample == text) return;
    sample = std::move(text);
    Fill();
}

const Text& ComboBoxWindow::ShownText() const {
    static const Text nothing;
    if (sample) return *sample;
    return listIndex >= 0 ? List(listIndex) : nothing;
}

void ComboBoxWindow::Clear() {
    ComboBox::Clear();
    if (handle && !sample) SendMessageW(handle, CB_RESETCONTENT, 0, 0);
}

void ComboBoxWindow::AddItem(const Text& text) {
    ComboBox::AddItem(text);
    if (handle && !sample) SendMessageW(handle, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text)));
}

void ComboBoxWindow::SetListIndex(int index) {
    if (handle && !sample) SendMessageW(handle, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    ComboBox::SetListIndex(index);
}

void ComboBoxWindow::SetEnabled(bool enabled) {
    ComboBox::SetEnabled(enabled);
    if (handle) EnableWindow(handle, enabled);
}

void ComboBoxWindow::HandleNotification(int code) {
    if (!handle || sample) return;
    if (code == CBN_DROPDOWN) PrepareDropDown();
    const int selected = static_cast<int>(SendMessageW(handle, CB_GETCURSEL, 0, 0));
    // Leaving an open list by Escape puts the former entry back without CBN_SELCHANGE.
    const bool isPutBack = code == CBN_SELENDCANCEL && selected != listIndex;
    if (code != CBN_SELCHANGE && !isPutBack) return;
    ComboBox::SetListIndex(selected);
}

// Up to a dozen entries are shown, as wide as the widest.
void ComboBoxWindow::PrepareDropDown() {
    constexpr int maxRows = 12;
    RECT place;
    GetWindowRect(handle, &place);
    const int width = place.right - place.left;
    const int rows = std::clamp(ListCount(), 1, maxRows);
    const int rowHeight = static_cast<int>(SendMessageW(handle, CB_GETITEMHEIGHT, 0, 0));
    SetWindowPos(handle, nullptr, 0, 0, width, place.bottom - place.top + rows * rowHeight + 2,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOMOVE);

    const HDC dc = GetDC(handle);
    const HGDIOBJ former = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(handle, WM_GETFONT, 0, 0)));
    int widest = 0;
    for (const Text& item : items) {
        SIZE extent{};
        GetTextExtentPoint32W(dc, Wide(item), static_cast<int>(item.size()), &extent);
        widest = std::max(widest, static_cast<int>(extent.cx));
    }
    SelectObject(dc, former);
    ReleaseDC(handle, dc);
    const int borders = 4 * GetSystemMetrics(SM_CXEDGE) + GetSystemMetrics(SM_CXVSCROLL);
    SendMessageW(handle, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(std::max(width, widest + borders)), 0);
}

bool ComboBoxWindow::HandlesKey(WPARAM key) const {
    switch (key) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_HOME:
    case VK_END:
    case VK_PRIOR:
    case VK_NEXT:
    case VK_F4:
        return true;
    case VK_RETURN:
    case VK_ESCAPE:
        return handle && SendMessageW(handle, CB_GETDROPPEDSTATE, 0, 0) != 0;
    default:
        return false;
    }
}

} // namespace dax
