// A window that holds two controls in the system's own container: the hierarchy of a course on the left, the panel
// about the selected entry on the right. The program prints the hierarchy's events.
//   container FILE
// Exit code: 0 the course was shown, 1 it could not be. The controls are found as automation.cpp describes.
//   g++ -std=c++20 -static -I ../../include container.cpp -lole32 -loleaut32 -luuid
//   cl /std:c++20 /EHsc /I ..\..\include container.cpp ole32.lib oleaut32.lib shell32.lib user32.lib
#include "Sample.h"

using namespace sample;

namespace {

constexpr wchar_t ClassName[] = L"DAXContainerSample";

// The container has no import library with every compiler.
template <typename Function>
Function FromContainer(const char* name) {
    static const HMODULE library = LoadLibraryW(L"atl.dll");
    return library ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name))) : nullptr;
}

// Hears the events of the hierarchy by their numbers in the type library.
class Listener final : public IDispatch {
public:
    Listener(_GroupEditor* editor, _LessonInfo* panel) : editor(editor), panel(panel) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        const bool isKnown = iid == IID_IUnknown || iid == IID_IDispatch || iid == DIID___GroupEditor;
        *object = isKnown ? static_cast<IDispatch*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; } // exists as long as the window
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*, EXCEPINFO*, UINT*) override {
        switch (event) {
        case 1: { // AfterSelectionChange(LessonID)
            Text title;
            editor->GetLessonTitle(arguments->rgvarg[0].bstrVal, title.Out());
            panel->UpdateFrom(editor);
            Print(L"selected: " + title.Wide());
            break;
        }
        case 2: // DataChanged
            Print(L"changed");
            break;
        case 3: // DeleteRequest
            Print(L"to be deleted");
            break;
        case 4: // Error(Number, Description, Module): the last argument comes first
            Print(std::wstring(L"failed: ") + arguments->rgvarg[1].bstrVal);
            break;
        case 5: // DblClick
            Print(L"to be opened");
            break;
        default:
            return DISP_E_MEMBERNOTFOUND;
        }
        return S_OK;
    }

private:
    _GroupEditor* editor;
    _LessonInfo* panel;
};

// One control in a window of the container's.
template <typename Interface>
struct Hosted {
    HWND window = nullptr;
    Pointer<Interface> control;

    Hosted(HWND parent, const wchar_t* name, REFIID iid) {
        window = CreateWindowExW(0, L"AtlAxWin", name, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 0, 0, parent, nullptr,
                                 GetModuleHandleW(nullptr), nullptr);
        Pointer<IUnknown> object;
        const auto get = FromContainer<HRESULT(WINAPI*)(HWND, IUnknown**)>("AtlAxGetControl");
        if (!window || !get || FAILED(get(window, object.Out()))) throw Failure{std::wstring(L"no ") + name};
        Check(object->QueryInterface(iid, control.OutAny()), name);
    }
};

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SIZE) {
        const int width = LOWORD(lParam), height = HIWORD(lParam);
        const HWND left = GetWindow(window, GW_CHILD), right = left ? GetWindow(left, GW_HWNDNEXT) : nullptr;
        if (left) MoveWindow(left, 0, 0, width / 2, height, TRUE);
        if (right) MoveWindow(right, width / 2, 0, width - width / 2, height, TRUE);
    }
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

// The container does not offer keys to its controls: that is the part of the host's own loop.
void RunUntilClosed(_GroupEditor* editor) {
    Pointer<IOleInPlaceActiveObject> active;
    Check(editor->QueryInterface(IID_IOleInPlaceActiveObject, active.OutAny()), L"IOleInPlaceActiveObject");
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        const bool isKey = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
        if (isKey && active->TranslateAccelerator(&message) == S_OK) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void Connect(_GroupEditor* editor, Listener& listener) {
    Pointer<IConnectionPointContainer> points;
    Pointer<IConnectionPoint> point;
    DWORD cookie = 0;
    Check(editor->QueryInterface(IID_IConnectionPointContainer, points.OutAny()), L"IConnectionPointContainer");
    Check(points->FindConnectionPoint(DIID___GroupEditor, point.Out()), L"FindConnectionPoint");
    Check(point->Advise(&listener, &cookie), L"Advise");
}

int Run(const std::wstring& file) {
    WNDCLASSW description{};
    description.lpfnWndProc = Procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.lpszClassName = ClassName;
    const auto init = FromContainer<BOOL(WINAPI*)()>("AtlAxWinInit");
    if (!RegisterClassW(&description) || !init || !init()) throw Failure{L"there is no container (atl.dll)"};
    const HWND window = CreateWindowExW(0, ClassName, file.c_str(), WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                                        700, 500, nullptr, nullptr, description.hInstance, nullptr);
    const Hosted<_GroupEditor> hierarchy(window, L"DAXControls.GroupEditor", IID__GroupEditor);
    const Hosted<_LessonInfo> panel(window, L"DAXControls.LessonInfo", IID__LessonInfo);
    Listener listener(hierarchy.control.Get(), panel.control.Get());
    Connect(hierarchy.control.Get(), listener);

    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    Check(hierarchy.control->put_ConnectionString(Text(file)), L"ConnectionString");
    Check(hierarchy.control->LoadDatabase(&isLoaded), L"LoadDatabase");
    if (!isLoaded) { // the event has reported why
        DestroyWindow(window);
        return 1;
    }
    long count = 0;
    Check(hierarchy.control->get_NodeCount(&count), L"NodeCount");
    Print(std::to_wstring(count) + L" entries");
    ShowWindow(window, SW_SHOWNORMAL);
    SetFocus(hierarchy.window);
    RunUntilClosed(hierarchy.control.Get());
    Print(L"closed");
    return 0;
}

} // namespace

int main() {
    if (FAILED(OleInitialize(nullptr))) return 1;
    int code = 1;
    try {
        code = Run(FirstArgument());
    } catch (const Failure& failure) {
        Print(failure.text);
    }
    OleUninitialize();
    return code;
}
