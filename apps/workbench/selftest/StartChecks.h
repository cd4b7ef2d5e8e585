// The start of an application, from the connector to the record of the connection, on the workbench's own pages.
#pragma once

#include "selftest/Checks.h"

namespace dax::workbench::selftest {

// The steps, each with a picture when requested, and what the database must then hold. Throws HostError.
std::vector<Check> StartOn(const Setting& setting, const std::wstring& connector, const std::wstring& content,
                           bool hasPictures);

// Editing, saving and loading again, by the controls on a form.
std::vector<Check> EditingOn(const Setting& setting, const std::wstring& content, bool isFile,
                             const std::wstring& newTitle);

} // namespace dax::workbench::selftest
