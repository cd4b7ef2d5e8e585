// The control as a window inside its host's: activity in place, the focus, keys.
#include "ocx/hosting/Control.h"

#include <olectl.h>

namespace dax {

// Every call of the host may call back and deactivate the control; therefore the flags are checked again.
HRESULT Control::ActivateInPlace() {
    const SelfReference self(*this);
    if (isInPlaceActive) {
        if (const HWND handle = window->Handle()) ShowWindow(handle, SW_SHOWNA);
        return S_OK;
    }
    const ComPtr<IOleInPlaceSite> host(site.InPlace());
    if (!host) return OLE_E_NOTRUNNING;
    if (host->CanInPlaceActivate() != S_OK || site.InPlace() != host.Get()) return E_FAIL;
    isInPlaceActive = true;
    host->OnInPlaceActivate();

    const HRESULT result = Call([&] {
        HWND parent = nullptr;
        RECT position{}, visible{};
        OLEINPLACEFRAMEINFO info{};
        info.cb = sizeof info;
        Check(host->GetWindow(&parent));
        ComPtr<IOleInPlaceFrame> hostFrame;
        ComPtr<IOleInPlaceUIWindow> hostDocument;
        if (SUCCEEDED(host->GetWindowContext(hostFrame.Out(), hostDocument.Out(), &position, &visible, &info))) {
            frame = hostFrame;
            document = hostDocument;
            if (!IsRectEmpty(&position)) place = position;
        }
        if (IsRectEmpty(&visible)) visible = place;
        if (!isInPlaceActive || !parent) throw ComError(E_FAIL);
        if (DpiOf(parent) != dpi) ReadAmbient();
        if (!window->Create(parent, place)) throw ComError(HRESULT_FROM_WIN32(GetLastError()));
        MoveWindowTo(place, visible);
        ShowWindow(window->Handle(), SW_SHOWNA);
        if (site) site.Client()->ShowObject();
    });
    if (FAILED(result)) InPlaceDeactivate();
    return result;
}

HRESULT Control::ActivateUI() {
    const SelfReference self(*this);
    const HRESULT result = ActivateInPlace();
    if (FAILED(result) || isUIActive) return result;
    const ComPtr<IOleInPlaceSite> host(site.InPlace());
    isUIActive = true;
    if (host) host->OnUIActivate();
    if (!isUIActive) return E_FAIL; // the host refused it after all
    const HWND handle = window->Handle(), focus = GetFocus();
    if (handle && focus != handle && !IsChild(handle, focus)) SetFocus(handle);
    const ComPtr<IOleInPlaceUIWindow> windows[] = {ComPtr<IOleInPlaceUIWindow>(frame.Get()), document};
    for (const auto& hostWindow : windows) {
        if (!hostWindow || !isUIActive) continue;
        hostWindow->SetActiveObject(this, Entry().name);
        hostWindow->SetBorderSpace(nullptr); // the control has no tool bars
    }
    return S_OK;
}

HRESULT Control::UIDeactivate() {
    const SelfReference self(*this);
    if (!isUIActive) return S_OK;
    isUIActive = false;
    const ComPtr<IOleInPlaceSite> host(site.InPlace());
    const ComPtr<IOleInPlaceUIWindow> windows[] = {document, ComPtr<IOleInPlaceUIWindow>(frame.Get())};
    for (const auto& hostWindow : windows)
        if (hostWindow) hostWindow->SetActiveObject(nullptr, nullptr);
    if (host) host->OnUIDeactivate(FALSE);
    return S_OK;
}

// An invisible control must not receive keys: the host gets the focus.
void Control::HideWindow() {
    const HWND handle = window->Handle(), focus = GetFocus();
    if (handle && focus && (focus == handle || IsChild(handle, focus))) SetFocus(GetParent(handle));
    if (const HWND hidden = window->Handle()) ShowWindow(hidden, SW_HIDE);
}

HRESULT Control::InPlaceDeactivate() {
    const SelfReference self(*this);
    UIDeactivate();
    if (isInPlaceActive) HideWindow();
    if (!isInPlaceActive) return S_OK;
    isInPlaceActive = false;
    // The window keeps its content, but leaves the host's window, which may be destroyed next.
    if (const HWND handle = window->Handle()) {
        SetWindowRgn(handle, nullptr, FALSE);
        SetParent(handle, HWND_MESSAGE);
    }
    const ComPtr<IOleInPlaceSite> host(site.InPlace());
    frame.Reset();
    document.Reset();
    if (host) host->OnInPlaceDeactivate();
    return S_OK;
}

void Control::MoveWindowTo(const RECT& newPlace, const RECT& visible) {
    place = newPlace;
    const HWND handle = window->Handle();
    if (!handle || !isInPlaceActive) return;
    MoveWindow(handle, place.left, place.top, place.right - place.left, place.bottom - place.top, TRUE);
    RECT shown;
    if (IntersectRect(&shown, &place, &visible) && !EqualRect(&shown, &place)) {
        OffsetRect(&shown, -place.left, -place.top);
        SetWindowRgn(handle, CreateRectRgnIndirect(&shown), TRUE); // the window owns the region
    } else {
        SetWindowRgn(handle, nullptr, TRUE);
    }
}

HRESULT Control::SetObjectRects(LPCRECT newPlace, LPCRECT visible) {
    if (!newPlace) return E_POINTER;
    return Guard([&] { MoveWindowTo(*newPlace, visible ? *visible : *newPlace); });
}

HRESULT Control::GetWindow(HWND* result) {
    if (!result) return E_POINTER;
    *result = isInPlaceActive ? window->Handle() : nullptr;
    return *result ? S_OK : E_FAIL;
}

HRESULT Control::TranslateAccelerator(LPMSG message) {
    if (!message) return E_POINTER;
    bool isUsed = false;
    const HRESULT result = Guard([&] { isUsed = window->TranslateKey(*message); });
    if (FAILED(result)) return result;
    if (isUsed) return S_OK;
    const auto controlSite = site.ControlSite();
    if (!controlSite) return S_FALSE;
    DWORD modifiers = 0;
    if (GetKeyState(VK_SHIFT) < 0) modifiers |= 1;
    if (GetKeyState(VK_CONTROL) < 0) modifiers |= 2;
    if (GetKeyState(VK_MENU) < 0) modifiers |= 4;
    return controlSite->TranslateAccelerator(message, modifiers) == S_OK ? S_OK : S_FALSE;
}

void Control::FocusMoved(bool isInside) {
    const SelfReference self(*this);
    if (isInside && isInPlaceActive) ActivateUI();
    if (const auto controlSite = site.ControlSite()) controlSite->OnFocus(isInside);
    if (isInside || !isUIActive) return;
    // Another window of the host has the focus now. While a message box or another program has it, the control stays
    // active, and gets the focus back from the host.
    const HWND handle = window->Handle(), focus = GetFocus();
    if (handle && focus && GetAncestor(focus, GA_ROOT) == GetAncestor(handle, GA_ROOT)) UIDeactivate();
}

} // namespace dax
