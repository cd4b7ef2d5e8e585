// The one file that the self-test leaves: a page that can be read anywhere and mailed as it is.
#pragma once

#include "selftest/Recorder.h"

namespace dax::workbench::selftest {

struct ReportGroup {
    std::wstring title;
    Findings findings;
    ULONGLONG milliseconds = 0;
};

struct Counts {
    int passed = 0, failed = 0, skipped = 0;
};
Counts CountResults(const std::vector<ReportGroup>& groups);
// "12 passed, 0 failed, 3 skipped"
std::wstring Describe(const Counts& counts);

struct Report {
    std::vector<ReportGroup> groups;
    ULONGLONG milliseconds = 0;
    // Folders whose names contain the user's name; they are replaced by a neutral name.
    std::vector<std::pair<std::wstring, std::wstring>> hiddenFolders;
};

// As HTML in UTF-8, the pictures inside it.
std::string WriteHtml(const Report& report);

} // namespace dax::workbench::selftest
