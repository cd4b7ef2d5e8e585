#include "Scripts.h"

#include "support/TestDatabases.h"

#include <fstream>
#include <iterator>

namespace dax::test {

Outcome RunProgram(const wchar_t* program, const std::wstring& arguments) {
    const TempFolder folder;
    const std::filesystem::path outputs[] = {folder.Path() / "output", folder.Path() / "errors"};
    HANDLE files[2];
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    for (int i = 0; i < 2; ++i)
        files[i] =
            CreateFileW(outputs[i].c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = files[0];
    start.hStdError = files[1];
    PROCESS_INFORMATION process{};
    std::wstring command = L"\"" + (std::filesystem::path(BinFolder()) / program).wstring() + L"\" " + arguments;
    Outcome outcome;
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 120000), WAIT_OBJECT_0);
        GetExitCodeProcess(process.hProcess, &outcome.code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    for (const HANDLE file : files) CloseHandle(file);
    const auto contents = [](const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    outcome.output = contents(outputs[0]);
    outcome.errors = contents(outputs[1]);
    std::erase(outcome.output, '\r');
    return outcome;
}

Outcome RunScript(const std::filesystem::path& script, const std::wstring& arguments) {
    return RunProgram(L"daxscript.exe", L"\"" + script.wstring() + L"\" " + arguments);
}

std::filesystem::path DataFile(const std::wstring& name) { return BinFolder() + L"ocx_data\\" + name; }

std::wstring Quoted(const Text& text) { return L"\"" + ToWide(text) + L"\" "; }

} // namespace dax::test
