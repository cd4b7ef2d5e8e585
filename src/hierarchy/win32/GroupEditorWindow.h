// The hierarchy editor in a real window: one tree that fills it.
#pragma once

#include "controls/win32/WindowBase.h"
#include "hierarchy/GroupEditor.h"
#include "tree/win32/TreeViewWindow.h"

namespace dax {

class GroupEditorWindow : public WindowBase {
public:
    GroupEditorWindow();
    ~GroupEditorWindow() override;

    // Callers must hold this pointer during the call: a listener may release the window.
    const std::shared_ptr<GroupEditor>& Editor() const { return editor; }

    void InitProperties() override;
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override { editor->WriteProperties(bag); }
    bool TranslateKey(const MSG& message) override;
    SIZE PreferredSize(int dpi) const override;

private:
    void OnCreate() override;
    void OnSize(int width, int height) override { treeView->Fit(width, height); }
    void OnAmbient() override;
    void OnFont() override;
    void OnDestroyed() override;
    LRESULT OnNotify(const NMHDR& header, LPARAM lParam) override;
    HWND FocusTarget() const override { return treeView->Handle(); }
    Accessible* AccessibleOf(HWND window) override {
        return window == Handle() ? nullptr : &treeView->AccessibleContent();
    }
    void Paint(HDC dc, SIZE size, bool isView) override;
    void UsePictures();

    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
    std::shared_ptr<TreeViewWindow> treeView = std::make_shared<TreeViewWindow>(editor->Tree());
    Subscription propertyListener;
    HIMAGELIST pictures = nullptr;
    int pictureDpi = 0;
};

} // namespace dax
