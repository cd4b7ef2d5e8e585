// The real window of one control, as whatever hosts it sees it: the ActiveX shell, or a test.
#pragma once

#include "controls/Ambient.h"
#include "controls/PropertyBag.h"
#include "controls/win32/Windows.h"

#include <functional>

namespace dax {

class ControlWindow {
public:
    virtual ~ControlWindow() = default; // destroys the window

    // Creates the window (once; a second call only moves it to the new parent). Everything else works before this
    // call and after the window's destruction by its parent.
    virtual HWND Create(HWND parent, const RECT& place) = 0;
    virtual HWND Handle() const = 0; // null while there is no window

    virtual void SetAmbient(const Ambient& ambient) = 0; // repaints what changed

    // Exactly one of the first two comes once, before the control is used.
    virtual void InitProperties() = 0;
    virtual void ReadProperties(PropertyBag& bag) = 0;
    virtual void WriteProperties(PropertyBag& bag) = 0;
    // Called by the control with the name of a property that the bag keeps when it has changed, so that the host saves
    // it.
    std::function<void(const Text&)> PropertyChanged;

    // A picture of the control without activation; also without a window. The place is in pixels of a screen.
    virtual void Draw(HDC dc, const RECT& place) = 0;
    // The same as texts, lines and shapes, for a context that scales them: of a printer or a metafile. The control is
    // laid out in so many of its own pixels, from the context's origin on.
    virtual void DrawScaled(HDC dc, SIZE size) = 0;
    // The control's text, line by line; empty when it shows more than texts.
    virtual Text PlainText() const { return {}; }

    // Offers a keyboard message before the host sees it; true when the control has used it.
    virtual bool TranslateKey(const MSG& message) = 0;

    // Called with true when the window or one of its children gets the focus, with false when the focus leaves.
    std::function<void(bool)> FocusChanged;
    // Called when the window has come to a monitor of another resolution.
    std::function<void()> DpiChanged;

    // Called when the system's colours or fonts have changed, which a control uses where the host sets none.
    std::function<void()> SystemLookChanged;

    virtual SIZE PreferredSize(int dpi) const = 0; // pixels
};

} // namespace dax
