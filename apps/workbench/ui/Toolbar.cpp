#include "ui/Toolbar.h"

#include "ui/ToolbarIcons.h"

namespace dax::workbench {

Toolbar::~Toolbar() {
    for (const HIMAGELIST list : images) ImageList_Destroy(list);
}

bool Toolbar::Create(HWND parent, int id, const std::vector<Tool>& buttons) {
    tools = buttons;
    window = CreateWindowExW(0, TOOLBARCLASSNAMEW, L"",
                             WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | TBSTYLE_FLAT | TBSTYLE_LIST | TBSTYLE_TOOLTIPS |
                                 TBSTYLE_TRANSPARENT | CCS_NODIVIDER | CCS_NORESIZE | CCS_NOPARENTALIGN,
                             0, 0, 10, 10, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                             GetModuleHandleW(nullptr), nullptr);
    if (!window) return false;
    SendMessageW(window, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    SendMessageW(window, TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_MIXEDBUTTONS);
    std::vector<TBBUTTON> items;
    for (const Tool& tool : tools) {
        TBBUTTON item{};
        item.fsState = TBSTATE_ENABLED;
        item.fsStyle = BTNS_SEP;
        if (tool.id != 0) {
            item.iBitmap = static_cast<int>(tool.icon);
            item.idCommand = tool.id;
            item.fsStyle = static_cast<BYTE>((tool.isToggle ? BTNS_CHECK : BTNS_BUTTON) | BTNS_AUTOSIZE |
                                             (*tool.text ? BTNS_SHOWTEXT : 0));
            item.iString = reinterpret_cast<INT_PTR>(*tool.text ? tool.text : tool.tip);
        }
        items.push_back(item);
    }
    SendMessageW(window, TB_ADDBUTTONSW, items.size(), reinterpret_cast<LPARAM>(items.data()));
    return true;
}

void Toolbar::StyleChanged(const Style& style) {
    std::vector<HIMAGELIST> before = std::move(images);
    const int size = style.Scale(16);
    images = {CreateToolbarIcons(size, true), CreateToolbarIcons(size, false)};
    SendMessageW(window, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images[0]));
    SendMessageW(window, TB_SETDISABLEDIMAGELIST, 0, reinterpret_cast<LPARAM>(images[1]));
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(style.Plain()), FALSE);
    SendMessageW(window, TB_SETPADDING, 0, MAKELPARAM(style.Scale(8), style.Scale(8)));
    SendMessageW(window, TB_AUTOSIZE, 0, 0);
    for (const HIMAGELIST list : before) ImageList_Destroy(list);
}

int Toolbar::Height() const { return HIWORD(SendMessageW(window, TB_GETBUTTONSIZE, 0, 0)); }

const wchar_t* Toolbar::Tip(int id) const {
    for (const Tool& tool : tools)
        if (tool.id == id) return tool.tip;
    return L"";
}

std::vector<MenuEntry> Toolbar::Menu() const {
    std::vector<MenuEntry> entries;
    for (const Tool& tool : tools) {
        std::wstring text = tool.tip;
        if (const size_t key = text.rfind(L" ("); key != std::wstring::npos && text.back() == L')')
            text = text.substr(0, key) + L"\t" + text.substr(key + 2, text.size() - key - 3);
        const bool isDown =
            tool.isToggle && SendMessageW(window, TB_ISBUTTONCHECKED, static_cast<WPARAM>(tool.id), 0) != 0;
        entries.push_back({tool.id, text, tool.id != 0 && IsEnabled(tool.id), isDown});
    }
    return entries;
}

void Toolbar::Enable(int id, bool isEnabled) const {
    if (IsEnabled(id) != isEnabled) SendMessageW(window, TB_ENABLEBUTTON, static_cast<WPARAM>(id), isEnabled);
}

bool Toolbar::IsEnabled(int id) const {
    return SendMessageW(window, TB_ISBUTTONENABLED, static_cast<WPARAM>(id), 0) != 0;
}

void Toolbar::Press(int id, bool isDown) const {
    SendMessageW(window, TB_CHECKBUTTON, static_cast<WPARAM>(id), isDown);
}

} // namespace dax::workbench
