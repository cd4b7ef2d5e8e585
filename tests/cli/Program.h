// Runs the real program "dax" as a process: the one that DAX_BIN names, or the one beside the test program.
#pragma once

#include "base/Text.h"

#include <string>
#include <vector>

namespace dax::test {

struct Outcome {
    int exitCode = -1;
    std::string output, errors;
};

// `input` is what the program reads from its standard input.
Outcome RunDax(const std::vector<Text>& words, const std::string& input = {});

} // namespace dax::test
