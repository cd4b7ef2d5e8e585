// The site of a control in its host: its interfaces and its ambient properties.
#pragma once

#include "com/ComPtr.h"
#include "controls/Ambient.h"

#include <ocidl.h>

namespace dax {

class HostSite {
public:
    // Null: no host. Releases everything of the former one.
    void Set(IOleClientSite* client);
    explicit operator bool() const { return static_cast<bool>(client); }

    IOleClientSite* Client() const { return client.Get(); }
    ComPtr<IOleControlSite> ControlSite() const;
    // Of a site that can show windows in place; kept until Set.
    IOleInPlaceSite* InPlace();

    // Defaults for what the host does not supply.
    Ambient ReadAmbient() const;

private:
    ComPtr<IOleClientSite> client;
    ComPtr<IOleInPlaceSite> inPlace;
};

// The pixels per inch that the host has set on the window or one around it; else those of the monitor that the window
// is on or, where the system cannot say it, of the screen.
int DpiOf(HWND window);

SIZEL PixelsToHimetric(SIZE pixels, int dpi);
SIZE HimetricToPixels(SIZEL himetric, int dpi);

} // namespace dax
