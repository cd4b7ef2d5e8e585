#include "hierarchy/win32/GroupEditorWindow.h"

#include "hierarchy/win32/NodePictures.h"

#include <utility>

namespace dax {

GroupEditorWindow::GroupEditorWindow() : WindowBase(L"DAXGroupEditor") {
    propertyListener = editor->PropertyChanged.Add([this](const Text& name) {
        if (PropertyChanged) PropertyChanged(name);
    });
    editor->AttachWindow(treeView.get());
    // The tree belongs to the window; the editor may exist longer, held by a caller.
    GroupEditor* const target = editor.get();
    treeView->MouseDown.AddPermanent([target](MouseButton button, Point) { target->OnMouseDown(button); });
    treeView->MouseMove.AddPermanent([target](MouseButton button, Point point) { target->OnMouseMove(button, point); });
    treeView->MouseUp.AddPermanent([target](MouseButton button, Point) { target->OnMouseUp(button); });
    treeView->KeyDown.AddPermanent([target](int key) { target->OnKeyDown(key); });
    treeView->KeyPress.AddPermanent([target](char16_t character) { target->OnKeyPress(character); });
    treeView->DblClick.AddPermanent([target](Point, bool) { target->OnDblClick(); });
    treeView->Collapsed.AddPermanent([target](Node& node) { target->OnCollapsed(node); });
    treeView->DragLost.AddPermanent([target] { target->OnKeyPress(VK_ESCAPE); });
    treeView->Timer.AddPermanent([target](TreeTimer timer) { target->OnTimer(timer); });
}

GroupEditorWindow::~GroupEditorWindow() {
    editor->AttachWindow(nullptr);
    if (pictures) ImageList_Destroy(pictures);
}

void GroupEditorWindow::InitProperties() {
    WindowBase::InitProperties();
    treeView->SetSingleExpand(editor->SingleExpand());
}

void GroupEditorWindow::ReadProperties(PropertyBag& bag) {
    WindowBase::ReadProperties(bag);
    editor->ReadProperties(bag);
    treeView->SetSingleExpand(editor->SingleExpand());
}

SIZE GroupEditorWindow::PreferredSize(int dpi) const { return {MulDiv(240, dpi, 96), MulDiv(320, dpi, 96)}; }

void GroupEditorWindow::OnCreate() {
    UsePictures();
    if (const HWND child = treeView->Create(Handle())) TrackFocus(child);
    OnFont();
    OnAmbient();
}

void GroupEditorWindow::OnAmbient() {
    UsePictures();
    treeView->SetColors(CurrentAmbient().foreColor, CurrentAmbient().backColor);
}

void GroupEditorWindow::OnFont() { treeView->SetFont(Font()); }

void GroupEditorWindow::OnDestroyed() { treeView->OnHandleDestroyed(); }

void GroupEditorWindow::UsePictures() {
    if (pictures && pictureDpi == CurrentAmbient().dpi) return;
    pictureDpi = CurrentAmbient().dpi;
    const HIMAGELIST former = std::exchange(pictures, CreateNodePictures(Scale(16)));
    treeView->SetImages(pictures);
    treeView->SetRowHeight(Scale(20)); // so that the pictures of two rows never touch
    if (former) ImageList_Destroy(former);
}

LRESULT GroupEditorWindow::OnNotify(const NMHDR& header, LPARAM) {
    const auto keptEditor = editor; // a listener may release this window; the model is destroyed last
    const auto keptTree = treeView;
    return keptTree->HandleNotification(header);
}

// The tree's own keys; Tab and everything else is the host's. Escape is the tree's only during a drag.
bool GroupEditorWindow::TranslateKey(const MSG& message) {
    const WPARAM key = message.wParam;
    return IsKeyDownIn(treeView->Handle(), message) &&
           (TreeViewWindow::IsOwnKey(key) || (key == VK_RETURN && editor->Locked()) ||
            (key == VK_ESCAPE && editor->IsDragging())) &&
           Deliver(message);
}

void GroupEditorWindow::Paint(HDC dc, SIZE size, bool isView) {
    treeView->PaintParent(dc, size, CurrentAmbient().backColor, Font(), isView);
}

} // namespace dax
