// Runs the real program "dax" beside the test program, as a process.
#pragma once

#include "support/TestDatabases.h"

namespace dax::test {

struct Outcome {
    int exitCode = -1;
    std::string output, errors;
};

std::filesystem::path ProgramPath();
size_t CountFiles(const TempFolder& folder);

// `input` is what the program reads from its standard input.
Outcome RunDax(const std::vector<Text>& words, const std::string& input = {});
// A line as it is typed: words between blanks, or in double quotes. The database is inserted after the command.
std::vector<Text> Words(const std::string& line);
Outcome RunOn(const Text& database, const std::string& line, const std::string& input = {});

struct ExpectedOutput {
    std::string line;
    int exitCode;
    std::string part; // a part of what either stream receives
    std::string input = {};
};
void ExpectOutput(const Text& database, std::initializer_list<ExpectedOutput> cases);
#ifndef _WIN32
// A script for bash, in a folder of its own; "$dax" is the program.
Outcome RunShell(const std::filesystem::path& folder, const std::string& script);
#endif

} // namespace dax::test
