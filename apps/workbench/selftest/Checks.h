// The checks of the self-test, group by group, and the process that runs one group.
#pragma once

#include "Options.h"
#include "automation/ControlLibrary.h"
#include "selftest/Recorder.h"

#include <functional>

namespace dax::workbench::selftest {

// What a group works with.
struct Setting {
    const Options& options;
    const ControlLibrary& library;
    const std::wstring folder; // of this group's own files; deleted when the self-test ends
    Recorder& recorder;
};

struct Check {
    std::wstring name;
    // Gives what is worth telling, or nothing. Throws HostError when the check fails, and Skipped.
    std::function<std::wstring()> run;
    int seconds = 60; // after that it has failed, whatever it waits for
};

// A check that cannot be made here.
class Skipped : public std::exception {
public:
    explicit Skipped(std::wstring why) : reason(std::move(why)) {}
    const std::wstring& Reason() const { return reason; }
    const char* what() const noexcept override { return "skipped"; }

private:
    std::wstring reason;
};

// Throws HostError with that text.
void Require(bool condition, const std::wstring& text);
// The same where two values should be equal; shows both.
void RequireSame(const std::wstring& what, const std::wstring& found, const std::wstring& expected);

struct Group {
    const wchar_t* name; // on the command line
    const wchar_t* title;
    std::vector<Check> (*make)(const Setting& setting);
    bool isSequence = false;   // each check continues where the previous one ended
    bool usesRegistry = false; // never the library beside the program
    bool isRepeated = false;   // once for each connection string
};
const std::vector<Group>& Groups();

// Runs the checks of the group that the options name; the exit code of the process. What a check throws ends that check
// alone. A crash or a check that never ends ends the process, and the record shows where.
int RunGroup(const Options& options);

std::vector<Check> MachineChecks(const Setting& setting);
std::vector<Check> RegistrationChecks(const Setting& setting);
std::vector<Check> CreationChecks(const Setting& setting);
std::vector<Check> StartChecks(const Setting& setting);
std::vector<Check> EditingChecks(const Setting& setting);
std::vector<Check> InputChecks(const Setting& setting);
std::vector<Check> PictureChecks(const Setting& setting);
std::vector<Check> AccessibilityChecks(const Setting& setting);
std::vector<Check> CycleChecks(const Setting& setting);
std::vector<Check> DriverChecks(const Setting& setting);
std::vector<Check> ConnectionChecks(const Setting& setting);

} // namespace dax::workbench::selftest
