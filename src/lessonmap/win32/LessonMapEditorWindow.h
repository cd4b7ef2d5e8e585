// The lesson map's editor in a real window: one tree that fills it.
#pragma once

#include "controls/win32/WindowBase.h"
#include "lessonmap/LessonMapEditor.h"
#include "tree/win32/TreeViewWindow.h"

namespace dax {

class LessonMapEditorWindow : public WindowBase {
public:
    LessonMapEditorWindow();
    ~LessonMapEditorWindow() override;

    // Callers must hold this pointer during the call: a listener may release the window.
    const std::shared_ptr<LessonMapEditor>& Editor() const { return editor; }

    TreeViewWindow& Tree() const { return *treeView; }

    // A host's own pictures instead of ours, each with the key at its place; they are copied. Null: ours again. False,
    // and nothing changed, when there is no such image list.
    bool SetPictures(HIMAGELIST images, const PictureKeys& keys);

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override { editor->WriteProperties(bag); }
    bool TranslateKey(const MSG& message) override;
    SIZE PreferredSize(int dpi) const override;

private:
    void OnCreate() override;
    void OnSize(int width, int height) override { treeView->Fit(width, height); }
    void OnAmbient() override;
    void OnFont() override { treeView->SetFont(Font()); }
    void OnDestroyed() override { treeView->OnHandleDestroyed(); }
    LRESULT OnNotify(const NMHDR& header, LPARAM lParam) override;
    HWND FocusTarget() const override { return treeView->Handle(); }
    Accessible* AccessibleOf(HWND window) override {
        return window == Handle() ? nullptr : &treeView->AccessibleContent();
    }
    void Paint(HDC dc, SIZE size, bool isView) override;
    void UsePictures();
    void ApplyCheckBoxes();

    std::shared_ptr<LessonMapEditor> editor = LessonMapEditor::Create();
    std::shared_ptr<NodeTree> nodes = editor->tvwObject();
    std::shared_ptr<TreeViewWindow> treeView = std::make_shared<TreeViewWindow>(*nodes);
    Subscription propertyListener, boxListener;
    HIMAGELIST pictures = nullptr;
    bool arePicturesOfHost = false, isReading = false;
    int pictureDpi = 0;
};

} // namespace dax
