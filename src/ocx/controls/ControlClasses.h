// The makers of the library's classes: each returns a new object with one reference.
#pragma once

#include "com/Library.h"

namespace dax {

IUnknown* CreateConstants(const ClassEntry& entry);
IUnknown* CreateDatabaseValidator(const ClassEntry& entry);
IUnknown* CreateSQLDBPicker(const ClassEntry& entry);
IUnknown* CreateGroupEditor(const ClassEntry& entry);
IUnknown* CreateLockManager(const ClassEntry& entry);
IUnknown* CreateLessonInfo(const ClassEntry& entry);
IUnknown* CreateLockInfo(const ClassEntry& entry);
IUnknown* CreateLessonMapEditor(const ClassEntry& entry);

} // namespace dax
