#include "tree/win32/TreeStyle.h"

#include <commctrl.h>

#include <cstdlib>

namespace dax {

RowColors ColorsWithoutFocus() {
    constexpr int readable = 3 * 96;
    const RowColors usual{GetSysColor(COLOR_3DHIGHLIGHT), GetSysColor(COLOR_3DDKSHADOW)};
    const int difference = std::abs(GetRValue(usual.text) - GetRValue(usual.background)) +
                           std::abs(GetGValue(usual.text) - GetGValue(usual.background)) +
                           std::abs(GetBValue(usual.text) - GetBValue(usual.background));
    if (difference >= readable) return usual;
    // Schemes of high contrast have both of them light, or both dark.
    return {GetSysColor(COLOR_WINDOW), GetSysColor(COLOR_WINDOWTEXT)};
}

} // namespace dax

namespace dax::modGeneric {

void SetTreeSingleExpandStyle(HWND tree, bool on) {
    const LONG style = GetWindowLongW(tree, GWL_STYLE);
    SetWindowLongW(tree, GWL_STYLE, on ? style | TVS_SINGLEEXPAND : style & ~LONG{TVS_SINGLEEXPAND});
    SetWindowPos(tree, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED | SWP_NOOWNERZORDER);
}

} // namespace dax::modGeneric
