// All controls with their data at several resolutions, also when it changes while they are shown.
#include "selftest/Checks.h"
#include "selftest/FilledForm.h"
#include "ui/Picture.h"

#include <commctrl.h>
#include <set>

namespace dax::workbench::selftest {

namespace {

// The colours of the window's inside; a control that has drawn nothing has one.
size_t Colours(HWND window) {
    const Pixels picture = CapturePixels(window);
    std::set<unsigned> colours;
    for (size_t i = 0; i + 2 < picture.size() && colours.size() < 16; i += 3)
        colours.insert(static_cast<unsigned>(picture[i] << 16 | picture[i + 1] << 8 | picture[i + 2]));
    return colours.size();
}

int RowHeight(FilledForm& filled, const wchar_t* control) {
    return static_cast<int>(SendMessageW(filled.Control(control).Inner(WC_TREEVIEWW), TVM_GETITEMHEIGHT, 0, 0));
}

std::wstring ShowAt(const Setting& setting, int dpi) {
    FilledForm filled(setting.library, MakeCourseFiles(setting.folder, L"pictures"), dpi);
    const std::wstring path = setting.folder + L"\\dpi-" + std::to_wstring(dpi) + L".png";
    filled.Form().Save(path);
    setting.recorder.Add({std::to_wstring(dpi) + L" dots per inch", path});
    for (const wchar_t* name : ControlNames())
        Require(Colours(filled.Control(name).Window()) > 1, std::wstring(name) + L" has drawn nothing.");
    for (const wchar_t* name : {L"GroupEditor", L"LessonMapEditor"})
        Require(RowHeight(filled, name) >= MulDiv(16, dpi, 96),
                std::wstring(name) + L" has rows of " + std::to_wstring(RowHeight(filled, name)) + L" pixels.");
    return {};
}

// The text of a validation contains the time, which differs each time; without a file there is none.
Pixels TimelessPixels(FilledForm& filled, const std::wstring& control) {
    HostedControl& hosted = filled.Control(control.c_str());
    if (control == L"DatabaseValidator") hosted.Control().Call(L"ValidateDataConnection", {L"", L"", true});
    return CapturePixels(hosted.Window());
}

// Each control looks as it does when it has had that resolution from the beginning.
std::wstring ShowChange(const Setting& setting, int from, int to) {
    const CourseFiles files = MakeCourseFiles(setting.folder, L"pictures");
    std::map<std::wstring, Pixels> expected;
    {
        FilledForm filled(setting.library, files, to);
        for (const wchar_t* name : ControlNames()) expected[name] = TimelessPixels(filled, name);
    }
    FilledForm filled(setting.library, files, from);
    filled.Form().ChangeDpi(to);
    const std::wstring path = setting.folder + L"\\changed-" + std::to_wstring(to) + L".png";
    filled.Form().Save(path);
    setting.recorder.Add({L"from " + std::to_wstring(from) + L" to " + std::to_wstring(to) + L" dots per inch", path});
    for (const wchar_t* name : ControlNames())
        Require(TimelessPixels(filled, name) == expected[name],
                std::wstring(name) + L" does not look as it does when it is created at " + std::to_wstring(to) +
                    L" dots per inch.");
    return {};
}

// As on this machine: the resolution of the monitor, nothing said by the form.
std::wstring ShowHere(const Setting& setting) {
    FilledForm filled(setting.library, MakeCourseFiles(setting.folder, L"pictures"));
    for (const wchar_t* name : {L"GroupEditor", L"LessonMapEditor"})
        Require(RowHeight(filled, name) >= MulDiv(16, filled.Form().Dpi(), 96),
                std::wstring(name) + L" has rows of " + std::to_wstring(RowHeight(filled, name)) + L" pixels.");
    return std::to_wstring(filled.Form().Dpi()) + L" dots per inch";
}

} // namespace

std::vector<Check> PictureChecks(const Setting& setting) {
    std::vector<Check> checks{{L"The resolution of the monitor", [&setting] { return ShowHere(setting); }}};
    for (const int dpi : {96, 144, 192})
        checks.push_back({std::to_wstring(dpi) + L" dots per inch", [&setting, dpi] { return ShowAt(setting, dpi); }});
    for (const auto& [from, to] : {std::pair(96, 192), std::pair(192, 144)})
        checks.push_back(
            {L"From " + std::to_wstring(from) + L" to " + std::to_wstring(to) + L" dots per inch while they are shown",
             [&setting, from = from, to = to] { return ShowChange(setting, from, to); }});
    return checks;
}

} // namespace dax::workbench::selftest
