// The program's arguments.
#pragma once

#include <string>
#include <vector>

namespace dax::workbench {

struct Options {
    std::wstring file;      // opened and validated at once
    std::wstring connector; // fills the connector page
    std::wstring user;
    std::wstring shots; // the folder for pictures; empty: an ordinary run
    std::wstring start; // the same for the steps of an application's start
    bool registered = false;
    bool help = false;

    bool selfTest = false;
    std::vector<std::wstring> connections; // of databases to be tested, too
    std::wstring report;                   // empty: among the user's documents, and shown in the end
    std::wstring only;                     // the one group of checks; empty: all
    int limit = 0;                         // seconds that a check may take; 0: each its own
    // Of a process that runs one group for the self-test.
    std::wstring group, record;
    int firstCheck = 0; // by its number
    int connection = 0; // in `connections`

    std::wstring problem; // in words; empty when the arguments make sense
};

Options ParseArguments(const std::vector<std::wstring>& arguments);
std::wstring Usage();

// To the standard error or output of the console that started the program, if there is one.
void PrintText(const std::wstring& text, bool asError);

} // namespace dax::workbench
