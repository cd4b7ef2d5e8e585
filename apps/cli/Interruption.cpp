#include "Interruption.h"

#include "Console.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

namespace dax::cli {

struct InterruptState {
    std::mutex mutex;
    InterruptScope* current = nullptr;
    bool isRequested = false;

    static const Text& MessageOf(const InterruptScope& work) { return work.message; }
    static bool IsFinishing(const InterruptScope& work) { return work.isFinishing; }
    static void Undo(const InterruptScope& work) {
        if (work.undo) work.undo();
    }
};

namespace {

constexpr std::chrono::seconds gracePeriod(5);

// Never destroyed: the listening thread may use it until the process ends.
InterruptState& State() {
    static auto* const state = new InterruptState;
    return *state;
}

// The work has not noticed it.
void Abandon() {
    InterruptState& state = State();
    const std::scoped_lock lock(state.mutex); // kept: nothing begins or finishes any more
    if (state.current && InterruptState::IsFinishing(*state.current)) return;
    if (state.current) {
        PrintError(u"dax: Interrupted. " + InterruptState::MessageOf(*state.current));
        InterruptState::Undo(*state.current);
    }
    EndInterrupted();
}

} // namespace

void WatchInterrupts() {
    State();
    StartListening();
}

void OnInterrupt() {
    InterruptState& state = State();
    {
        const std::scoped_lock lock(state.mutex);
        if (state.current && InterruptState::IsFinishing(*state.current)) return;
        if (state.current && !state.isRequested) {
            state.isRequested = true;
            std::thread([] {
                std::this_thread::sleep_for(gracePeriod);
                Abandon();
            }).detach();
            return;
        }
    }
    Abandon();
}

void CheckInterrupt() {
    InterruptState& state = State();
    const std::scoped_lock lock(state.mutex);
    if (state.isRequested && state.current && !InterruptState::IsFinishing(*state.current))
        throw Interrupted(InterruptState::MessageOf(*state.current));
}

InterruptScope::InterruptScope(Text text, std::function<void()> action)
    : message(std::move(text)), undo(std::move(action)) {
    const std::scoped_lock lock(State().mutex);
    outer = std::exchange(State().current, this);
}

InterruptScope::~InterruptScope() {
    const std::scoped_lock lock(State().mutex);
    State().current = outer;
}

void InterruptScope::Finish() {
    const std::scoped_lock lock(State().mutex);
    if (State().isRequested) throw Interrupted(message);
    for (InterruptScope* work = this; work; work = work->outer) work->isFinishing = true;
}

} // namespace dax::cli
