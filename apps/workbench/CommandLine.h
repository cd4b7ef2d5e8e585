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
    std::wstring problem; // in words; empty when the arguments make sense
};

Options ParseArguments(const std::vector<std::wstring>& arguments);
std::wstring Usage();

// To the standard error or output of the console that started the program, if there is one.
void Say(const std::wstring& text, bool asError);

} // namespace dax::workbench
