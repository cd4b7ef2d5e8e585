// A thread for the calls into a driver that has no time-out of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace dax {

// Runs jobs one after the other. A caller that waits for one may abandon the thread: it then ends by itself, after what
// it is doing and the jobs left to it, and frees what those captured. So a job must capture whatever the driver may
// still write to, shared or by value, and nothing of its caller's.
class CallThread {
public:
    using Time = std::chrono::steady_clock::time_point;

    CallThread();
    // Waits for the thread, unless it was abandoned.
    ~CallThread();
    CallThread(const CallThread&) = delete;
    CallThread& operator=(const CallThread&) = delete;

    // A job that was started.
    struct Call;
    using Ticket = std::shared_ptr<Call>;
    // Without waiting; also on an abandoned thread.
    Ticket Start(std::function<void()> job);
    // Waits for the job, once, and throws what it has thrown. False when it has not ended by then, which abandons the
    // thread, or when the thread was abandoned before or meanwhile. What the job captured is freed when this is true.
    bool Wait(const Ticket& call, Time end);
    bool Run(std::function<void()> job, Time end) { return !isAbandoned && Wait(Start(std::move(job)), end); }
    // From any thread.
    bool IsAbandoned() const { return isAbandoned; }
    // The number of the job that is waited for; 0: none.
    uint64_t Awaited() const;
    // Abandons the thread unless that job has ended by then. From any thread.
    void AbandonAfter(uint64_t awaited, Time end);

private:
    struct State;
    void Abandon();
    static void Work(const std::shared_ptr<State>& state);
    std::shared_ptr<State> state;
    std::atomic<bool> isAbandoned = false;
    std::thread thread;
};

} // namespace dax
