// Ctrl+C, and the system's request to end: what was begun is undone, and the program says so. Where nothing was begun
// it ends at once.
#pragma once

#include "MessageException.h"
#include "base/Text.h"

#include <functional>

namespace dax::cli {

// Unwinds the work; then the program ends as one that was interrupted. The message says what has become of the work.
class Interrupted : public MessageException {
public:
    using MessageException::MessageException;
};

// From the start of the program, before there are other threads.
void WatchInterrupts();

// Throws Interrupted when the user wants to stop and something is unfinished. Long work calls it often;
// Progress::Report does.
void CheckInterrupt();

// Work that can be interrupted without effects. While it exists Ctrl+C does not end the program but is
// detected by CheckInterrupt. When that takes some seconds, because a server does not answer, or at the second Ctrl+C,
// `undo` is called on another thread and the program ends; an open transaction ends with it.
class InterruptScope {
public:
    // `message` says what an interruption leaves: "Nothing was saved."
    explicit InterruptScope(Text message, std::function<void()> undo = {});
    ~InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

    // Directly before the step that cannot be undone, a commit: throws Interrupted if it was interrupted by now. From
    // then on it is finished, whatever the user presses.
    void Finish();

private:
    friend struct InterruptState;
    Text message;
    std::function<void()> undo;
    InterruptScope* outer;
    bool isFinishing = false;
};

// What the systems' parts call and offer (posix/System.cpp, win32/System.cpp).
void OnInterrupt();
void StartListening();
[[noreturn]] void EndInterrupted() noexcept; // ends the program so that its caller sees that it was interrupted

} // namespace dax::cli
