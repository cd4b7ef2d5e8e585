#include "Scripts.h"

#include "support/TestDatabases.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace dax::test {

namespace {

HANDLE OpenForOutput(const Text& path) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileW(ToWide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

std::string ContentsOf(const Text& path) {
    std::ifstream file(std::filesystem::path(ToWide(path)), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

Outcome RunProgram(const wchar_t* program, const std::wstring& arguments) {
    const TempFolder folder;
    const Text output = folder.File(u"output"), errors = folder.File(u"errors");
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = OpenForOutput(output);
    start.hStdError = OpenForOutput(errors);
    PROCESS_INFORMATION process{};
    const std::filesystem::path file = std::filesystem::path(BinFolder()) / program;
    std::wstring command = L"\"" + file.wstring() + L"\" " + arguments;
    Outcome outcome;
    const BOOL isStarted =
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
    if (!isStarted) return outcome;
    EXPECT_EQ(WaitForSingleObject(process.hProcess, 120000), WAIT_OBJECT_0);
    GetExitCodeProcess(process.hProcess, &outcome.code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    outcome.output = ContentsOf(output);
    outcome.errors = ContentsOf(errors);
    return outcome;
}

Outcome RunScript(const std::wstring& script, const std::wstring& arguments) {
    return RunProgram(L"daxscript.exe", L"\"" + script + L"\" " + arguments);
}

std::wstring Sample(const wchar_t* name) { return BinFolder() + L"ocx_data\\" + name; }

std::wstring Quoted(const Text& text) { return L"\"" + ToWide(text) + L"\" "; }

} // namespace dax::test
