#include "selftest/Checks.h"

#include "base/Error.h"
#include "base/Secrets.h"
#include "com/Variant.h"

#include <atomic>
#include <thread>

namespace dax::workbench::selftest {

namespace {

std::wstring Masked(const std::wstring& text) {
    const Text masked = MaskPasswords(FromWide(text));
    return {masked.begin(), masked.end()};
}

Recorder* recording = nullptr; // for the filter below, which takes no argument

// The address and its module, to find the code.
std::wstring PlaceOf(const void* address) {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            static_cast<const wchar_t*>(address), &module))
        return L"an unknown module";
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    const std::wstring name = path;
    return name.substr(name.find_last_of(L"\\/") + 1) + L" + " +
           ToWide(Hexadecimal(
               static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(module))));
}

LONG WINAPI RecordCrash(EXCEPTION_POINTERS* crash) {
    const EXCEPTION_RECORD& record = *crash->ExceptionRecord;
    recording->End(Outcome::Failed, L"Crashed with exception " + ToWide(Hexadecimal(record.ExceptionCode)) + L" at " +
                                        PlaceOf(record.ExceptionAddress) + L".");
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

// Ends the process when the check that runs takes longer than it may.
class Watch {
public:
    explicit Watch(Recorder& target) : recorder(target), thread([this] { Run(); }) {}
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() {
        isDone = true;
        thread.join();
    }

    void Allow(int seconds) {
        limit = seconds;
        end = GetTickCount64() + static_cast<ULONGLONG>(seconds) * 1000;
    }

private:
    void Run() {
        while (!isDone) {
            Sleep(50);
            if (end == 0 || GetTickCount64() < end) continue;
            recorder.End(Outcome::Failed, L"Not finished after " + std::to_wstring(limit) + L" seconds.");
            TerminateProcess(GetCurrentProcess(), WAIT_TIMEOUT);
        }
    }

    Recorder& recorder;
    std::atomic<int> limit = 0;
    std::atomic<ULONGLONG> end = 0;
    std::atomic<bool> isDone = false;
    std::thread thread;
};

// True when it has not failed.
bool RunCheck(const Check& check, Recorder& recorder) {
    try {
        const std::wstring text = check.run();
        recorder.End(Outcome::Passed, Masked(text));
        return true;
    } catch (const Skipped& skipped) {
        recorder.End(Outcome::Skipped, Masked(skipped.Reason()));
        return true;
    } catch (const HostError& error) {
        recorder.End(Outcome::Failed, Masked(error.Text()));
    } catch (const Error& error) {
        recorder.End(Outcome::Failed, Masked(ToWide(error.Description())));
    } catch (const std::exception& error) {
        const std::string text = error.what();
        recorder.End(Outcome::Failed, {text.begin(), text.end()});
    }
    return false;
}

void RunChecks(const Group& group, const Setting& setting, Watch& watch) {
    const auto skip = [&](const Check& check, const std::wstring& reason) {
        setting.recorder.Begin(check.name);
        setting.recorder.End(Outcome::Skipped, reason);
    };
    std::vector<Check> checks;
    const auto first = static_cast<size_t>(setting.options.firstCheck);
    if (first == 0) setting.recorder.Begin(L"Preparation");
    watch.Allow(setting.options.limit > 0 ? setting.options.limit : 60);
    const Check preparation{L"", [&] {
                                checks = group.make(setting);
                                return std::wstring();
                            }};
    if (!RunCheck(preparation, setting.recorder)) return;
    std::wstring broken;
    for (size_t i = first == 0 ? 0 : first - 1; i < checks.size(); ++i) {
        const Check& check = checks[i];
        if (!broken.empty()) {
            skip(check, L"It depends on '" + broken + L"', which has failed.");
            continue;
        }
        watch.Allow(setting.options.limit > 0 ? setting.options.limit : check.seconds);
        setting.recorder.Begin(check.name);
        if (!RunCheck(check, setting.recorder) && group.isSequence) broken = check.name;
    }
}

} // namespace

void Require(bool condition, const std::wstring& text) {
    if (!condition) throw HostError(E_FAIL, text);
}

void RequireSame(const std::wstring& what, const std::wstring& found, const std::wstring& expected) {
    Require(found == expected, what + L": '" + found + L"' instead of '" + expected + L"'.");
}

const std::vector<Group>& Groups() {
    static const std::vector<Group> groups = {
        {L"machine", L"This machine", MachineChecks},
        {L"registration", L"Created by name, as registered", RegistrationChecks, false, true},
        {L"creation", L"Created by name, and hosted", CreationChecks},
        {L"start", L"The start of an application", StartChecks, true},
        {L"editing", L"Edited, saved and loaded again", EditingChecks},
        {L"input", L"Keys, mouse, drag and drop, and their events", InputChecks},
        {L"pictures", L"Pictures at 96, 144 and 192 dots per inch", PictureChecks},
        {L"accessibility", L"What screen readers read", AccessibilityChecks},
        {L"cycles", L"Created and released fifty times", CycleChecks},
        {L"drivers", L"Database drivers", DriverChecks},
        {L"connection", L"Database", ConnectionChecks, false, false, true},
    };
    return groups;
}

int RunGroup(const Options& options) {
    for (const Group& group : Groups()) {
        if (group.name != options.group) continue;
        Recorder recorder(options.record);
        recording = &recorder;
        SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
        SetUnhandledExceptionFilter(RecordCrash);
        {
            Watch watch(recorder);
            watch.Allow(120);
            const ControlLibrary library(options.registered || group.usesRegistry);
            RunChecks(group, {options, library, options.record.substr(0, options.record.find_last_of(L'\\')), recorder},
                      watch);
        }
        recorder.Complete();
        return 0;
    }
    return 2;
}

} // namespace dax::workbench::selftest
