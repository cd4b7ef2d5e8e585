#include "support/SQLiteFaults.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

namespace dax::test {

namespace {

struct Faults {
    SQLiteFaults::Kind kind = SQLiteFaults::Kind::Calls;
    std::atomic<size_t> left = 0; // calls until one fails; 0: none does
    bool isLasting = false;
    std::atomic<bool> hasFailed = false;
    std::atomic<size_t> openFiles = 0, allocations = 0;

    bool Fails(SQLiteFaults::Kind called) {
        if (left == 0 || called != kind || (hasFailed && !isLasting) || (!hasFailed && --left > 0)) return false;
        left = 1; // stays on
        return hasFailed = true;
    }
};
Faults faults;

bool CallFails() { return faults.Fails(SQLiteFaults::Kind::Calls); }

sqlite3_vfs* realSystem = nullptr;
sqlite3_mem_methods realMemory;

// SQLite's part of a file of ours; the system's own follows it.
struct File : sqlite3_file {
    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};
sqlite3_file* RealOf(sqlite3_file* file) { return static_cast<File*>(file)->Real(); }

template <auto method, int failure>
struct Forward;
template <typename... Arguments, int (*sqlite3_io_methods::*method)(sqlite3_file*, Arguments...), int failure>
struct Forward<method, failure> {
    static int Call(sqlite3_file* file, Arguments... arguments) {
        return CallFails() ? failure : (RealOf(file)->pMethods->*method)(RealOf(file), arguments...);
    }
    static int Always(sqlite3_file* file, Arguments... arguments) {
        return (RealOf(file)->pMethods->*method)(RealOf(file), arguments...);
    }
};

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    const bool fails = CallFails();
    const int result = RealOf(file)->pMethods->xWrite(RealOf(file), bytes, fails ? count / 2 : count, offset);
    return fails ? SQLITE_FULL : result;
}
int Close(sqlite3_file* file) {
    --faults.openFiles;
    return RealOf(file)->pMethods->xClose(RealOf(file));
}
void Barrier(sqlite3_file* file) { RealOf(file)->pMethods->xShmBarrier(RealOf(file)); }

const sqlite3_io_methods methods = [] {
    using Methods = sqlite3_io_methods;
    Methods made{};
    made.iVersion = 2; // with shared memory, without mapped files
    made.xClose = Close;
    made.xRead = Forward<&Methods::xRead, SQLITE_IOERR_READ>::Call;
    made.xWrite = Write;
    made.xTruncate = Forward<&Methods::xTruncate, SQLITE_IOERR_TRUNCATE>::Call;
    made.xSync = [](sqlite3_file*, int) {
        return CallFails() ? SQLITE_IOERR_FSYNC : SQLITE_OK;
    }; // the machine stays on
    made.xFileSize = Forward<&Methods::xFileSize, SQLITE_IOERR_FSTAT>::Call;
    made.xLock = Forward<&Methods::xLock, SQLITE_IOERR_LOCK>::Call;
    made.xUnlock = Forward<&Methods::xUnlock, SQLITE_IOERR_UNLOCK>::Always;
    made.xCheckReservedLock = Forward<&Methods::xCheckReservedLock, SQLITE_IOERR_CHECKRESERVEDLOCK>::Call;
    made.xFileControl = Forward<&Methods::xFileControl, SQLITE_ERROR>::Always;
    made.xSectorSize = Forward<&Methods::xSectorSize, 0>::Always;
    made.xDeviceCharacteristics = Forward<&Methods::xDeviceCharacteristics, 0>::Always;
    made.xShmMap = Forward<&Methods::xShmMap, SQLITE_IOERR_SHMMAP>::Call;
    made.xShmLock = Forward<&Methods::xShmLock, SQLITE_IOERR_SHMLOCK>::Call;
    made.xShmBarrier = Barrier;
    made.xShmUnmap = Forward<&Methods::xShmUnmap, SQLITE_IOERR>::Always;
    return made;
}();

int Open(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    file->pMethods = nullptr;
    if (CallFails()) return SQLITE_CANTOPEN;
    const int result = realSystem->xOpen(realSystem, path, RealOf(file), flags, outFlags);
    if (!RealOf(file)->pMethods) return result;
    file->pMethods = &methods;
    ++faults.openFiles;
    return result;
}
int Delete(sqlite3_vfs*, const char* path, int syncsFolder) {
    return CallFails() ? SQLITE_IOERR_DELETE : realSystem->xDelete(realSystem, path, syncsFolder);
}
int Access(sqlite3_vfs*, const char* path, int flags, int* result) {
    return CallFails() ? SQLITE_IOERR_ACCESS : realSystem->xAccess(realSystem, path, flags, result);
}
int FullPathname(sqlite3_vfs*, const char* path, int size, char* out) {
    return CallFails() ? SQLITE_CANTOPEN_FULLPATH : realSystem->xFullPathname(realSystem, path, size, out);
}

sqlite3_vfs ours;

void* Allocate(int size) {
    void* const memory = faults.Fails(SQLiteFaults::Kind::Memory) ? nullptr : realMemory.xMalloc(size);
    faults.allocations += memory != nullptr;
    return memory;
}
void Free(void* memory) {
    faults.allocations -= memory != nullptr;
    realMemory.xFree(memory);
}
void* Reallocate(void* memory, int size) {
    return faults.Fails(SQLiteFaults::Kind::Memory) ? nullptr : realMemory.xRealloc(memory, size);
}

void Require(int result) {
    if (result != SQLITE_OK) throw std::runtime_error("SQLite does not take the faults");
}

} // namespace

SQLiteFaults::SQLiteFaults() {
    Stop();
    Require(sqlite3_shutdown());
    Require(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory));
    sqlite3_mem_methods memory = realMemory;
    memory.xMalloc = Allocate;
    memory.xFree = Free;
    memory.xRealloc = Reallocate;
    Require(sqlite3_config(SQLITE_CONFIG_MALLOC, &memory));
    Require(sqlite3_initialize());
    realSystem = sqlite3_vfs_find(nullptr);
    ours = *realSystem;
    ours.zName = "faults";
    ours.szOsFile += static_cast<int>(sizeof(File));
    ours.pNext = nullptr;
    ours.xOpen = Open;
    ours.xDelete = Delete;
    ours.xAccess = Access;
    ours.xFullPathname = FullPathname;
    Require(sqlite3_vfs_register(&ours, 1));
}

SQLiteFaults::~SQLiteFaults() {
    Stop();
    sqlite3_vfs_unregister(&ours);
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_MALLOC, &realMemory);
    sqlite3_initialize();
}

void SQLiteFaults::FailAt(Kind kind, size_t number, bool isLasting) {
    faults.kind = kind;
    faults.isLasting = isLasting;
    faults.hasFailed = false;
    faults.left = number;
}

bool SQLiteFaults::Stop() {
    faults.left = 0;
    return faults.hasFailed.exchange(false);
}

size_t SQLiteFaults::OpenFiles() const { return faults.openFiles; }
size_t SQLiteFaults::Allocations() const { return faults.allocations; }

} // namespace dax::test
