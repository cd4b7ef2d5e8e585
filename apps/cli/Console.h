// What the program says: UTF-8 on every system, whole lines.
#pragma once

#include "MessageException.h"
#include "base/Text.h"

#include <chrono>

namespace dax::cli {

// What is printed cannot be written.
class OutputError : public MessageException {
public:
    OutputError(Text text, bool closed) : MessageException(std::move(text)), isClosed(closed) {}
    bool IsClosed() const { return isClosed; } // the reader closed the pipe, which is no failure

private:
    bool isClosed;
};

void Print(TextView line); // standard output; throws OutputError
void PrintBytes(std::string_view bytes);
void Announce(TextView line);   // the same for what was changed, which the error then reports
void PrintError(TextView line); // standard error, without passwords

// Registers a password that nothing on standard error may show.
void AddSecret(const Text& password);

// Many lines for standard output, written in large pieces.
class Output {
public:
    void Line(TextView line);
    void Finish(); // writes what is left; both throw OutputError

private:
    Text waiting;
};

// In one line, whatever the text holds: control characters become blanks.
Text OneLine(TextView text);
// How many columns of a terminal the text takes.
size_t Columns(TextView text);
// Filled up with blanks, or cut with an ellipsis, to exactly that many columns.
Text Fit(TextView text, size_t columns);

// Reports the progress of long work on standard error; nothing during the first second. Reporting throws
// Interrupted.
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
