#include "lessonmap/win32/LessonMapEditorWindow.h"

#include "controls/Reentrance.h"
#include "lessonmap/win32/StoryboardPictures.h"

#include <utility>

namespace dax {

namespace {

bool AreCtrlAndShiftDown() { return GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_SHIFT) < 0; }

} // namespace

LessonMapEditorWindow::LessonMapEditorWindow() : WindowBase(L"DAXLessonMapEditor") {
    propertyListener = editor->PropertyChanged.Add([this](const Text& name) {
        if (PropertyChanged && !isReading) PropertyChanged(name);
    });
    boxListener = editor->CheckboxesChanged.Add([this] { ApplyCheckBoxes(); });
    editor->AttachWindow(treeView.get());
    // The tree belongs to the window; the editor may exist longer, held by a caller.
    LessonMapEditor* const target = editor.get();
    treeView->MouseDown.AddPermanent([target](MouseButton button, Point) { target->OnMouseDown(button); });
    treeView->MouseMove.AddPermanent([target](MouseButton button, Point) { target->OnMouseMove(button); });
    treeView->MouseUp.AddPermanent([target](MouseButton button, Point) { target->OnMouseUp(button); });
    treeView->Click.AddPermanent([target](Point point, bool isCtrlDown) { target->OnClick(point, isCtrlDown); });
    treeView->DblClick.AddPermanent([target](Point point, bool isCtrlDown) { target->OnDblClick(point, isCtrlDown); });
    treeView->KeyDown.AddPermanent([target](int key) { target->OnKeyDown(key); });
    treeView->KeyPress.AddPermanent([target](char16_t character) { target->OnKeyPress(character); });
    treeView->Expanded.AddPermanent([target](Node& node) { target->OnExpanded(node, AreCtrlAndShiftDown()); });
    treeView->Collapsed.AddPermanent([target](Node& node) { target->OnCollapsed(node, AreCtrlAndShiftDown()); });
    treeView->MenuKey.AddPermanent([target] { target->OnMouseUp(MouseButton::Right); }); // the same rules
    treeView->DragLost.AddPermanent([target] { target->OnKeyPress(VK_ESCAPE); });
    treeView->Timer.AddPermanent([target](TreeTimer timer) { target->OnTimer(timer); });
}

LessonMapEditorWindow::~LessonMapEditorWindow() {
    editor->AttachWindow(nullptr);
    if (pictures) ImageList_Destroy(pictures);
}

bool LessonMapEditorWindow::SetPictures(HIMAGELIST images, const PictureKeys& keys) {
    const auto keptEditor = editor;
    if (images) {
        const HIMAGELIST copy = CopyPictures(images);
        if (!copy) return false;
        treeView->SetImages(copy);
        if (const HIMAGELIST former = std::exchange(pictures, copy)) ImageList_Destroy(former);
    }
    arePicturesOfHost = images != nullptr;
    pictureDpi = 0;
    UsePictures();
    keptEditor->SetImageList(images ? keys : PictureKeys());
    return true;
}

void LessonMapEditorWindow::ReadProperties(PropertyBag& bag) {
    WindowBase::ReadProperties(bag);
    const FlagGuard reading(isReading); // what a bag gives need not be saved again
    editor->ReadProperties(bag);
}

SIZE LessonMapEditorWindow::PreferredSize(int dpi) const { return {MulDiv(240, dpi, 96), MulDiv(320, dpi, 96)}; }

void LessonMapEditorWindow::OnCreate() {
    UsePictures();
    if (const HWND child = treeView->Create(Handle())) TrackFocus(child);
    ApplyCheckBoxes();
    OnFont();
    OnAmbient();
}

void LessonMapEditorWindow::OnAmbient() {
    UsePictures();
    treeView->SetColors(CurrentAmbient().foreColor, CurrentAmbient().backColor);
}

// Ours fit the DPI; a host's are as large as it made them.
void LessonMapEditorWindow::UsePictures() {
    if (pictures && pictureDpi == CurrentAmbient().dpi) return;
    pictureDpi = CurrentAmbient().dpi;
    if (!arePicturesOfHost) {
        const HIMAGELIST former = std::exchange(pictures, CreateStoryboardPictures(Scale(16)));
        treeView->SetImages(pictures);
        if (former) ImageList_Destroy(former);
    }
    ApplyCheckBoxes();
}

// The system draws its boxes for 96 dpi: ours replace them, and are removed with them.
void LessonMapEditorWindow::ApplyCheckBoxes() {
    treeView->SetCheckBoxes(editor->Checkboxes(), editor->Checkboxes() ? CreateCheckPictures(Scale(16)) : nullptr);
}

LRESULT LessonMapEditorWindow::OnNotify(const NMHDR& header, LPARAM) {
    // A listener may release this window: what is in use stays, the tree window no longer than its nodes.
    const auto keptEditor = editor;
    const auto keptNodes = nodes;
    const auto keptTree = treeView;
    LRESULT answer = 0;
    keptEditor->ReportFailures(u"Select", [&] { answer = keptTree->HandleNotification(header); });
    return answer;
}

// The tree's own keys; Tab, Enter and everything else are the host's. Escape is the tree's only during a drag.
bool LessonMapEditorWindow::TranslateKey(const MSG& message) {
    const WPARAM key = message.wParam;
    return IsKeyDownIn(treeView->Handle(), message) &&
           (TreeViewWindow::IsOwnKey(key) || (key == VK_SPACE && editor->Checkboxes()) ||
            (key == VK_ESCAPE && editor->IsDragging())) &&
           Deliver(message);
}

void LessonMapEditorWindow::Paint(HDC dc, SIZE size, bool isView) {
    treeView->PaintParent(dc, size, CurrentAmbient().backColor, Font(), isView);
}

} // namespace dax
