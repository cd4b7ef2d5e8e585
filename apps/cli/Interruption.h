// Ctrl+C, and the system's request to end: what was begun is undone, and the program says so. Where nothing was begun
// it ends at once.
#pragma once

#include "base/Text.h"

#include <exception>
#include <functional>

namespace dax::cli {

// Unwinds the work; then the program ends as one that was interrupted.
class Interrupted : public std::exception {
public:
    explicit Interrupted(Text text) : message(std::move(text)) {}
    const Text& Message() const { return message; } // what has become of the work

private:
    Text message;
};

// From the start of the program, before there are other threads.
void WatchInterrupts();

// Throws Interrupted when the user wants to stop and something is unfinished. Long work calls it often;
// Progress::Report does.
void CheckInterrupt();

// Work that can be interrupted without effects. While it exists Ctrl+C does not end the program but is
// detected by CheckInterrupt. When that takes some seconds, because a server does not answer, or at the second Ctrl+C,
// `undo` is called on another thread and the program ends; an open transaction ends with it.
class Unfinished {
public:
    // `message` says what an interruption leaves: "Nothing was saved."
    explicit Unfinished(Text message, std::function<void()> undo = {});
    ~Unfinished();
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    // Directly before the step that cannot be undone, a commit: throws Interrupted if it was interrupted by now. From
    // then on it is finished, whatever the user presses.
    void Finish();

private:
    friend struct InterruptState;
    Text message;
    std::function<void()> undo;
    Unfinished* outer;
    bool isFinishing = false;
};

// What the systems' parts call and offer (posix/System.cpp, win32/System.cpp).
void OnInterrupt();
void StartListening();
[[noreturn]] void EndInterrupted() noexcept; // ends the program so that its caller sees that it was interrupted

} // namespace dax::cli
