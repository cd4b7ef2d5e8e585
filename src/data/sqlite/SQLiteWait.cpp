#include "data/sqlite/SQLiteWait.h"

#include "data/sqlite/SQLite.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace dax {

namespace {

thread_local SQLiteWait* waitOfThread = nullptr;

// The default file system under another name. Every call is forwarded to the current default.
struct ForwardingFileSystem {
    sqlite3_vfs own{};
    sqlite3_vfs* base;
    std::string name;
};

sqlite3_vfs* BaseOf(sqlite3_vfs* own) { return static_cast<ForwardingFileSystem*>(own->pAppData)->base; }

int SleepAtMost(sqlite3_vfs* own, int microseconds) {
    if (!waitOfThread) return BaseOf(own)->xSleep(BaseOf(own), microseconds);
    (void)waitOfThread->Sleep(std::chrono::microseconds(microseconds));
    return microseconds;
}

void Forward(ForwardingFileSystem& system) {
    using Vfs = sqlite3_vfs;
    Vfs& own = system.own;
    own.iVersion = 2;
    own.szOsFile = system.base->szOsFile;
    own.mxPathname = system.base->mxPathname;
    own.zName = system.name.c_str();
    own.pAppData = &system;
    own.xOpen = [](Vfs* self, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
        return BaseOf(self)->xOpen(BaseOf(self), name, file, flags, outFlags);
    };
    own.xDelete = [](Vfs* self, const char* name, int sync) { return BaseOf(self)->xDelete(BaseOf(self), name, sync); };
    own.xAccess = [](Vfs* self, const char* name, int flags, int* answer) {
        return BaseOf(self)->xAccess(BaseOf(self), name, flags, answer);
    };
    own.xFullPathname = [](Vfs* self, const char* name, int size, char* full) {
        return BaseOf(self)->xFullPathname(BaseOf(self), name, size, full);
    };
    own.xRandomness = [](Vfs* self, int size, char* bytes) {
        return BaseOf(self)->xRandomness(BaseOf(self), size, bytes);
    };
    own.xSleep = SleepAtMost;
    own.xCurrentTime = [](Vfs* self, double* now) { return BaseOf(self)->xCurrentTime(BaseOf(self), now); };
    own.xGetLastError = [](Vfs* self, int size, char* text) {
        return BaseOf(self)->xGetLastError ? BaseOf(self)->xGetLastError(BaseOf(self), size, text) : 0;
    };
    own.xCurrentTimeInt64 = [](Vfs* self, sqlite3_int64* now) {
        return BaseOf(self)->xCurrentTimeInt64(BaseOf(self), now);
    };
}

} // namespace

bool SQLiteWait::Sleep(std::chrono::microseconds max) {
    const auto now = WaitClock::now();
    if (!hasBegun) {
        hasBegun = true;
        end = now + limit;
    }
    if (now >= end || isCancelled) return false;
    std::this_thread::sleep_for(std::min(max, std::chrono::ceil<std::chrono::microseconds>(end - now)));
    return true;
}

SQLiteWaitScope::SQLiteWaitScope(SQLiteWait& wait) : outer(waitOfThread) {
    wait.hasBegun = false;
    wait.isCancelled = false;
    waitOfThread = &wait;
}

SQLiteWaitScope::~SQLiteWaitScope() { waitOfThread = outer; }

int SQLiteIsBusy(void* wait, int count) {
    return static_cast<SQLiteWait*>(wait)->Sleep(std::chrono::milliseconds(std::clamp(count, 1, 50))) ? 1 : 0;
}

const char* SQLiteFileSystem() {
    static std::mutex mutex;
    static std::vector<std::unique_ptr<ForwardingFileSystem>> systems; // SQLite keeps their addresses
    const std::scoped_lock lock(mutex);
    sqlite3_vfs* base = sqlite3_vfs_find(nullptr);
    if (base && std::string_view(base->zName) == "win32")
        if (sqlite3_vfs* const longer = sqlite3_vfs_find("win32-longpath")) base = longer;
    if (!base) return nullptr; // SQLite says so when it opens the file
    const auto known = std::ranges::find_if(systems, [&](const auto& system) { return system->base == base; });
    if (known != systems.end()) return (*known)->name.c_str();
    auto& system = systems.emplace_back(std::make_unique<ForwardingFileSystem>());
    system->base = base;
    system->name = "dax" + std::to_string(systems.size());
    Forward(*system);
    sqlite3_vfs_register(&system->own, 0);
    return system->name.c_str();
}

} // namespace dax
