#include "controls/win32/WindowBase.h"

#include "controls/win32/GdiSurface.h"

#include <commctrl.h>

#include <atomic>
#include <utility>

namespace dax {

namespace {

constexpr UINT destroyLater = WM_APP + 0x3D1;
constexpr UINT retryDelay = 20;                // milliseconds
constexpr UINT dpiChangedAfterParent = 0x02E3; // WM_DPICHANGED_AFTERPARENT, which older headers lack
constexpr UINT_PTR focusSubclass = 1;
constexpr wchar_t hiddenParentClass[] = L"DAXHiddenParent";
std::atomic<long> liveWindows = 0;

// Counts nested messages; exists longer than the control.
class DepthGuard {
public:
    explicit DepthGuard(std::shared_ptr<int> counter) : depth(std::move(counter)) { ++*depth; }
    ~DepthGuard() { --*depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    std::shared_ptr<int> depth;
};

void CALLBACK DestroyWhenIdle(HWND window, UINT, UINT_PTR pending, DWORD) {
    auto* const depth = reinterpret_cast<std::shared_ptr<int>*>(pending);
    if (**depth > 0) return;
    KillTimer(window, pending);
    delete depth;
    DestroyWindow(window);
}

// A module that is loaded again finds its former classes, with procedures that no longer exist: they are replaced.
// While windows of a class exist the system refuses to remove it, and it is the right one.
void RegisterOnce(const wchar_t* name, WNDPROC procedure, UINT style) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    if (GetClassInfoExW(ThisModule(), name, &description) && description.lpfnWndProc == procedure) return;
    UnregisterClassW(name, ThisModule());
    description = {};
    description.cbSize = sizeof description;
    description.style = style;
    description.lpfnWndProc = procedure;
    description.hInstance = ThisModule();
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.lpszClassName = name;
    RegisterClassExW(&description);
}

} // namespace

WindowBase::WindowBase(const wchar_t* name) : className(name) {}

WindowBase::~WindowBase() {
    for (const HWND child : children) RemoveWindowSubclass(child, ChildProcedure, focusSubclass);
    if (handle) {
        SetWindowLongPtrW(handle, GWLP_USERDATA, 0);
        if (*depth > 0) {
            ShowWindow(handle, SW_HIDE);
            SetParent(handle, HWND_MESSAGE);
            PostMessageW(handle, destroyLater, reinterpret_cast<WPARAM>(new std::shared_ptr<int>(depth)), 0);
        } else {
            DestroyWindow(handle);
        }
    }
    LeaveHiddenParent();
    DeleteFonts();
}

long WindowBase::LiveCount() { return liveWindows + Accessible::LiveCount(); }

HWND WindowBase::Create(HWND parent, const RECT& place) {
    const int width = place.right - place.left, height = place.bottom - place.top;
    if (handle) {
        if (parent) {
            SetParent(handle, parent);
            LeaveHiddenParent();
        }
        MoveWindow(handle, place.left, place.top, width, height, TRUE);
        return handle;
    }
    if (!parent) {
        RegisterOnce(hiddenParentClass, DefWindowProcW, 0);
        parent = hiddenParent = CreateWindowExW(WS_EX_TOOLWINDOW, hiddenParentClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                                nullptr, ThisModule(), nullptr);
    }
    RegisterOnce(className, Procedure, CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW);
    CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, place.left, place.top,
                    width, height, parent, nullptr, ThisModule(), this);
    return handle;
}

void WindowBase::LeaveHiddenParent() {
    if (hiddenParent) DestroyWindow(std::exchange(hiddenParent, nullptr));
}

void WindowBase::SetAmbient(const Ambient& newAmbient) {
    ambient = newAmbient;
    const HFONT former[] = {std::exchange(font, nullptr), std::exchange(boldFont, nullptr)};
    OnFont();
    for (const HFONT old : former)
        if (old) DeleteObject(old);
    if (isPlaced) OnAmbient();
    Repaint();
}

void WindowBase::InitProperties() { Place(); }
void WindowBase::ReadProperties(PropertyBag&) { Place(); }

void WindowBase::Place() {
    isPlaced = true;
    OnAmbient();
}

HFONT WindowBase::Font() {
    if (!font) font = CreateFontFor(ambient.fontName, ambient.fontSize, ambient.dpi, ambient.isBold, ambient.isItalic);
    return font;
}

HFONT WindowBase::BoldFont() {
    if (!boldFont) boldFont = CreateFontFor(ambient.fontName, ambient.fontSize, ambient.dpi, true, ambient.isItalic);
    return boldFont;
}

void WindowBase::DeleteFonts() {
    if (font) DeleteObject(std::exchange(font, nullptr));
    if (boldFont) DeleteObject(std::exchange(boldFont, nullptr));
}

void WindowBase::Repaint() {
    if (!handle) return;
    InvalidateRect(handle, nullptr, FALSE);
    UpdateWindow(handle);
}

void WindowBase::Draw(HDC dc, const RECT& place) {
    PaintBuffered(dc, place, [this](HDC buffer, SIZE size) { Paint(buffer, size, true); });
}

void WindowBase::OnSize(int, int) {}

LRESULT CALLBACK WindowBase::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        ++liveWindows;
        auto* created = static_cast<WindowBase*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
        created->handle = window;
    }
    auto* self = reinterpret_cast<WindowBase*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NCDESTROY) {
        --liveWindows;
        if (self) {
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            self->handle = nullptr;
            self->hasFocus = false;
            self->OnDestroyed();
        }
    } else if (self) {
        const DepthGuard guard(self->depth);
        try {
            return self->Dispatch(message, wParam, lParam);
        } catch (...) {
            // No exception may cross the system's frames; what failed was a repaint or a listener of the host.
            return 0;
        }
    } else if (message == destroyLater) {
        // In a message loop inside one of the control's messages (the tree's own, or a message box of the host) the
        // system still uses the window: tried again until it has finished.
        const auto pending = static_cast<UINT_PTR>(wParam);
        if (SetTimer(window, pending, retryDelay, DestroyWhenIdle)) DestroyWhenIdle(window, WM_TIMER, pending, 0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT WindowBase::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        OnCreate();
        return 0;
    case WM_SIZE:
        OnSize(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case dpiChangedAfterParent:
        if (const auto changed = DpiChanged) changed();
        return 0;
    case WM_ERASEBKGND:
        return 1; // everything is painted from a buffer
    case WM_PAINT: {
        PAINTSTRUCT paint;
        RECT client;
        GetClientRect(handle, &client);
        BeginPaint(handle, &paint);
        try {
            PaintBuffered(paint.hdc, client, [this](HDC dc, SIZE size) { Paint(dc, size, false); });
        } catch (...) {
            EndPaint(handle, &paint);
            throw;
        }
        EndPaint(handle, &paint);
        return 0;
    }
    case WM_PRINTCLIENT: {
        RECT client;
        GetClientRect(handle, &client);
        PaintBuffered(reinterpret_cast<HDC>(wParam), client, [this](HDC dc, SIZE size) { Paint(dc, size, false); });
        return 0;
    }
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(Font());
    case WM_LBUTTONDOWN:
        SetFocus(handle);
        return 0;
    case WM_SETFOCUS:
        if (const HWND target = FocusTarget(); target && SetFocus(target)) return 0;
        FocusMoved(handle);
        return 0;
    case WM_KILLFOCUS:
        FocusMoved(reinterpret_cast<HWND>(wParam));
        return 0;
    case WM_COMMAND:
        if (lParam) OnCommand(reinterpret_cast<HWND>(lParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY:
        return OnNotify(*reinterpret_cast<const NMHDR*>(lParam), lParam);
    case WM_SYSCOLORCHANGE:
    case WM_SETTINGCHANGE:
    case WM_THEMECHANGED:
        return AppearanceChanged(message, wParam, lParam);
    case WM_GETOBJECT:
        if (const auto answer = AnswerGetObject(handle, wParam, lParam)) return *answer;
        [[fallthrough]];
    default:
        return OnMessage(message, wParam, lParam);
    }
}

std::optional<LRESULT> WindowBase::AnswerGetObject(HWND target, WPARAM wParam, LPARAM lParam) {
    Accessible* const accessible = Accessible::IsRequested(lParam) ? AccessibleOf(target) : nullptr;
    return accessible ? std::optional(accessible->AnswerGetObject(wParam)) : std::nullopt;
}

LRESULT WindowBase::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(handle, message, wParam, lParam);
}

bool WindowBase::IsInside(HWND window) const {
    return window && handle && (window == handle || IsChild(handle, window));
}

// Last in every handler: the host may release the control.
void WindowBase::FocusMoved(HWND focus) {
    const bool isInside = IsInside(focus);
    if (isInside == hasFocus) return;
    hasFocus = isInside;
    if (const auto listener = FocusChanged) listener(isInside);
}

// Changes of system colours reach top-level windows only; a host's frame need not forward them to the control.
LRESULT WindowBase::AppearanceChanged(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SYSCOLORCHANGE)
        for (HWND child = GetWindow(handle, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            SendMessageW(child, message, wParam, lParam);
    const LRESULT result = OnMessage(message, wParam, lParam);
    if (const auto listener = SystemLookChanged) listener();
    return result;
}

bool WindowBase::Deliver(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
    return true;
}

void WindowBase::TrackFocus(HWND child) {
    children.push_back(child);
    SetWindowSubclass(child, ChildProcedure, focusSubclass, reinterpret_cast<DWORD_PTR>(this));
}

LRESULT CALLBACK WindowBase::ChildProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                            DWORD_PTR reference) {
    auto* self = reinterpret_cast<WindowBase*>(reference);
    const DepthGuard guard(self->depth);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, ChildProcedure, focusSubclass);
        std::erase(self->children, window);
    }
    if (message == WM_GETOBJECT)
        if (const auto answer = self->AnswerGetObject(window, wParam, lParam)) return *answer;
    // The child comes first, so that it is ready when the host's handler of the focus runs.
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (message != WM_SETFOCUS && message != WM_KILLFOCUS) return result;
    // The control may be destroyed; its window then has no pointer to it. (GetWindowSubclass would show it as well, but
    // mingw-w64 does not import it.)
    const HWND parent = GetAncestor(window, GA_PARENT);
    if (!parent || GetWindowLongPtrW(parent, GWLP_USERDATA) != static_cast<LONG_PTR>(reference)) return result;
    try {
        self->FocusMoved(message == WM_SETFOCUS ? window : reinterpret_cast<HWND>(wParam));
    } catch (...) {
        return result; // as in Procedure
    }
    return result;
}

} // namespace dax
