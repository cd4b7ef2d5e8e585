// What the program says: UTF-8 on every system, whole lines.
#pragma once

#include "data/Text.h"

#include <chrono>

namespace dax::cli {

void PrepareConsole();
void Print(TextView line);    // standard output
void Complain(TextView line); // standard error

// Tells how far a long piece of work is, on standard error; nothing during the first second.
class Progress {
public:
    Progress(Text what, size_t total);
    void Report(size_t done);

private:
    Text what;
    size_t total;
    std::chrono::steady_clock::time_point next;
};

} // namespace dax::cli
