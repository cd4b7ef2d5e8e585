// Base of the windows of all controls, which whatever hosts them uses through it, the ActiveX shell or a test: class,
// fonts, focus, painting, messages of its children, and destruction that is safe also inside one of the control's own
// events.
#pragma once

#include "controls/Ambient.h"
#include "controls/PropertyBag.h"
#include "controls/win32/Accessible.h"
#include "controls/win32/Windows.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace dax {

class WindowBase {
public:
    // Inside a message of the window or its children the window only leaves its parent and is destroyed by a posted
    // message, since the system still uses it; otherwise it is destroyed at once.
    virtual ~WindowBase();
    WindowBase(const WindowBase&) = delete;
    WindowBase& operator=(const WindowBase&) = delete;

    // Creates the window (once; a second call only moves it to the new parent). Everything else works before this
    // call and after the window's destruction by its parent. Without a parent the window is a child of a hidden one of
    // its own. Null when the system refuses a window.
    HWND Create(HWND parent, const RECT& place);
    HWND Handle() const { return handle; } // null while there is no window

    void SetAmbient(const Ambient& ambient); // repaints what changed

    // Exactly one of the first two comes once, before the control is used.
    virtual void InitProperties();
    virtual void ReadProperties(PropertyBag& bag);
    virtual void WriteProperties(PropertyBag&) {}
    // Called by the control with the name of a property that the bag keeps when it has changed, so that the host saves
    // it.
    std::function<void(const Text&)> PropertyChanged;

    // A picture of the control without activation; also without a window. The place is in pixels of a screen.
    void Draw(HDC dc, const RECT& place);
    // The same as texts, lines and shapes, for a context that scales them: of a printer or a metafile. The control is
    // laid out in so many of its own pixels, from the context's origin on.
    void DrawScaled(HDC dc, SIZE size) { Paint(dc, size, true); }
    // The control's text, line by line; empty when it shows more than texts.
    virtual Text PlainText() const { return {}; }

    // Offers a keyboard message before the host sees it; true when the control has used it.
    virtual bool TranslateKey(const MSG&) { return false; }

    // Called with true when the window or one of its children gets the focus, with false when the focus leaves.
    std::function<void(bool)> FocusChanged;
    // Called when the window has come to a monitor of another resolution.
    std::function<void()> DpiChanged;
    // Called when the system's colours or fonts have changed, which a control uses where the host sets none.
    std::function<void()> SystemLookChanged;

    virtual SIZE PreferredSize(int dpi) const = 0; // pixels

    // How many windows of this module's controls, and objects of theirs that screen readers hold, still exist: the
    // module must not be unloaded before it is 0.
    static long LiveCount();

protected:
    // `name` is the name of the window class; it must outlive the module's windows.
    explicit WindowBase(const wchar_t* name);

    virtual void OnCreate() {} // creates child windows; the fonts are there
    virtual void OnSize(int width, int height);
    // After the ambient properties have come or changed, once the control is placed; also called when it is placed.
    virtual void OnAmbient() {}
    virtual void OnFont() {}      // child windows take Font(); the former one is deleted afterwards
    virtual void OnDestroyed() {} // the window and its children have been destroyed
    // `isView`: draws a picture of the control, its child windows included, perhaps in a context that scales.
    virtual void Paint(HDC dc, SIZE size, bool isView) = 0;
    // Messages from child windows. A handler that raises an event does so last: it may destroy the control.
    virtual void OnCommand(HWND, int /*code*/) {}
    virtual LRESULT OnNotify(const NMHDR&, LPARAM) { return 0; }
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    virtual HWND FocusTarget() const { return nullptr; } // the child that has the focus when the control gets it
    // What a screen reader finds in the control or in a child whose focus is tracked; null for the system's own answer.
    virtual Accessible* AccessibleOf(HWND) { return nullptr; }

    const Ambient& CurrentAmbient() const { return ambient; }
    HFONT Font(); // made for the ambient font at the host's DPI
    HFONT BoldFont();
    int Scale(int pixelsAt96) const { return MulDiv(pixelsAt96, ambient.dpi, 96); }
    void Repaint(); // at once, when there is a window
    void TrackFocus(HWND child);

    static bool IsKeyDownIn(HWND child, const MSG& message) {
        return message.message == WM_KEYDOWN && message.hwnd == child;
    }
    static bool Deliver(const MSG& message); // to its window, as the host's loop would; true

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK ChildProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                           DWORD_PTR self);
    LRESULT Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> AnswerGetObject(HWND target, WPARAM wParam, LPARAM lParam);
    bool IsInside(HWND window) const;
    void FocusMoved(HWND focus);
    LRESULT AppearanceChanged(UINT message, WPARAM wParam, LPARAM lParam);
    void Place();
    void DeleteFonts();
    void LeaveHiddenParent();

    const wchar_t* className;
    HWND handle = nullptr;
    HWND hiddenParent = nullptr;
    Ambient ambient;
    HFONT font = nullptr, boldFont = nullptr;
    std::vector<HWND> children; // whose focus is tracked
    bool hasFocus = false;
    bool isPlaced = false;
    std::shared_ptr<int> depth = std::make_shared<int>(0); // nesting of messages
};

} // namespace dax
