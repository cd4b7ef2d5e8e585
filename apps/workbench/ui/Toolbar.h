// A row of small buttons with pictures of our own; the tip of each names its key.
#pragma once

#include "ui/Commands.h"
#include "ui/Style.h"

#include <commctrl.h>

#include <vector>

namespace dax::workbench {

enum class Icon {
    Save,
    Undo,
    Redo,
    AddGroup,
    AddLesson,
    Remove,
    Up,
    Down,
    Indent,
    Outdent,
    ExpandAll,
    CollapseAll,
    Freeze,
    PreviousMap,
    NextMap,
    CheckAll,
    UncheckAll,
};

// No number: a gap between two groups of buttons.
struct Tool {
    int id = 0;
    Icon icon = Icon::Save;
    const wchar_t* tip = L"";
    const wchar_t* text = L""; // beside the picture; may be empty
    bool isToggle = false;
};

// Tells its parent of a click by WM_COMMAND with the button's number.
class Toolbar {
public:
    Toolbar() = default;
    Toolbar(const Toolbar&) = delete;
    Toolbar& operator=(const Toolbar&) = delete;
    ~Toolbar();

    bool Create(HWND parent, int id, const std::vector<Tool>& buttons);
    HWND Window() const { return window; }
    void StyleChanged(const Style& style);
    int Height() const;
    const wchar_t* Tip(int id) const;
    // The buttons as a menu shows them.
    std::vector<MenuEntry> Menu() const;

    void Enable(int id, bool isEnabled) const;
    bool IsEnabled(int id) const;
    void Press(int id, bool isDown) const; // a toggle

private:
    HWND window = nullptr;
    std::vector<Tool> tools;
    std::vector<HIMAGELIST> images; // of the buttons that can be used, and of the others
};

} // namespace dax::workbench
