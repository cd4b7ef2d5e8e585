// How long SQLite may wait for the locks of other programs, and how long it may work.
#pragma once

#include <atomic>
#include <chrono>

namespace dax {

using WaitClock = std::chrono::steady_clock;

// The wait of one connection. SQLite waits in several places, each with a limit of its own: here all waits within
// one statement share one limit.
class SQLiteWait {
public:
    explicit SQLiteWait(std::chrono::milliseconds limit) : limit(limit) {}
    SQLiteWait(const SQLiteWait&) = delete;
    SQLiteWait& operator=(const SQLiteWait&) = delete;

    // Sleeps a little, at most `max`; false when the wait is over or was cancelled.
    bool Sleep(std::chrono::microseconds max);
    void SetLimit(std::chrono::milliseconds newLimit) { limit = newLimit; }
    void Cancel() noexcept { isCancelled = true; }

private:
    friend class SQLiteWaitScope;
    std::chrono::milliseconds limit;
    WaitClock::time_point end{};
    bool hasBegun = false;
    std::atomic<bool> isCancelled = false;
};

// While one exists, what this thread waits for inside SQLite counts as one wait.
class SQLiteWaitScope {
public:
    explicit SQLiteWaitScope(SQLiteWait& wait);
    ~SQLiteWaitScope();
    SQLiteWaitScope(const SQLiteWaitScope&) = delete;
    SQLiteWaitScope& operator=(const SQLiteWaitScope&) = delete;

private:
    SQLiteWait* outer;
};

// SQLite's busy handler; its first argument is a SQLiteWait.
int SQLiteIsBusy(void* wait, int count);

// The name of a file system for sqlite3_open_v2: SQLite's default one (also one that a test has registered as the
// default), on Windows the one for long paths, except that its sleeps end with the wait of the thread. SQLite sleeps up
// to ten seconds, without asking the busy handler, while another program opens a file in WAL mode.
const char* SQLiteFileSystem();

} // namespace dax
