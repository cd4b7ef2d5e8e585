// What is left in the process when a control was created, hosted, filled and released fifty times.
#include "automation/DesignSite.h"
#include "selftest/Checks.h"
#include "selftest/FilledForm.h"
#include "selftest/ResourceCounts.h"
#include "ui/Picture.h"

namespace dax::workbench::selftest {

namespace {

constexpr int cycles = 50, firstCycles = 5; // what the system makes once and keeps, it makes in the first ones
constexpr int designCycles = 20;            // beside each: created for a form designer, without a window
constexpr int spareObjects = 4;             // that the system may make meanwhile
constexpr long long bytesOfCycle = 128;     // the system's container keeps some bytes of each, at least in Wine

// Everything that a host does with a control.
void RunCycle(TestForm& form, const wchar_t* control, const Setting& setting, const CourseFiles& files,
              const Automation& editor) {
    HostedControl& hosted = AddFilled(form, control, {10, 10, 410, 250}, setting.library, files, editor);
    MoveWindow(hosted.Window(), 20, 30, 300, 60, TRUE);
    hosted.Control().Object().As<IOleControl>(IID_IOleControl)->OnAmbientPropertyChange(DISPID_UNKNOWN);
    CapturePixels(hosted.Window());
    form.Remove(hosted);
    for (int i = 0; i < designCycles; ++i) DesignSite(setting.library, std::wstring(L"DAXControls.") + control);
}

// What has grown, in words; empty when nothing has.
std::wstring Growth(const ResourceCounts& before, const ResourceCounts& after, std::wstring& summary) {
    const long long bytes = static_cast<long long>(after.bytes) - static_cast<long long>(before.bytes);
    const struct {
        const wchar_t* what;
        int before, after, spare;
    } counts[] = {{L"windows", before.windows, after.windows, 0},
                  {L"USER objects", before.userObjects, after.userObjects, spareObjects},
                  {L"GDI objects", before.gdiObjects, after.gdiObjects, spareObjects},
                  {L"handles", before.handles, after.handles, spareObjects}};
    bool hasGrown = bytes > bytesOfCycle * cycles;
    summary.clear();
    for (const auto& one : counts) {
        hasGrown = hasGrown || one.after > one.before + one.spare;
        if (one.before == 0 && one.after == 0) continue; // not counted by this system
        summary += std::wstring(one.what) + L" " + std::to_wstring(one.before) + L" \u2192 " +
                   std::to_wstring(one.after) + L", ";
    }
    summary += L"memory " + std::wstring(bytes < 0 ? L"" : L"+") + std::to_wstring(bytes) + L" bytes";
    return hasGrown ? summary : L"";
}

std::wstring RunCycles(const Setting& setting, const wchar_t* control) {
    const CourseFiles files = MakeCourseFiles(setting.folder, L"cycles");
    TestForm form(setting.library, 420, 260);
    const Automation editor = setting.library.CreateObject(L"DAXControls.GroupEditor");
    editor.Set(L"ConnectionString", files.content);
    editor.Call(L"LoadDatabase");
    const auto run = [&](int count) {
        for (int i = 0; i < count; ++i) RunCycle(form, control, setting, files, editor);
        form.Pump();
        return ResourceCounts();
    };
    const ResourceCounts before = run(firstCycles), after = run(cycles);
    std::wstring summary;
    // What grows once may be a store of the system's; what grows again is a leak.
    if (!Growth(before, after, summary).empty()) {
        const std::wstring growth = Growth(after, run(cycles), summary);
        Require(growth.empty(), L"Resource counts grow with each cycle: " + growth + L".");
    }
    return summary;
}

} // namespace

std::vector<Check> CycleChecks(const Setting& setting) {
    std::vector<Check> checks;
    for (const wchar_t* control : ControlNames())
        checks.push_back({control, [&setting, control] { return RunCycles(setting, control); }, 300});
    return checks;
}

} // namespace dax::workbench::selftest
