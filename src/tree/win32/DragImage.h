// The picture of a node that follows the pointer during a drag.
#pragma once

#include "controls/win32/Windows.h"

#include <commctrl.h>

namespace dax {

class DragImage {
public:
    // Picture and caption as the tree shows them; `hotSpot` is where the pointer holds it.
    DragImage(HWND window, HIMAGELIST icons, int icon, const Text& caption, POINT hotSpot);
    ~DragImage();
    DragImage(const DragImage&) = delete;
    DragImage& operator=(const DragImage&) = delete;

    void Show(POINT clientPoint); // also moves it
    void Hide();                  // before anything is painted under it
    bool IsShown() const { return isShown; }
    void ShowAgain() { Show(last); } // where it was

private:
    HWND owner;
    HIMAGELIST images = nullptr;
    POINT last{};
    bool isShown = false;
};

} // namespace dax
