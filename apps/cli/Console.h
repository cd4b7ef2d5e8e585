// What the program says: UTF-8 on every system, whole lines.
#pragma once

#include "base/Text.h"

#include <chrono>

namespace dax::cli {

void PrepareConsole();
void Print(TextView line);    // standard output
void Complain(TextView line); // standard error

// Many lines for standard output, written in large pieces.
class Output {
public:
    void Line(TextView line);
    void Finish(); // writes what is left

private:
    Text waiting;
};

// In one line, whatever the text holds: control characters become blanks.
Text OneLine(TextView text);
// How many columns of a terminal the text takes.
size_t Columns(TextView text);
// Filled up with blanks, or cut with an ellipsis, to exactly that many columns.
Text Fit(TextView text, size_t columns);

// Tells how far a long piece of work is, on standard error; nothing during the first second.
class Progress {
public:
    Progress(Text what, size_t total); // total 0: not known
    void Report(size_t done);

private:
    Text what;
    size_t total;
    std::chrono::steady_clock::time_point next;
};

} // namespace dax::cli
