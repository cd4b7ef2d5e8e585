// A form with all seven controls, filled with the course.
#pragma once

#include "selftest/Course.h"
#include "selftest/TestForm.h"

#include <map>

namespace dax::workbench::selftest {

class FilledForm {
public:
    // `dpi` as for TestForm. Throws HostError.
    FilledForm(const ControlLibrary& library, const CourseFiles& files, int dpi = 0);

    TestForm& Form() { return form; }
    HostedControl& Control(const wchar_t* name) { return *controls.at(name); }

private:
    TestForm form;
    std::map<std::wstring, HostedControl*> controls;
};

// Adds the control of that name to the form, in that place, and shows the course in it. `editor` is the GroupEditor
// that the panels go by.
HostedControl& AddFilled(TestForm& form, const wchar_t* name, const RECT& place, const ControlLibrary& library,
                         const CourseFiles& files, const Automation& editor);

// The seven, the GroupEditor before the panels.
const std::vector<const wchar_t*>& ControlNames();

} // namespace dax::workbench::selftest
