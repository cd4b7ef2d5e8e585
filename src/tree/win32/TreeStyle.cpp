#include "tree/win32/TreeStyle.h"

#include <commctrl.h>

namespace dax::modGeneric {

void SetTreeSingleExpandStyle(HWND tree, bool on) {
    const LONG style = GetWindowLongW(tree, GWL_STYLE);
    SetWindowLongW(tree, GWL_STYLE, on ? style | TVS_SINGLEEXPAND : style & ~LONG{TVS_SINGLEEXPAND});
    SetWindowPos(tree, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED | SWP_NOOWNERZORDER);
}

} // namespace dax::modGeneric
