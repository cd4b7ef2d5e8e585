#include "selftest/SelfTest.h"

#include "base/CommandLine.h"
#include "com/Variant.h"
#include "selftest/Checks.h"
#include "selftest/Report.h"
#include "ui/Input.h"

#include <filesystem>
#include <shellapi.h>
#include <shlobj.h>

namespace dax::workbench::selftest {

namespace {

constexpr int maxProcesses = 40;           // of one group, when one check after the other crashes
constexpr DWORD responseTimeout = 600'000; // milliseconds without output, after which a process is ended
constexpr DWORD pollInterval = 200;        // milliseconds

std::wstring ProgramPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::wstring Quoted(const std::wstring& argument) { return ToWide(QuotedArgument(FromWide(argument))); }

std::wstring FolderOf(int folder) {
    wchar_t path[MAX_PATH] = L"";
    return SUCCEEDED(SHGetFolderPathW(nullptr, folder, nullptr, 0, path)) ? path : L"";
}

std::wstring TemporaryFolder() {
    wchar_t path[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH, path);
    wchar_t whole[MAX_PATH + 1] = L"";
    return GetLongPathNameW(path, whole, MAX_PATH) ? whole : path;
}

// The user's documents, else the folder for temporary files.
std::wstring DefaultReport() {
    std::wstring folder = FolderOf(CSIDL_PERSONAL);
    if (folder.empty()) folder = TemporaryFolder();
    if (folder.back() != L'\\') folder += L'\\';
    return folder + L"DAXControls self-test (" + (sizeof(void*) == 8 ? L"64" : L"32") + L"-bit).html";
}

// All that the run writes but the report; deleted at its end.
class WorkFolder {
public:
    WorkFolder() : path(TemporaryFolder() + L"dax-selftest-" + std::to_wstring(GetCurrentProcessId())) {
        std::error_code ignored;
        std::filesystem::create_directories(path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    const std::wstring& Path() const { return path; }

private:
    std::wstring path;
};

// Processes that end with this one, whatever ends it.
class Processes {
public:
    Processes() : job(CreateJobObjectW(nullptr, nullptr)) {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    }
    Processes(const Processes&) = delete;
    Processes& operator=(const Processes&) = delete;
    ~Processes() { CloseHandle(job); }

    // Runs this program with these arguments to its end; its exit code. A process that does not say anything in its
    // record any more is ended.
    DWORD Run(const std::wstring& arguments, const std::wstring& record) const {
        const std::wstring program = ProgramPath();
        std::wstring line = Quoted(program) + arguments;
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION process{};
        if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                            &start, &process))
            return GetLastError();
        AssignProcessToJobObject(job, process.hProcess);
        AllowSetForegroundWindow(process.dwProcessId);
        ResumeThread(process.hThread);
        size_t said = 0;
        ULONGLONG last = GetTickCount64();
        while (WaitForSingleObject(process.hProcess, pollInterval) == WAIT_TIMEOUT) {
            const size_t now = ReadBytes(record).size();
            if (now != said) last = GetTickCount64();
            said = now;
            if (GetTickCount64() > last + responseTimeout) TerminateProcess(process.hProcess, WAIT_TIMEOUT);
        }
        DWORD code = 0;
        GetExitCodeProcess(process.hProcess, &code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return code;
    }

private:
    HANDLE job;
};

// What the process of a group that ended early has left: the check that ran, or the group itself, has failed.
void NoteEnd(Findings& findings, DWORD code) {
    wchar_t number[16];
    std::swprintf(number, std::size(number), L"%lX", static_cast<unsigned long>(code));
    const std::wstring text = L"The process of these checks has ended with code " + std::wstring(number) + L".";
    if (findings.isRunning)
        findings.results.back().text = text;
    else if (findings.results.empty() || findings.results.back().outcome != Outcome::Failed)
        findings.results.push_back({L"End of the process", Outcome::Failed, text});
}

class Run {
public:
    explicit Run(const Options& given) : options(given) {
        for (const std::wstring& connection : options.connections)
            hiddenConnections.push_back(HidePassword(connection));
    }

    int All() {
        const ULONGLONG begin = GetTickCount64();
        for (const Group& group : Groups()) {
            if (!options.only.empty() && options.only != group.name) continue;
            if (!group.isRepeated)
                RunOne(group, 0, group.title);
            else
                for (size_t i = 0; i < options.connections.size(); ++i)
                    RunOne(group, static_cast<int>(i), group.title + (L": " + hiddenConnections[i]));
        }
        report.milliseconds = GetTickCount64() - begin;
        report.hiddenFolders = {{work.Path(), L"%TEMP%"}, {FolderOf(CSIDL_PROFILE), L"%USERPROFILE%"}};
        return Finish();
    }

private:
    void RunOne(const Group& group, int connection, const std::wstring& title) {
        const ULONGLONG begin = GetTickCount64();
        const std::wstring folder = work.Path() + L"\\" + group.name + std::to_wstring(connection);
        CreateDirectoryW(folder.c_str(), nullptr);
        Findings findings;
        for (int i = 0; i < maxProcesses && !findings.isComplete; ++i) {
            const size_t before = findings.results.size();
            const std::wstring record = folder + L"\\record" + std::to_wstring(i) + L".txt";
            const DWORD code = processes.Run(Arguments(group, connection, before, record), record);
            ReadFindings(record, findings);
            if (findings.isComplete) break;
            NoteEnd(findings, code);
            if (group.isSequence || findings.results.size() <= 1 || findings.results.size() == before) break;
        }
        std::vector<Result>& results = findings.results;
        if (!results.empty() && results.front().outcome == Outcome::Passed)
            results.erase(results.begin()); // preparation
        report.groups.push_back({title, std::move(findings), GetTickCount64() - begin});
        PrintText(title + L": " + Describe(CountResults({report.groups.back()})) + L"\n", false);
        for (const Result& result : report.groups.back().findings.results)
            if (result.outcome == Outcome::Failed) PrintText(L"  " + result.name + L": " + result.text + L"\n", false);
    }

    std::wstring Arguments(const Group& group, int connection, size_t first, const std::wstring& record) const {
        std::wstring arguments = std::wstring(L" --group ") + group.name + L" --first " + std::to_wstring(first) +
                                 L" --record " + Quoted(record);
        if (options.registered) arguments += L" --registered";
        if (options.limit > 0) arguments += L" --limit " + std::to_wstring(options.limit);
        if (group.isRepeated)
            arguments += L" --connection " + Quoted(options.connections[static_cast<size_t>(connection)]);
        return arguments;
    }

    int Finish() {
        const std::wstring path = options.report.empty() ? DefaultReport() : options.report;
        const std::string html = WriteHtml(report);
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD count = 0;
        const bool isWritten = file != INVALID_HANDLE_VALUE &&
                               WriteFile(file, html.data(), static_cast<DWORD>(html.size()), &count, nullptr) &&
                               count == html.size();
        const std::wstring why = DescribeResult(HRESULT_FROM_WIN32(GetLastError()));
        if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        const Counts counts = CountResults(report.groups);
        const bool isGood = counts.failed == 0 && counts.passed > 0;
        PrintText(std::wstring(isGood ? L"The self-test has passed: " : L"The self-test has failed: ") +
                      Describe(counts) + L".\n" +
                      (isWritten ? L"Report: " + path : L"The report '" + path + L"' cannot be written: " + why) +
                      L"\n",
                  false);
        if (isWritten && options.report.empty())
            ShellExecuteW(nullptr, L"open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
        return isGood && isWritten ? 0 : 1;
    }

    const Options& options;
    std::vector<std::wstring> hiddenConnections;
    const WorkFolder work;
    const Processes processes;
    Report report;
};

} // namespace

int RunSelfTest(const Options& options) { return Run(options).All(); }

void StartSelfTest(const Options& options) {
    const std::wstring program = ProgramPath();
    std::wstring line = Quoted(program) + L" --selftest" + (options.registered ? L" --registered" : L"");
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process))
        throw HostError(E_FAIL, DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    AllowSetForegroundWindow(process.dwProcessId);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

} // namespace dax::workbench::selftest
