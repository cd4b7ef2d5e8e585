// The self-test: whether the controls work on this machine, as a page to be read or sent.
#pragma once

#include "Options.h"

namespace dax::workbench::selftest {

// Runs every group of checks in a process of its own and writes the report. The program's exit code: 0 when something
// passed and nothing failed, else 1. Says what came of it, and at the end where the report is.
int RunSelfTest(const Options& options);

// Starts it as a program of its own that shows the report in the end. Throws HostError.
void StartSelfTest(const Options& options);

} // namespace dax::workbench::selftest
