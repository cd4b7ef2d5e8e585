// A control as a form designer holds it: not running, not active, drawn where its place on the form is.
#pragma once

#include "automation/ControlLibrary.h"

namespace dax::workbench {

class DesignSite {
public:
    // Creates the control of that programmatic name. Throws HostError with advice.
    DesignSite(const ControlLibrary& library, const std::wstring& name);
    DesignSite(const DesignSite&) = delete;
    DesignSite& operator=(const DesignSite&) = delete;
    ~DesignSite();

    // In pixels of the context; sets the control's size first. Throws HostError when it draws nothing.
    void Draw(HDC dc, const RECT& place) const;

private:
    ComPtr<IOleObject> control;
};

} // namespace dax::workbench
