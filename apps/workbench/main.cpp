#include "Options.h"
#include "automation/ControlLibrary.h"
#include "selftest/Checks.h"
#include "selftest/SelfTest.h"
#include "ui/Frame.h"

#include <commctrl.h>
#include <shellapi.h>

namespace {

std::vector<std::wstring> Arguments() {
    int count = 0;
    wchar_t** values = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments;
    for (int i = 1; i < count; ++i) arguments.emplace_back(values[i]);
    LocalFree(values);
    return arguments;
}

int RunWorkbench(const dax::workbench::Options& options) {
    using namespace dax::workbench;
    if (!options.group.empty()) return selftest::RunGroup(options);
    if (options.selfTest) return selftest::RunSelfTest(options);
    const ControlLibrary library(options.registered);
    Frame frame(options, library);
    if (!frame.Create(true)) {
        PrintText(L"DAXWorkbench: its window cannot be created.\n", true);
        return 1;
    }
    if (!options.start.empty()) return frame.CaptureStart(options.start);
    return options.shots.empty() ? frame.Run() : frame.CapturePictures(options.shots);
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    using namespace dax::workbench;
    const Options options = ParseArguments(Arguments());
    if (!options.problem.empty()) {
        PrintText(L"DAXWorkbench: " + options.problem + L"\n" + Usage(), true);
        return 2;
    }
    if (options.help) {
        PrintText(Usage(), false);
        return 0;
    }
    if (FAILED(OleInitialize(nullptr))) return 1;
    INITCOMMONCONTROLSEX requested{sizeof requested, ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&requested);
    const int code = RunWorkbench(options);
    OleUninitialize();
    return code;
}
