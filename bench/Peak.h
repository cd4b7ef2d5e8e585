// The most memory that a program of ours takes.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dax::bench {

// MiB of memory at the program's peak, as the system counts; it lies beside this one. Empty when it did not end with 0.
std::optional<double> PeakOf(const std::string& program, std::vector<std::string> arguments);

// The system counts what a process held before it became another program, too: so this program, restarted and therefore
// small, is the one that starts the program measured. When these are the arguments of that, it does not return.
void MeasurePeakIfAsked(int count, char** arguments);

} // namespace dax::bench
