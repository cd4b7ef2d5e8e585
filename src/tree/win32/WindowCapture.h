// A picture of a window as it is on the screen, frame included: shown in its place while it is rebuilt.
#pragma once

#include "controls/win32/Windows.h"

#include <ocidl.h>

namespace dax {

class WindowCapture {
public:
    WindowCapture() = default;
    explicit WindowCapture(HWND window); // empty when the system refuses
    ~WindowCapture();
    WindowCapture(WindowCapture&& other) noexcept;
    WindowCapture& operator=(WindowCapture&& other) noexcept;
    WindowCapture(const WindowCapture&) = delete;
    WindowCapture& operator=(const WindowCapture&) = delete;

    bool IsEmpty() const { return !picture; }
    void Draw(HDC dc, int x, int y) const;

private:
    IPicture* picture = nullptr;
    SIZE size{};
};

} // namespace dax
