// Faults inside SQLite: each of its calls to the system, and each of its allocations, can be made to fail.
#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <stdexcept>

namespace dax::test {

// While it exists, every file that SQLite opens in this process, and all memory that it takes, is routed here. Created
// and ended while no connection is open; one at a time.
class SQLiteFaults {
public:
    // Open, read, write (of which half is done), truncate, sync, size, lock, delete, shared memory; or memory.
    enum class Kind { Calls, Memory };

    SQLiteFaults() {
        Require(sqlite3_shutdown());
        Require(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory));
        sqlite3_mem_methods memory = realMemory;
        memory.xMalloc = [](int size) {
            void* const taken = Fails(Kind::Memory) ? nullptr : realMemory.xMalloc(size);
            allocations += taken != nullptr;
            return taken;
        };
        memory.xFree = [](void* taken) {
            allocations -= taken != nullptr;
            realMemory.xFree(taken);
        };
        memory.xRealloc = [](void* taken, int size) {
            return Fails(Kind::Memory) ? nullptr : realMemory.xRealloc(taken, size);
        };
        Require(sqlite3_config(SQLITE_CONFIG_MALLOC, &memory));
        Require(sqlite3_initialize());
        realSystem = sqlite3_vfs_find(nullptr);
        ours = *realSystem;
        ours.zName = "faults";
        ours.pNext = nullptr;
        ours.xOpen = Open;
        InjectFault<&sqlite3_vfs::xDelete, SQLITE_IOERR_DELETE>(ours.xDelete);
        InjectFault<&sqlite3_vfs::xAccess, SQLITE_IOERR_ACCESS>(ours.xAccess);
        InjectFault<&sqlite3_vfs::xFullPathname, SQLITE_CANTOPEN_FULLPATH>(ours.xFullPathname);
        Require(sqlite3_vfs_register(&ours, 1));
    }
    ~SQLiteFaults() {
        Stop();
        sqlite3_vfs_unregister(&ours);
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_MALLOC, &realMemory);
        sqlite3_initialize();
    }
    SQLiteFaults(const SQLiteFaults&) = delete;
    SQLiteFaults& operator=(const SQLiteFaults&) = delete;

    // The call of that number, from 1, fails, and when it is to last each one after it.
    void FailAt(Kind which, size_t number, bool lasts) {
        kind = which;
        isLasting = lasts;
        hasFailed = false;
        left = number;
    }
    // No more; true when anything has failed.
    bool Stop() {
        left = 0;
        return hasFailed.exchange(false);
    }
    // What SQLite has not closed or freed.
    static inline std::atomic<size_t> openFiles = 0, allocations = 0;

private:
    // The methods of a file, some replaced by ours, which call the originals.
    struct Methods : sqlite3_io_methods {
        const sqlite3_io_methods* real;
    };

    static void Require(int result) {
        if (result != SQLITE_OK) throw std::runtime_error("SQLite does not take the faults");
    }
    static bool Fails(Kind called) {
        if (left == 0 || called != kind || (hasFailed && !isLasting) || (!hasFailed && --left > 0)) return false;
        left = 1; // stays on
        return hasFailed = true;
    }
    static const sqlite3_vfs& RealOf(sqlite3_vfs*) { return *realSystem; }
    static const sqlite3_io_methods& RealOf(sqlite3_file* file) {
        return *static_cast<const Methods*>(file->pMethods)->real;
    }
    // Replaces a method, where the system has it, by one that fails or is the real one.
    template <auto method, int failure, typename Object, typename... Arguments>
    static void InjectFault(int (*&place)(Object*, Arguments...)) {
        if (!place) return;
        place = [](Object* object, Arguments... arguments) {
            return Fails(Kind::Calls) ? failure : (RealOf(object).*method)(object, arguments...);
        };
    }

    static int Open(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* outFlags) {
        file->pMethods = nullptr;
        if (Fails(Kind::Calls)) return SQLITE_CANTOPEN;
        const int result = realSystem->xOpen(realSystem, path, file, flags, outFlags);
        if (!file->pMethods) return result;
        const std::scoped_lock lock(mutex);
        // The system has several sets of methods, for files with locks and without.
        const auto [place, isNew] = methods.try_emplace(file->pMethods, Methods{*file->pMethods, file->pMethods});
        if (isNew) Replace(place->second);
        file->pMethods = &place->second;
        ++openFiles;
        return result;
    }
    static void Replace(Methods& made) {
        using Real = sqlite3_io_methods;
        made.iVersion = std::min(made.iVersion, 2); // with shared memory, without mapped files
        made.xClose = [](sqlite3_file* file) {
            --openFiles;
            return RealOf(file).xClose(file);
        };
        made.xWrite = [](sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
            const bool fails = Fails(Kind::Calls);
            const int result = RealOf(file).xWrite(file, bytes, fails ? count / 2 : count, offset);
            return fails ? SQLITE_FULL : result;
        };
        made.xSync = [](sqlite3_file*, int) {
            return Fails(Kind::Calls) ? SQLITE_IOERR_FSYNC : SQLITE_OK; // the machine stays on
        };
        InjectFault<&Real::xRead, SQLITE_IOERR_READ>(made.xRead);
        InjectFault<&Real::xTruncate, SQLITE_IOERR_TRUNCATE>(made.xTruncate);
        InjectFault<&Real::xFileSize, SQLITE_IOERR_FSTAT>(made.xFileSize);
        InjectFault<&Real::xLock, SQLITE_IOERR_LOCK>(made.xLock);
        InjectFault<&Real::xCheckReservedLock, SQLITE_IOERR_CHECKRESERVEDLOCK>(made.xCheckReservedLock);
        InjectFault<&Real::xShmMap, SQLITE_IOERR_SHMMAP>(made.xShmMap);
        InjectFault<&Real::xShmLock, SQLITE_IOERR_SHMLOCK>(made.xShmLock);
    }

    static inline Kind kind = Kind::Calls;
    static inline std::atomic<size_t> left = 0; // calls until one fails; 0: none does
    static inline std::atomic<bool> hasFailed = false;
    static inline bool isLasting = false;
    static inline sqlite3_vfs* realSystem = nullptr;
    static inline sqlite3_vfs ours;
    static inline sqlite3_mem_methods realMemory;
    static inline std::mutex mutex;
    static inline std::map<const sqlite3_io_methods*, Methods> methods;
};

} // namespace dax::test
