#include "Driver.h"

#include "../../apps/workbench/ui/Ids.h"

#include <commctrl.h>

namespace dax::test {

using namespace workbench;

namespace {

constexpr DWORD patience = 180'000; // milliseconds; only a fault uses them up

// As the program's start-up code takes a command line apart; no argument here ends with a backslash.
std::wstring CommandLine(const std::wstring& program, const std::vector<std::wstring>& arguments) {
    std::wstring line = L'"' + program + L'"';
    for (const std::wstring& argument : arguments) line += L" \"" + argument + L'"';
    return line;
}

std::wstring TempFile() {
    wchar_t folder[MAX_PATH + 1], path[MAX_PATH + 1];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"dax", 0, path);
    return path;
}

struct Search {
    DWORD process; // 0: any window; else one that this process shows
    const wchar_t* className;
    HWND found;
};

BOOL CALLBACK Find(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<Search*>(parameter);
    DWORD owner = 0;
    wchar_t name[64] = L"";
    GetWindowThreadProcessId(window, &owner);
    GetClassNameW(window, name, 64);
    if (std::wstring(name) != search->className) return TRUE;
    if (search->process && (owner != search->process || !IsWindowVisible(window))) return TRUE;
    search->found = window;
    return FALSE;
}

BOOL CALLBACK AddText(HWND window, LPARAM texts) {
    wchar_t text[4096] = L"";
    SendMessageW(window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text));
    if (IsWindowVisible(window)) reinterpret_cast<std::vector<std::wstring>*>(texts)->push_back(text);
    return TRUE;
}

std::vector<std::wstring> TextsIn(HWND window) {
    std::vector<std::wstring> texts;
    EnumChildWindows(window, AddText, reinterpret_cast<LPARAM>(&texts));
    return texts;
}

} // namespace

std::wstring Wide(const Text& text) { return {text.begin(), text.end()}; }

std::wstring WorkbenchPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1) + L"DAXWorkbench.exe";
}

std::string ReadBytes(const std::wstring& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    std::string bytes(file == INVALID_HANDLE_VALUE ? 0 : GetFileSize(file, nullptr), '\0');
    DWORD count = 0;
    if (!ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) count = 0;
    CloseHandle(file);
    bytes.resize(count);
    return bytes;
}

Workbench::Workbench(const std::vector<std::wstring>& arguments, const std::wstring& program) : outputPath(TempFile()) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    output = CreateFileW(outputPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                         CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = output;
    std::wstring line = CommandLine(program, arguments);
    CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
}

Workbench::~Workbench() {
    if (process.hProcess) {
        if (WaitForSingleObject(process.hProcess, 0) != WAIT_OBJECT_0) {
            TerminateProcess(process.hProcess, 99);
            WaitForSingleObject(process.hProcess, patience);
        }
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(output);
    DeleteFileW(outputPath.c_str());
}

int Workbench::ExitCode() {
    DWORD code = 0;
    if (!process.hProcess || WaitForSingleObject(process.hProcess, patience) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process.hProcess, &code))
        return -1;
    return static_cast<int>(code);
}

std::string Workbench::Said() const { return ReadBytes(outputPath); }

bool Workbench::Until(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + patience;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        // The wait is for the program's end, which would make the condition's coming impossible.
        if (WaitForSingleObject(process.hProcess, 20) != WAIT_TIMEOUT) return condition();
    }
    return true;
}

// It becomes visible when all that is in it has been made.
HWND Workbench::Frame() {
    if (!frame) frame = Popup(frameClass);
    return frame;
}

HWND Workbench::Field(int page, int id) { return GetDlgItem(GetDlgItem(Frame(), idPageFirst + page), id); }

std::wstring Workbench::FieldText(int page, int id) {
    wchar_t text[4096] = L"";
    const HWND field = Field(page, id);
    DWORD_PTR length = 0;
    if (!field ||
        !SendMessageTimeoutW(field, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, patience, &length))
        return {};
    return text;
}

bool Workbench::Shows(int page, int id, const std::wstring& text) {
    return Until([&] { return FieldText(page, id).starts_with(text); });
}

HWND Workbench::Inside(HWND parent, const wchar_t* className) {
    Search search{0, className, nullptr};
    Until([&] {
        EnumChildWindows(parent, Find, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    return search.found;
}

std::wstring Workbench::LastLogged(const std::wstring& control) {
    constexpr int length = 1024, columns[] = {2, 3, 4}; // control, member, arguments
    struct Place {
        LVITEMW item;
        wchar_t text[length];
    };
    const HWND log = GetDlgItem(Frame(), idEvents);
    auto* place = static_cast<Place*>(
        VirtualAllocEx(process.hProcess, nullptr, sizeof(Place), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    std::wstring line;
    for (auto row = SendMessageW(log, LVM_GETITEMCOUNT, 0, 0) - 1; row >= 0; --row) {
        line.clear();
        for (const int column : columns) {
            Place wanted{};
            wanted.item.iSubItem = column;
            wanted.item.pszText = place->text;
            wanted.item.cchTextMax = length;
            WriteProcessMemory(process.hProcess, place, &wanted, sizeof wanted, nullptr);
            SendMessageW(log, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(place));
            ReadProcessMemory(process.hProcess, place, &wanted, sizeof wanted, nullptr);
            line += (line.empty() ? L"" : L" ") + std::wstring(wanted.text);
        }
        if (line.starts_with(control)) break;
        line.clear();
    }
    VirtualFreeEx(process.hProcess, place, 0, MEM_RELEASE);
    return line;
}

void Workbench::Press(HWND window, WPARAM key, bool withAlt) {
    const LPARAM alt = withAlt ? 0x20000000 : 0;
    PostMessageW(window, withAlt ? WM_SYSKEYDOWN : WM_KEYDOWN, key, alt | 1);
    PostMessageW(window, withAlt ? WM_SYSKEYUP : WM_KEYUP, key, alt | static_cast<LPARAM>(0xC0000001u));
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

void Workbench::Write(const wchar_t* text) {
    for (; *text; ++text) {
        const SHORT key = VkKeyScanW(*text);
        if (HIBYTE(key) & 1)
            Type({VK_SHIFT, LOBYTE(key)});
        else
            Type({LOBYTE(key)});
    }
}

void Workbench::Click(HWND window, int x, int y, int count) {
    for (int i = 0; i < count; ++i) {
        PostMessageW(window, i % 2 == 0 ? WM_LBUTTONDOWN : WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(x, y));
        PostMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(x, y));
    }
}

bool Workbench::Fill(int page, int id, const wchar_t* text) {
    const HWND field = Field(page, id);
    Click(field, 5, 5);
    if (!Until([&] { return Focus() == field; })) return false;
    SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    return true;
}

bool Workbench::Show(int page) {
    const HWND list = GetDlgItem(Frame(), idPages);
    const auto shown = [&] { return static_cast<int>(SendMessageW(list, LB_GETCURSEL, 0, 0)); };
    while (shown() != page) {
        const int before = shown();
        Press(list, page > before ? VK_DOWN : VK_UP);
        if (!Until([&] { return shown() != before; })) return false;
    }
    return Until([&] { return IsWindowVisible(GetDlgItem(Frame(), idPageFirst + page)); });
}

void Workbench::Command(int page, int id) {
    PostMessageW(GetDlgItem(Frame(), idPageFirst + page), WM_COMMAND, static_cast<WPARAM>(id), 0);
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

HWND Workbench::Popup(const wchar_t* className) {
    Search search{process.dwProcessId, className, nullptr};
    Until([&] {
        EnumWindows(Find, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    return search.found;
}

std::string Workbench::QuestionText() {
    std::string all;
    for (const std::wstring& text : TextsIn(Question())) all += ToUtf8(Text(text.begin(), text.end())) + "\n";
    std::erase(all, '&');
    return all;
}

std::vector<std::wstring> Workbench::Labels() { return TextsIn(Frame()); }

bool Workbench::Answer(int button) {
    const HWND question = Question();
    if (!question || !GetDlgItem(question, button)) return false;
    PostMessageW(question, WM_COMMAND, static_cast<WPARAM>(button), 0);
    return Until([&] { return !IsWindow(question); });
}

HWND Workbench::Focus() {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(GetWindowThreadProcessId(Frame(), nullptr), &info) ? info.hwndFocus : nullptr;
}

} // namespace dax::test
