// daxscript FILE [ARGUMENTS]: runs a .vbs or .js script (UTF-8) that may listen to events of the objects it creates.
// Exit code: what the script quits with; 1 when it fails, with the place and the reason on the standard error; 2 when
// there is no such script.
#include "Output.h"
#include "ScriptObject.h"

#include "base/Text.h"
#include "ocx/com/Variant.h"

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

int RunScript(const std::wstring& path, std::vector<std::wstring> arguments) {
    const std::wstring language = LanguageOf(path);
    if (language.empty()) {
        PrintErrorLine(path + L": only .vbs and .js scripts can be run");
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
    auto* object = new ScriptObject(engine, path, std::move(arguments));
    engine.AddObject(L"WScript", object);
    engine.Run(text);
    object->Close();
    object->Release();
    return engine.HasFailed() ? 1 : 0;
}

} // namespace

} // namespace dax

int wmain(int count, wchar_t** words) {
    using namespace dax;
    if (count < 2) {
        PrintErrorLine(L"usage: daxscript FILE.vbs|FILE.js [ARGUMENTS]");
        return 2;
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
