// Faults inside SQLite: each of its calls to the system, and each of its allocations, can be made to fail.
#pragma once

#include <cstddef>

namespace dax::test {

// While it lives, every file that SQLite opens in this process, and all memory that it takes, goes through here. Made
// and ended while no connection is open; one at a time.
class SQLiteFaults {
public:
    // Open, read, write (of which half is done), truncate, sync, size, lock, delete, shared memory; or memory.
    enum class Kind { Calls, Memory };

    SQLiteFaults();
    ~SQLiteFaults();
    SQLiteFaults(const SQLiteFaults&) = delete;
    SQLiteFaults& operator=(const SQLiteFaults&) = delete;

    // The call of that number, from 1, fails, and when `isLasting` each one after it.
    void FailAt(Kind kind, size_t number, bool isLasting);
    // No more; true when anything has failed.
    bool Stop();
    // What SQLite has open and has not given back.
    size_t OpenFiles() const;
    size_t Allocations() const;
};

} // namespace dax::test
