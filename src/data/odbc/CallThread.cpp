#include "data/odbc/CallThread.h"

#include "data/odbc/Odbc.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>

namespace dax {

namespace {

// A driver may return at any time to an abandoned thread: its code must stay loaded until the
// process ends, also when the host unloads the library.
void StayLoaded() {
#ifdef _WIN32
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&StayLoaded), &module);
#endif
}

} // namespace

struct CallThread::Call {
    std::function<void()> job;
    std::exception_ptr failure;
    bool isDone = false;
};

struct CallThread::State {
    std::mutex mutex;
    std::condition_variable hasWork, hasEnded;
    std::deque<Ticket> calls;
    bool isClosed = false;
    uint64_t awaited = 0, lastAwaited = 0; // numbers of jobs; 0: no call waits
};

CallThread::CallThread() : state(std::make_shared<State>()), thread([own = state] { Work(own); }) {}

CallThread::~CallThread() {
    {
        const std::scoped_lock lock(state->mutex);
        state->isClosed = true;
    }
    state->hasWork.notify_one();
    if (IsAbandoned())
        thread.detach();
    else
        thread.join();
}

void CallThread::Work(const std::shared_ptr<State>& state) {
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->hasWork.wait(lock, [&] { return !state->calls.empty() || state->isClosed; });
        if (state->calls.empty()) return;
        const Ticket call = std::move(state->calls.front());
        state->calls.pop_front();
        lock.unlock();
        try {
            call->job();
        } catch (...) {
            call->failure = std::current_exception();
        }
        call->job = nullptr; // frees what it captured here, where nothing else of the driver's runs
        lock.lock();
        call->isDone = true;
        state->hasEnded.notify_all();
    }
}

CallThread::Ticket CallThread::Start(std::function<void()> job) {
    auto call = std::make_shared<Call>();
    call->job = std::move(job);
    const std::scoped_lock lock(state->mutex);
    state->calls.push_back(call);
    state->hasWork.notify_one();
    return call;
}

bool CallThread::Wait(const Ticket& call, Time end) {
    std::unique_lock lock(state->mutex);
    if (isAbandoned) return false;
    state->awaited = ++state->lastAwaited;
    state->hasEnded.wait_until(lock, end, [&] { return call->isDone || isAbandoned; });
    state->awaited = 0;
    state->hasEnded.notify_all();
    if (!call->isDone) {
        lock.unlock();
        Abandon();
        return false;
    }
    if (call->failure) std::rethrow_exception(call->failure);
    return true;
}

void CallThread::Abandon() {
    StayLoaded();
    const std::scoped_lock lock(state->mutex);
    isAbandoned = true;
    state->hasEnded.notify_all();
}

uint64_t CallThread::Awaited() const {
    const std::scoped_lock lock(state->mutex);
    return state->awaited;
}

void CallThread::AbandonAfter(uint64_t awaited, Time end) {
    {
        std::unique_lock lock(state->mutex);
        if (state->hasEnded.wait_until(lock, end, [&] { return state->awaited != awaited; })) return;
    }
    Abandon();
}

} // namespace dax
