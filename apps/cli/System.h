// What each system does in its own way (posix/System.cpp, win32/System.cpp); see Interruption.h, too.
#pragma once

#include "base/Text.h"

#include <cstdio>
#include <optional>

namespace dax::cli {

// Output and input as bytes; standard streams may be closed; a reader that ends is reported by
// a failed write.
void PrepareStreams();
bool IsTerminal(std::FILE* stream);
// Ends as the system expects of a program whose pipe was closed by its reader.
int EndWithClosedOutput();
// Prompts, and returns a line of the standard input without its end; on a terminal it is not echoed. Nothing
// at the end of the input.
std::optional<std::string> ReadHiddenLine(TextView question);

} // namespace dax::cli
