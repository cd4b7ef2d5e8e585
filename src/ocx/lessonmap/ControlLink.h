// The control that shows a tree, for the tree's automation objects, which may exist longer than the control.
#pragma once

#include "com/ComPtr.h"
#include "lessonmap/win32/LessonMapEditorWindow.h"

namespace dax {

class ControlLink {
public:
    ControlLink(IUnknown& control, LessonMapEditorWindow& window) : control(&control), window(&window) {}
    // Afterwards there are no pictures and no window.
    void OnControlDestroyed();

    int PictureOf(const Text& key) const;
    TreeWindow* Window() const { return window ? &window->Tree() : nullptr; }
    HWND Handle() const { return window ? window->Tree().Handle() : nullptr; }
    ComPtr<IDispatch> ImageList() const { return imageList; } // the object that the host has set
    // As ReadPictures (HostPictures.h); throws Error when the system has no such image list, too.
    void SetImageList(const VARIANT& list, const VARIANT& keys);

private:
    IUnknown* control; // null, as the window: destroyed
    LessonMapEditorWindow* window;
    ComPtr<IDispatch> imageList;
};

} // namespace dax
