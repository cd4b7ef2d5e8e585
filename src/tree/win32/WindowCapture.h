// A picture of a window as it is on the screen, frame included: shown in its place while it is rebuilt.
#pragma once

#include "com/ComPtr.h"
#include "controls/win32/Windows.h"

#include <ocidl.h>

namespace dax {

class WindowCapture {
public:
    WindowCapture() = default;
    explicit WindowCapture(HWND window); // empty when the system refuses

    bool IsEmpty() const { return !picture; }
    void Draw(HDC dc, int x, int y) const;

private:
    ComPtr<IPicture> picture;
    SIZE size{};
};

} // namespace dax
