// A window with controls in the system's container, in front of all others, for the checks that need a real window.
#pragma once

#include "automation/ControlHost.h"
#include "selftest/UserInput.h"
#include "ui/Window.h"

#include <memory>
#include <vector>

namespace dax::workbench::selftest {

// A control on the form, and what it has raised.
struct HostedControl {
    std::unique_ptr<ControlHost> host;
    std::vector<std::wstring> events; // each with its arguments
    ControlEventHandler answer;       // receives each event, too, and may answer it

    const Automation& Control() const { return host->Control(); }
    HWND Window() const { return host->Window(); }
    // The first window of that class below; null when there is none.
    HWND Inner(const wchar_t* className) const;
    bool Raised(const std::wstring& beginning) const;
    std::wstring AllRaised() const;
};

class TestForm final : private workbench::Window {
public:
    // So large inside, in pixels at 96 dots per inch. With `dpi` the controls have that resolution, and the window is
    // larger in the same proportion; without, that of the monitor.
    TestForm(const ControlLibrary& library, int width, int height, int dpi = 0);
    ~TestForm() override;

    // Creates the control of that name at that place, in pixels at 96 dots per inch. Throws HostError.
    HostedControl& Add(const wchar_t* control, const RECT& place);
    void Remove(HostedControl& control);
    // As when the window is moved to a monitor of another resolution.
    void ChangeDpi(int dpi);

    HWND Handle() const { return Window::Handle(); }
    int Dpi() const { return resolution; }
    // Dispatches what waits, keys to the control first, as containers do.
    void Pump();
    // Pumps until the condition holds; false when it does not within some seconds.
    bool Until(const std::function<bool()>& condition);
    // Plays input. Throws Skipped where no window of ours may come to the foreground, and HostError when input was
    // lost.
    void Play(const std::function<void(UserInput&)>& script);
    // Writes a picture of the inside; throws HostError.
    void Save(const std::wstring& path);

private:
    struct Placed {
        std::unique_ptr<HostedControl> control;
        RECT place;
    };

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Arrange();
    RECT Scaled(const RECT& place) const;
    void BringToForeground();

    const ControlLibrary& library;
    int width, height, resolution;
    std::vector<Placed> controls;
};

} // namespace dax::workbench::selftest
