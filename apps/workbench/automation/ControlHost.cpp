#include "automation/ControlHost.h"

#include <commctrl.h>
#include <ocidl.h>

namespace dax::workbench {

namespace {

constexpr wchar_t hostProperty[] = L"DAXWorkbench.ControlHost";

// The container that every Windows carries; loaded by hand because its import library differs between compilers.
struct Container {
    BOOL(WINAPI* init)() = nullptr;
    HRESULT(WINAPI* create)(LPCOLESTR, HWND, IStream*, IUnknown**, IUnknown**, REFIID, IUnknown*) = nullptr;
    HRESULT(WINAPI* control)(HWND, IUnknown**) = nullptr;

    bool ready = false;

    Container() {
        const HMODULE module = LoadLibraryW(L"atl.dll");
        if (!module) return;
        const auto find = [module](auto& function, const char* name) {
            function = reinterpret_cast<std::decay_t<decltype(function)>>(
                reinterpret_cast<void*>(GetProcAddress(module, name)));
        };
        find(init, "AtlAxWinInit");
        find(create, "AtlAxCreateControlEx");
        find(control, "AtlAxGetControl");
        ready = init && create && control && init(); // once: the second time it finds its classes registered
    }
};

} // namespace

ControlHost::ControlHost(HWND parent, int id, bool tabStop, const ControlLibrary& library, const std::wstring& name,
                         ControlEventHandler handler) {
    static const Container container;
    if (!container.ready)
        throw HostError(E_FAIL, L"The system's ActiveX container (atl.dll) cannot be used on this machine.");
    window = CreateWindowExW(
        0, L"AtlAxWin", L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS | (tabStop ? WS_TABSTOP : 0), 0,
        0, 100, 100, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
    if (!window) throw HostError(E_FAIL, DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    ComPtr<IUnknown> site, unused, object;
    HRESULT result =
        container.create(library.ClassText(name).c_str(), window, nullptr, site.Out(), unused.Out(), IID_NULL, nullptr);
    if (SUCCEEDED(result)) result = container.control(window, object.Out());
    const auto dispatch = object.As<IDispatch>(IID_IDispatch);
    if (SUCCEEDED(result) && !dispatch) result = E_NOINTERFACE;
    if (FAILED(result)) {
        DestroyWindow(window);
        throw HostError(result, library.Advice(L"DAXControls." + name, result));
    }
    control = Automation(dispatch);
    try {
        events = ConnectEvents(object.Get(), std::move(handler));
    } catch (const HostError&) {
        control = Automation();
        DestroyWindow(window);
        throw;
    }
    SetPropW(window, hostProperty, this);
    SetWindowSubclass(window, Procedure, 1, reinterpret_cast<DWORD_PTR>(this));
}

ControlHost::~ControlHost() {
    events.Disconnect();
    control = Automation();
    if (window) DestroyWindow(window);
}

ControlHost* ControlHost::Of(HWND window) { return static_cast<ControlHost*>(GetPropW(window, hostProperty)); }

LRESULT CALLBACK ControlHost::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                        DWORD_PTR self) {
    auto* host = reinterpret_cast<ControlHost*>(self);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, Procedure, id);
        RemovePropW(window, hostProperty);
        host->window = nullptr;
        return DefSubclassProc(window, message, wParam, lParam);
    }
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    // Not every version of the container hands the focus on to its control.
    if (message == WM_SETFOCUS && GetFocus() == window) host->Activate();
    return result;
}

void ControlHost::Activate() {
    const auto object = control.Object().As<IOleObject>(IID_IOleObject);
    const auto place = object.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
    ComPtr<IOleClientSite> site;
    if (!place || FAILED(object->GetClientSite(site.Out()))) return;
    RECT area;
    GetClientRect(window, &area);
    object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site.Get(), 0, window, &area);
    HWND inner = nullptr;
    if (GetFocus() == window && SUCCEEDED(place->GetWindow(&inner)) && inner) SetFocus(inner);
}

bool ControlHost::OfferKey(HWND frame, MSG& message) {
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    ControlHost* host = nullptr;
    for (HWND one = message.hwnd; one && one != frame && !host; one = GetParent(one)) host = Of(one);
    if (!host) return false;
    const auto active = host->control.Object().As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject);
    if (active && active->TranslateAccelerator(&message) == S_OK) return true;
    if (message.message != WM_KEYDOWN || message.wParam != VK_TAB || GetKeyState(VK_CONTROL) < 0) return false;
    const HWND next = GetNextDlgTabItem(frame, host->window, GetKeyState(VK_SHIFT) < 0);
    if (next) SetFocus(next);
    return true;
}

} // namespace dax::workbench
