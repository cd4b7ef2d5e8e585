#include "selftest/FilledForm.h"

#include "pages/LessonStore.h"
#include "selftest/Checks.h"

namespace dax::workbench::selftest {

namespace {

// At the highest resolution of the checks, still inside a screen of 1024 by 768.
const std::map<std::wstring, RECT>& Places() {
    static const std::map<std::wstring, RECT> places = {
        {L"GroupEditor", {4, 4, 190, 206}},         {L"LessonMapEditor", {194, 4, 380, 160}},
        {L"LessonInfo", {384, 4, 496, 100}},        {L"LockInfo", {384, 104, 496, 206}},
        {L"SQLDBPicker", {194, 170, 380, 196}},     {L"LockManager", {4, 212, 496, 304}},
        {L"DatabaseValidator", {4, 310, 496, 356}},
    };
    return places;
}

} // namespace

const std::vector<const wchar_t*>& ControlNames() {
    static const std::vector<const wchar_t*> names = {L"GroupEditor", L"LessonMapEditor",   L"LessonInfo", L"LockInfo",
                                                      L"LockManager", L"DatabaseValidator", L"SQLDBPicker"};
    return names;
}

HostedControl& AddFilled(TestForm& form, const wchar_t* name, const RECT& place, const ControlLibrary& library,
                         const CourseFiles& files, const Automation& editor) {
    HostedControl& hosted = form.Add(name, place);
    const Automation& control = hosted.Control();
    const std::wstring which = name;
    if (which == L"GroupEditor") {
        control.Set(L"ConnectionString", files.content);
        Require(control.Call(L"LoadDatabase").Bool(), L"The course cannot be loaded.");
        control.Call(L"ExpandAll");
        control.Set(L"CurrentLessonID", L"l2");
    } else if (which == L"LessonMapEditor") {
        const Automation lesson = library.CreateObject(L"ContentObjects.Lesson");
        lesson.Call(L"Load", {ReadLessonData(files.content, L"l1")});
        control.Set(L"Checkboxes", true);
        control.Set(L"Lesson", lesson.Object());
        control.Call(L"ExpandAll");
        control.Set(L"CurrentSBID", L"l1c");
    } else if (which == L"LessonInfo" || which == L"LockInfo") {
        control.Call(L"UpdateFrom", {editor.Object()});
    } else if (which == L"LockManager") {
        control.Set(L"MDBMode", true);
        control.Set(L"Username", courseUser);
        control.Set(L"ConnectionString", files.content);
        control.Call(L"RebuildDisplay");
    } else if (which == L"DatabaseValidator") {
        control.Call(L"ValidateDataConnection", {files.content, files.content, true});
    } else {
        control.Call(L"LoadPicker", {files.connector, courseUser, L""});
    }
    return hosted;
}

FilledForm::FilledForm(const ControlLibrary& library, const CourseFiles& files, int dpi)
    : form(library, 500, 360, dpi) {
    for (const wchar_t* name : ControlNames()) {
        const auto editor = controls.find(L"GroupEditor");
        controls[name] = &AddFilled(form, name, Places().at(name), library, files,
                                    editor == controls.end() ? Automation() : editor->second->Control());
    }
    form.Pump();
}

} // namespace dax::workbench::selftest
