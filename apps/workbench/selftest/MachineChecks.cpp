// The machine, and whether the controls are registered on it, can be created and hosted.
#include "Machine.h"
#include "selftest/Checks.h"
#include "selftest/Course.h"
#include "selftest/TestForm.h"
#include "ui/Picture.h"

#include "automation/DesignSite.h"

namespace dax::workbench::selftest {

namespace {

constexpr wchar_t prefix[] = L"DAXControls.";

std::wstring RegistryText(HKEY root, const std::wstring& key, const wchar_t* name) {
    wchar_t text[1024] = L"";
    DWORD size = sizeof text;
    return RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS ? text : L"";
}

std::wstring SystemName() {
    const std::wstring key = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const std::wstring product = RegistryText(HKEY_LOCAL_MACHINE, key, L"ProductName");
    const std::wstring display = RegistryText(HKEY_LOCAL_MACHINE, key, L"DisplayVersion");
    std::wstring name = ThisMachine().system;
    if (!product.empty()) name += L" (" + product + (display.empty() ? L"" : L" " + display) + L")";
    using Version = const char*(CDECL*)();
    const auto wine = reinterpret_cast<Version>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version")));
    if (wine) {
        const std::string version = wine();
        name += L", which is Wine " + std::wstring(version.begin(), version.end());
    }
    return name;
}

BOOL CALLBACK AddMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM texts) {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    GetMonitorInfoW(monitor, &info);
    auto& all = *reinterpret_cast<std::wstring*>(texts);
    const RECT& area = info.rcMonitor;
    all += (all.empty() ? L"" : L", ") + std::to_wstring(area.right - area.left) + L" \u00D7 " +
           std::to_wstring(area.bottom - area.top);
    return TRUE;
}

std::wstring Monitors() {
    std::wstring all;
    EnumDisplayMonitors(nullptr, nullptr, AddMonitor, reinterpret_cast<LPARAM>(&all));
    const HDC screen = GetDC(nullptr);
    all += L"; " + std::to_wstring(GetDeviceCaps(screen, LOGPIXELSX)) + L" dots per inch, " +
           std::to_wstring(GetDeviceCaps(screen, BITSPIXEL)) + L" bits per pixel";
    ReleaseDC(nullptr, screen);
    return all;
}

std::wstring LocaleName() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = L"";
    GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    return std::wstring(name) + L", code page " + std::to_wstring(GetACP());
}

std::wstring MessageFont() {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    return metrics.lfMessageFont.lfFaceName;
}

std::wstring LibraryVersion(const Setting& setting) {
    const Automation constants = setting.library.CreateObject(L"DAXControls.Constants");
    const std::wstring version = constants.Get(L"OCXVersion").Text();
    setting.recorder.AddFact(L"Control library", version);
    setting.recorder.AddFact(L"Its file", constants.Get(L"OCXFilename").Text());
    return version;
}

std::wstring EngineVersion(const Setting& setting) {
    const CourseFiles files = MakeCourseFiles(setting.folder, L"engine");
    const std::wstring version = AskDatabase(files.content, L"SELECT sqlite_version()");
    setting.recorder.AddFact(L"SQLite, in the workbench and the controls", version);
    RequireSame(L"Rows in a new file", AskDatabase(files.content, L"SELECT Count(*) FROM velmoraLessons"),
                std::to_wstring(Entries().size()));
    RequireSame(L"The file's own check", AskDatabase(files.content, L"PRAGMA integrity_check"), L"ok");
    return version;
}

std::wstring CreateAsRegistered(const Setting& setting, const std::wstring& name) {
    CLSID id{};
    if (FAILED(CLSIDFromProgID(name.c_str(), &id)))
        throw Skipped(L"Not registered on this machine. The other checks use the library beside the workbench.");
    wchar_t text[40] = L"";
    StringFromGUID2(id, text, static_cast<int>(std::size(text)));
    const std::wstring path =
        RegistryText(HKEY_CLASSES_ROOT, std::wstring(L"CLSID\\") + text + L"\\InprocServer32", nullptr);
    const Automation object = setting.library.CreateObject(name);
    Require(static_cast<bool>(object), name + L" was created without an interface for scripts.");
    return path;
}

// What is kept of a control is read by another one.
void RequireKept(const ControlLibrary& library, const std::wstring& name) {
    ComPtr<IStream> stream;
    Require(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out())), L"A stream could not be made.");
    for (const bool isSaving : {true, false}) {
        const auto kept = library.CreateObject(name).Object().As<IPersistStreamInit>(IID_IPersistStreamInit);
        Require(static_cast<bool>(kept), name + L" cannot be kept in a stream.");
        const HRESULT result = isSaving ? (kept->InitNew(), kept->Save(stream.Get(), TRUE)) : kept->Load(stream.Get());
        Require(SUCCEEDED(result),
                name + (isSaving ? L" cannot be saved: " : L" cannot be loaded: ") + DescribeResult(result));
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
    }
}

std::wstring HostControl(const Setting& setting, const wchar_t* control) {
    const std::wstring name = std::wstring(prefix) + control;
    HWND inside = nullptr;
    {
        TestForm form(setting.library, 420, 260);
        HostedControl& hosted = form.Add(control, {10, 10, 410, 250});
        inside = GetWindow(hosted.Window(), GW_CHILD);
        Require(inside && IsWindowVisible(inside), L"The control has no visible window in the system's container.");
        for (const SIZE size : {SIZE{200, 80}, SIZE{400, 240}}) {
            MoveWindow(hosted.Window(), 10, 10, size.cx, size.cy, TRUE);
            RECT area;
            GetClientRect(inside, &area);
            Require(area.right == size.cx && area.bottom == size.cy,
                    L"Its window does not follow its container's size.");
        }
        SetFocus(hosted.Window());
        Require(form.Until([&] { return GetFocus() == inside || IsChild(inside, GetFocus()); }),
                L"The focus does not go into the control.");
        DesignSite(setting.library, name); // throws when it cannot be designed
        RequireKept(setting.library, name);
    }
    Require(!IsWindow(inside), L"Its window is still there after the control was released.");
    return setting.library.Origin();
}

} // namespace

std::vector<Check> MachineChecks(const Setting& setting) {
    setting.recorder.AddFact(L"Workbench", ThisMachine().program + (sizeof(void*) == 8 ? L", 64-bit" : L", 32-bit"));
    setting.recorder.AddFact(L"System", SystemName());
    setting.recorder.AddFact(L"Monitors", Monitors());
    setting.recorder.AddFact(L"Locale", LocaleName());
    setting.recorder.AddFact(L"Message font", MessageFont());
    return {{L"Version of the control library", [&setting] { return LibraryVersion(setting); }},
            {L"A course in a file, made by the built-in engine", [&setting] { return EngineVersion(setting); }}};
}

std::vector<Check> RegistrationChecks(const Setting& setting) {
    std::vector<Check> checks;
    for (const wchar_t* name : {L"DAXControls.Constants", L"DAXControls.DatabaseValidator", L"DAXControls.SQLDBPicker",
                                L"DAXControls.GroupEditor", L"DAXControls.LessonInfo", L"DAXControls.LockInfo",
                                L"DAXControls.LessonMapEditor", L"DAXControls.LockManager", L"ContentObjects.Lesson"})
        checks.push_back({name, [&setting, name] { return CreateAsRegistered(setting, name); }});
    return checks;
}

std::vector<Check> CreationChecks(const Setting& setting) {
    std::vector<Check> checks;
    for (const wchar_t* control : {L"DatabaseValidator", L"SQLDBPicker", L"GroupEditor", L"LessonInfo", L"LockInfo",
                                   L"LessonMapEditor", L"LockManager"})
        checks.push_back(
            {std::wstring(prefix) + control, [&setting, control] { return HostControl(setting, control); }});
    return checks;
}

} // namespace dax::workbench::selftest
