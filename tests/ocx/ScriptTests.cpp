// The samples as they stand, and faulty scripts, run by the real script host.
#include "Connector.h"
#include "OcxHost.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace dax::test {

namespace {

class ScriptTest : public OcxTest {};

struct Outcome {
    DWORD code = 0xFFFF;
    std::string output, errors;
};

HANDLE OpenForOutput(const Text& path) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileW(ToWide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

std::string ContentsOf(const Text& path) {
    std::ifstream file(std::filesystem::path(ToWide(path)), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Outcome RunScript(const std::wstring& script, const std::wstring& arguments = L"") {
    const TempFolder folder;
    const Text output = folder.File(u"output"), errors = folder.File(u"errors");
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = OpenForOutput(output);
    start.hStdError = OpenForOutput(errors);
    PROCESS_INFORMATION process{};
    std::wstring command = L"\"" + BinFolder() + L"daxscript.exe\" \"" + script + L"\" " + arguments;
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

std::wstring Sample(const wchar_t* name) { return BinFolder() + L"ocx_data\\" + name; }

std::wstring Quoted(const Text& text) { return L"\"" + ToWide(text) + L"\" "; }

} // namespace

TEST_F(ScriptTest, TheCatalogSampleHearsItsEvent) {
    const Connector connector;
    const auto admin = RunScript(Sample(L"catalogs.vbs"), Quoted(connector.ConnectionString()) + L"admin other");
    EXPECT_EQ(admin.errors, "");
    EXPECT_EQ(admin.output, "chosen: Ünother [other], the second\nadministrator: True, super user: True\ndone\n");
    EXPECT_EQ(admin.code, 0u);
    EXPECT_EQ(connector.Ask(u"SELECT lastCatalog FROM velmoraConnectionHistory"), u"other");
    const auto stranger = RunScript(Sample(L"catalogs.vbs"), Quoted(connector.ConnectionString()) + L"stranger");
    EXPECT_EQ(stranger.output, "chosen:  [], \nunknown user: stranger\n");
    EXPECT_EQ(stranger.code, 1u);
}

TEST_F(ScriptTest, TheValidationSampleTellsGoodFromBad) {
    const TestDatabase content(Engine::SQLite);
    content.Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
    const auto good = RunScript(Sample(L"validate.vbs"), Quoted(content.Name()));
    EXPECT_EQ(good.output, "valid: " + ToUtf8(content.Name()) + "\n") << good.errors;
    EXPECT_EQ(good.code, 0u);
    const auto missing = RunScript(Sample(L"validate.vbs"), Quoted(content.Name() + u".none"));
    EXPECT_EQ(missing.output, "refused (2): file not found.\n") << missing.errors;
    EXPECT_EQ(missing.code, 1u);
}

TEST_F(ScriptTest, FaultsNameTheirPlace) {
    const TempFolder folder;
    const struct {
        const char16_t* name;
        const char* text;
        DWORD code;
        const char* place;
        const char* output;
    } cases[] = {
        {u"runtime.vbs", "WScript.Echo \"ä\"\nx = CLng(\"abc\")\n", 1, "runtime.vbs(2, ", "ä\n"},
        {u"syntax.vbs", "x = 1\nIf x = \n", 1, "syntax.vbs(2, ", ""},
        {u"call.vbs", "Set c = CreateObject(\"DAXControls.Constants\")\n\nc.OCXPath = \"x\"\n", 1, "call.vbs(3, ", ""},
        {u"none.vbs", "WScript.CreateObject \"No.Such.Class\"\n", 1, "none.vbs(1, ", ""},
        {u"quit.js", "WScript.Echo(1 + 1);\nWScript.Quit(7);\nWScript.Echo('never');\n", 7, "", "2\n"},
        {u"other.txt", "", 2, "other.txt: only", ""},
    };
    for (const auto& row : cases) {
        const auto outcome = RunScript(ToWide(folder.Write(row.name, row.text)));
        EXPECT_EQ(outcome.code, row.code) << ToUtf8(row.name);
        EXPECT_EQ(outcome.output, row.output) << ToUtf8(row.name);
        EXPECT_NE(outcome.errors.find(row.place), std::string::npos) << outcome.errors;
    }
}

} // namespace dax::test
