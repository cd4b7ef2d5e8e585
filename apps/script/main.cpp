// daxscript FILE [ARGUMENTS]: runs a .vbs or .js script (UTF-8) that may listen to events of the objects it creates.
// Exit code: what the script quits with; 1 when it fails, with the place and the reason on the standard error; 2 when
// there is no such script.
#include "Output.h"
#include "ScriptObject.h"

#include "base/Text.h"
#include "com/Variant.h"

#include <exception>

namespace dax {

namespace {

std::wstring LanguageOf(const std::wstring& path) {
    const size_t dot = path.find_last_of(L'.');
    const std::wstring extension = dot == std::wstring::npos ? L"" : path.substr(dot);
    if (lstrcmpiW(extension.c_str(), L".vbs") == 0) return L"VBScript";
    if (lstrcmpiW(extension.c_str(), L".js") == 0) return L"JScript";
    return {};
}

constexpr const wchar_t* Help =
    L"usage: daxscript FILE.vbs|FILE.js [ARGUMENTS]\n\n"
    L"Runs a script in VBScript or JScript (UTF-8, or UTF-16 with its mark) that may listen to the events of the\n"
    L"objects it creates. An error ends it, or the procedure for an event in which it happens, and is printed with "
    L"its\n"
    L"file, line and column.\n\n"
    L"  WScript.Echo VALUE...                   prints the values in one line\n"
    L"  WScript.Quit [CODE]                     ends at once, with this exit code\n"
    L"  WScript.Sleep MILLISECONDS              waits; events are handled meanwhile\n"
    L"  WScript.CreateObject(CLASS [, PREFIX])  creates an object; its events call the procedures PREFIX + event\n"
    L"  WScript.ConnectObject OBJECT, PREFIX    connects the events of an existing object\n"
    L"  WScript.DisconnectObject OBJECT         disconnects all its events\n"
    L"  WScript.Arguments(INDEX)                an argument of the script, from 0\n"
    L"  WScript.ArgumentCount                   the number of arguments\n"
    L"  WScript.ScriptFullName                  the script's own path\n"
    L"  WScript.ShowControl CONTROL, TITLE      shows a control in a window of its own\n"
    L"  WScript.Press CONTROL, KEY              presses a key in it: Down, Space, Ctrl+Home, ...\n\n"
    L"docs/daxscript.md describes them. Exit code: the argument of Quit; 1 after an error, 2 if there is no such\n"
    L"script.";

int RunScript(const std::wstring& path, std::vector<std::wstring> arguments) {
    const std::wstring language = LanguageOf(path);
    if (language.empty()) {
        PrintErrorLine(path + L": only .vbs and .js scripts can be run. 'daxscript --help' describes the usage.");
        return 2;
    }
    std::wstring text;
    try {
        text = ReadScript(path.c_str());
    } catch (const std::exception& error) {
        PrintErrorLine(path + L": " + ToWide(FromUtf8(error.what())));
        return 2;
    }
    Engine engine(language, path);
    const auto object = MakeCom<ScriptObject>(engine, path, std::move(arguments));
    engine.AddObject(L"WScript", object.Get());
    engine.Run(text);
    object->Close();
    return engine.HasFailed() ? 1 : 0;
}

} // namespace

} // namespace dax

int wmain(int count, wchar_t** words) {
    using namespace dax;
    const std::wstring first = count < 2 ? L"" : words[1];
    if (count < 2 || first == L"--help" || first == L"-h" || first == L"/?") {
        (count < 2 ? PrintErrorLine : PrintLine)(Help);
        return count < 2 ? 2 : 0;
    }
    OleInitialize(nullptr);
    int code = 1;
    try {
        code = RunScript(words[1], std::vector<std::wstring>(words + 2, words + count));
    } catch (const std::exception& error) {
        PrintErrorLine(std::wstring(words[1]) + L": " + ToWide(FromUtf8(error.what())));
    }
    OleUninitialize();
    return code;
}
