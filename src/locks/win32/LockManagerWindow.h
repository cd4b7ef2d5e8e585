// The lock list in a real window.
#pragma once

#include "controls/win32/ListViewWindow.h"
#include "controls/win32/WindowBase.h"
#include "locks/LockManager.h"

namespace dax {

class LockManagerWindow : public WindowBase {
public:
    LockManagerWindow();

    // Callers must hold this pointer during the call: a listener may release the window.
    const std::shared_ptr<LockManager>& Manager() const { return manager; }
    const std::shared_ptr<ListModel>& Locks() const { return locks; }

    bool TranslateKey(const MSG& message) override;
    SIZE PreferredSize(int dpi) const override;

private:
    void OnCreate() override;
    void OnSize(int width, int height) override { list->Fit(width, height); }
    void OnAmbient() override { list->SetColors(CurrentAmbient().foreColor, CurrentAmbient().backColor); }
    void OnFont() override { list->SetFont(Font()); }
    void OnDestroyed() override { list->OnHandleDestroyed(); }
    LRESULT OnNotify(const NMHDR& header, LPARAM lParam) override;
    HWND FocusTarget() const override { return list->Handle(); }
    Accessible* AccessibleOf(HWND window) override { return window == Handle() ? nullptr : &list->AccessibleContent(); }
    void Paint(HDC dc, SIZE size, bool isView) override;

    std::shared_ptr<ListModel> locks = std::make_shared<ListModel>();
    std::shared_ptr<ListViewWindow> list = std::make_shared<ListViewWindow>(locks);
    std::shared_ptr<LockManager> manager = std::make_shared<LockManager>(locks);
};

} // namespace dax
