// The control library: one row per class.
#include <ole2.h>

#include <initguid.h> // the identifiers of the type library are defined in this file

#include "ContentObjects.h"
#include "DAXControls.h"

#include "controls/win32/WindowBase.h"
#include "ocx/controls/ControlClasses.h"

namespace dax {

namespace {

const ClassEntry classes[] = {
    {&CLSID_DatabaseValidator, &IID__DatabaseValidator, &DIID___DatabaseValidator, L"DatabaseValidator",
     L"DAX database validator", CreateDatabaseValidator, 101},
    {&CLSID_SQLDBPicker, &IID__SQLDBPicker, &DIID___SQLDBPicker, L"SQLDBPicker", L"DAX catalog picker",
     CreateSQLDBPicker, 102},
    {&CLSID_GroupEditor, &IID__GroupEditor, &DIID___GroupEditor, L"GroupEditor", L"DAX hierarchy editor",
     CreateGroupEditor, 103},
    {&CLSID_LockManager, &IID__LockManager, &DIID___LockManager, L"LockManager", L"DAX lock list", CreateLockManager,
     104},
    {&CLSID_LessonInfo, &IID__LessonInfo, &DIID___LessonInfo, L"LessonInfo", L"DAX lesson panel", CreateLessonInfo,
     105},
    {&CLSID_LockInfo, &IID__LockInfo, &DIID___LockInfo, L"LockInfo", L"DAX lock panel", CreateLockInfo, 106},
    {&CLSID_LessonMapEditor, &IID__LessonMapEditor, &DIID___LessonMapEditor, L"LessonMapEditor", L"DAX lesson map",
     CreateLessonMapEditor, 107},
    {&CLSID_Constants, &IID__Constants, nullptr, L"Constants", L"DAX constants", CreateConstants, 0},
};

} // namespace

const Library& ThisLibrary() {
    static const Library library{&LIBID_DAXControls, L"DAXControls", 3, 3, classes, WindowBase::LiveCount};
    return library;
}

} // namespace dax
