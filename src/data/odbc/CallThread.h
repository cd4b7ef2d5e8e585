// A thread for the calls into a driver that cannot be told how long it may wait for its server.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace dax {

// Runs jobs one after the other. Whoever waits for one may give the thread up: it then goes on by itself, ends what it
// is at and what was left to it, frees what those captured, and ends. So a job must capture whatever the driver may
// still write to, shared or by value, and nothing of its caller's.
class CallThread {
public:
    using Time = std::chrono::steady_clock::time_point;

    CallThread();
    // Waits for the thread, unless it was given up.
    ~CallThread();
    CallThread(const CallThread&) = delete;
    CallThread& operator=(const CallThread&) = delete;

    // A job that was started.
    struct Call;
    using Ticket = std::shared_ptr<Call>;
    // Without waiting; also on a thread that was given up.
    Ticket Start(std::function<void()> job);
    // Waits for the job, once, and throws what it has thrown. False when it has not ended by then, which gives the
    // thread up, or when the thread was given up before or meanwhile. What the job captured is gone when this is true.
    bool Wait(const Ticket& call, Time end);
    bool Run(std::function<void()> job, Time end) { return !isGivenUp && Wait(Start(std::move(job)), end); }
    // From any thread.
    bool IsGivenUp() const { return isGivenUp; }
    // The number of the job that is waited for; 0: none.
    uint64_t Awaited() const;
    // Gives the thread up unless that job has ended by then. From any thread.
    void GiveUpAfter(uint64_t awaited, Time end);

private:
    struct State;
    void GiveUp();
    static void Work(const std::shared_ptr<State>& state);
    std::shared_ptr<State> state;
    std::atomic<bool> isGivenUp = false;
    std::thread thread;
};

} // namespace dax
