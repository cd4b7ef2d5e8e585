#include "Driver.h"

#include "../../apps/workbench/ui/Ids.h"

#include <commctrl.h>

namespace dax::test {

using namespace workbench;

namespace {

constexpr DWORD timeLimit = 60'000; // milliseconds; only a fault uses them up

struct Search {
    DWORD process; // which shows the window
    const wchar_t* className;
    HWND found;
};

BOOL CALLBACK Find(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    DWORD owner = 0;
    wchar_t name[64] = L"";
    GetWindowThreadProcessId(window, &owner);
    GetClassNameW(window, name, 64);
    if (name != std::wstring(search->className) || owner != search->process || !IsWindowVisible(window)) return TRUE;
    search->found = window;
    return FALSE;
}

BOOL CALLBACK AddText(HWND window, LPARAM texts) {
    wchar_t text[4096] = L"";
    SendMessageW(window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text));
    const std::wstring line = text;
    if (IsWindowVisible(window))
        *reinterpret_cast<std::string*>(texts) += ToUtf8(Text(line.begin(), line.end())) + "\n";
    return TRUE;
}

} // namespace

std::wstring Wide(const Text& text) { return {text.begin(), text.end()}; }

std::filesystem::path WorkbenchPath() { return std::filesystem::path(_pgmptr).parent_path() / "DAXWorkbench.exe"; }

Workbench::Workbench(const std::vector<std::wstring>& arguments, const std::filesystem::path& program) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE output = CreateFileW((folder.Path() / "said").c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = output;
    std::wstring line = L'"' + program.wstring() + L'"'; // no argument here ends with a backslash
    for (const std::wstring& argument : arguments) line += L" \"" + argument + L'"';
    CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
    CloseHandle(output);
}

Workbench::~Workbench() {
    TerminateProcess(process.hProcess, 99);
    WaitForSingleObject(process.hProcess, timeLimit);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
}

int Workbench::ExitCode() {
    DWORD code = 0;
    if (WaitForSingleObject(process.hProcess, timeLimit) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process.hProcess, &code))
        return -1;
    return static_cast<int>(code);
}

bool Workbench::Until(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + timeLimit;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        // Also ends with the program, after which the condition cannot become true.
        if (WaitForSingleObject(process.hProcess, 20) != WAIT_TIMEOUT) return condition();
    }
    return true;
}

// It becomes visible when all that is in it has been made.
HWND Workbench::Frame() {
    if (!frame) frame = Inside(GetDesktopWindow(), frameClass);
    return frame;
}

HWND Workbench::Field(int page, int id) { return GetDlgItem(GetDlgItem(Frame(), idPageFirst + page), id); }

std::wstring Workbench::FieldText(int page, int id) {
    wchar_t text[4096] = L"";
    SendMessageW(Field(page, id), WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text));
    return text;
}

bool Workbench::Shows(int page, int id, const std::wstring& text) {
    return Until([&] { return FieldText(page, id).starts_with(text); });
}

HWND Workbench::Inside(HWND parent, const wchar_t* className) {
    Search search{process.dwProcessId, className, nullptr};
    Until([&] {
        EnumChildWindows(parent, Find, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    return search.found;
}

std::string Workbench::TextsIn(HWND window) {
    std::string texts;
    EnumChildWindows(window, AddText, reinterpret_cast<LPARAM>(&texts));
    return texts;
}

void Workbench::Type(std::initializer_list<WORD> keys) {
    Until([this] {
        DWORD owner = 0;
        GetWindowThreadProcessId(GetForegroundWindow(), &owner);
        return owner == process.dwProcessId;
    });
    std::vector<INPUT> strokes;
    for (const WORD key : keys) {
        INPUT stroke{};
        stroke.type = INPUT_KEYBOARD;
        stroke.ki.wVk = key;
        stroke.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
        stroke.ki.dwFlags = key >= VK_PRIOR && key <= VK_DELETE ? KEYEVENTF_EXTENDEDKEY : 0;
        strokes.push_back(stroke);
    }
    for (size_t i = keys.size(); i-- > 0;) {
        strokes.push_back(strokes[i]);
        strokes.back().ki.dwFlags |= KEYEVENTF_KEYUP;
    }
    SendInput(static_cast<UINT>(strokes.size()), strokes.data(), sizeof(INPUT));
}

void Workbench::Write(const std::string& text) {
    for (const char unit : text) Type({LOBYTE(VkKeyScanA(unit))});
}

void Workbench::Click(HWND window, int x, int y, int count, bool isRight) {
    static DWORD time = GetTickCount();
    time += 10'000; // never the second half of a double click
    POINT at{x, y};
    ClientToScreen(window, &at);
    SetCursorPos(at.x, at.y);
    INPUT press{};
    press.type = INPUT_MOUSE;
    press.mi.time = time;
    for (int i = 0; i < count; ++i)
        for (const DWORD flag : {isRight ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN,
                                 isRight ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP}) {
            press.mi.dwFlags = flag;
            SendInput(1, &press, sizeof press);
        }
}

void Workbench::ClickTool(int page, int id) {
    const HWND bar = Field(page, idToolbar);
    void* const place = VirtualAllocEx(process.hProcess, nullptr, sizeof(RECT), MEM_COMMIT, PAGE_READWRITE);
    RECT area{};
    SendMessageW(bar, TB_GETRECT, static_cast<WPARAM>(id), reinterpret_cast<LPARAM>(place));
    ReadProcessMemory(process.hProcess, place, &area, sizeof area, nullptr);
    VirtualFreeEx(process.hProcess, place, 0, MEM_RELEASE);
    Click(bar, (area.left + area.right) / 2, (area.top + area.bottom) / 2);
}

bool Workbench::Fill(int page, int id, const wchar_t* text) {
    const HWND field = Field(page, id);
    Click(field, 5, 5);
    if (!HasFocus(field)) return false;
    SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    return true;
}

bool Workbench::Show(int page) {
    if (!Frame()) return false;
    Type({VK_CONTROL, static_cast<WORD>(L'1' + page)});
    return Until([&] { return IsWindowVisible(Field(page, idHeading)); });
}

GUITHREADINFO Workbench::State() {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(Frame(), nullptr), &info);
    return info;
}

bool Workbench::HasFocus(HWND window) {
    return Until([&] {
        const HWND focus = State().hwndFocus;
        return focus == window || IsChild(window, focus);
    });
}

bool Workbench::HasMenu(bool isOpen) {
    return Until([&] { return ((State().flags & GUI_INMENUMODE) != 0) == isOpen; });
}

HWND Workbench::Question() {
    const HWND question = Inside(GetDesktopWindow(), L"#32770");
    return question && HasFocus(question) ? question : nullptr;
}

bool Workbench::Answer(int button) {
    const HWND question = Question();
    if (!question || !GetDlgItem(question, button)) return false;
    PostMessageW(question, WM_COMMAND, static_cast<WPARAM>(button), 0);
    return Until([&] { return !IsWindow(question) && (!IsWindow(frame) || IsWindowEnabled(frame)); }); // it may end
}

} // namespace dax::test
