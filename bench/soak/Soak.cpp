#include "soak/Soak.h"

#include "soak/Author.h"
#include "support/OwnServer.h"

#include "data/Schema.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace dax::soak {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int authorCount = 4;
// What the heap may have grown by: a few trees of some hundred rows that are not all of one size. Thousands of
// operations lie between, so that a leak of a hundred bytes each shows in an hour.
constexpr size_t allowedGrowth = 256 * 1024;

size_t HeapBytes() {
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

size_t OpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}

class Soak {
public:
    explicit Soak(bool isOnCluster)
        : isOnCluster(isOnCluster),
          server(isOnCluster ? test::OwnServer::Kind::Cluster : test::OwnServer::Kind::PostgreSQL),
          database(isOnCluster ? Engine::MariaDB : Engine::PostgreSQL, server.ConnectionString()) {
        database.Run(Schema::CreateStatements(Schema::Database::Content, database.Kind()));
        for (int i = 0; i < authorCount; ++i)
            authors.push_back(std::make_unique<Author>(
                i, database.ConnectionStringThrough(server.ConnectionString(isOnCluster ? NodeOf(i) : 1))));
    }

    // Everybody works; the server, or one node of the cluster, stops and starts when `untilTime` returns for the first
    // time, and they end at the second.
    void Stretch(const std::function<void()>& untilTime) {
        std::atomic<bool> isOver = false;
        std::vector<std::thread> threads;
        for (const auto& author : authors) {
            threads.emplace_back([&isOver, &author = *author] {
                while (!isOver) {
                    if (!author.Work()) std::this_thread::sleep_for(20ms);
                }
            });
        }
        untilTime();
        std::vector<int> refused, saves;
        for (const auto& author : authors) refused.push_back(author->refused);
        isOnCluster ? server.KillNode(stoppedNode) : server.Stop();
        WaitFor([&](size_t i) {
            return authors[i]->refused > refused[i] || (isOnCluster && NodeOf(static_cast<int>(i)) != stoppedNode);
        });
        isOnCluster ? server.StartNode(stoppedNode) : server.Start();
        for (const auto& author : authors) saves.push_back(author->saves);
        WaitFor([&](size_t i) { return authors[i]->saves > saves[i]; });
        untilTime();
        isOver = true;
        for (std::thread& thread : threads) thread.join();
        ReleaseAll();
    }
    // Until it holds for each author, or one has reported a fault.
    void WaitFor(const std::function<bool(size_t)>& holds) {
        for (size_t i = 0; i < authors.size(); ++i) {
            for (int last = -1; !holds(i) && !HasFailed();) {
                const int now = Progress();
                if (now != last) lastProgress = Clock::now();
                last = now;
                Report();
                if (Clock::now() - lastProgress > 4min) {
                    std::cerr << "the soak hangs: nothing moved for four minutes" << std::endl;
                    std::abort(); // what hangs cannot be joined
                }
                std::this_thread::sleep_for(5ms);
            }
        }
    }
    bool HasFailed() const {
        return std::ranges::any_of(authors, [](const auto& author) { return author->hasFailed.load(); });
    }
    void WaitForRounds(int count) {
        std::vector<int> before;
        for (const auto& author : authors) before.push_back(author->rounds);
        WaitFor([&](size_t i) { return authors[i]->rounds >= before[i] + count; });
    }

    void Measure() {
        heap = HeapBytes();
        files = OpenFiles();
    }
    void Compare() {
        const size_t heapNow = HeapBytes(), filesNow = OpenFiles();
        // MariaDB's driver never frees a kilobyte of each connection, so that on the cluster growth means nothing.
        if (!isOnCluster && heapNow > heap + allowedGrowth)
            result.faults.push_back("the heap grew from " + std::to_string(heap) + " to " + std::to_string(heapNow) +
                                    " bytes");
        if (filesNow != files)
            result.faults.push_back("open files: first " + std::to_string(files) + ", at last " +
                                    std::to_string(filesNow));
        result.summary += "heap " + std::to_string(heap) + " -> " + std::to_string(heapNow) + " bytes, open files " +
                          std::to_string(files) + " -> " + std::to_string(filesNow) + ", ";
    }

    void Verify() {
        size_t rows = 0, locks = 0;
        for (const auto& author : authors) {
            for (int tries = 0; !author->FinishPending() && tries < 50; ++tries) {
            }
            author->Verify();
        }
        for (const auto& author : authors) {
            author->Verify(); // again: another author's sweeping may have taken a lock
            rows += author->RowCount();
            locks += author->LockCount();
            const auto& said = author->Faults();
            result.faults.insert(result.faults.end(), said.begin(), said.end());
        }
        Expect(u"SELECT Count(*) FROM velmoraLessons", rows, "rows");
        Expect(u"SELECT Count(*) FROM velmoraUserLocks", locks, "locks");
        result.summary +=
            Counted() + ", " + std::to_string(rows) + " rows and " + std::to_string(locks) + " locks at the end";
    }

    // From now on says once a minute how far it is and what it saw.
    void ReportFor(double minutes) {
        begin = lastReport = Clock::now();
        planned = minutes;
    }
    Result result;

private:
    static constexpr int stoppedNode = 2;
    static int NodeOf(int author) { return author % 3 + 1; }

    // Operations so far, of all authors.
    std::string Counted() const {
        int rounds = 0, saves = 0, refused = 0;
        for (const auto& author : authors) rounds += author->rounds, saves += author->saves, refused += author->refused;
        return std::to_string(rounds) + " rounds, " + std::to_string(saves) + " saves, " + std::to_string(refused) +
               " operations refused with an error";
    }
    void Report() {
        if (planned <= 0 || Clock::now() - lastReport < 1min) return;
        lastReport += 1min;
        std::cout << "minute " << (lastReport - begin) / 1min << " of " << planned << ": " << Counted() << ", heap "
                  << HeapBytes() << " bytes, " << OpenFiles() << " open files, "
                  << (HasFailed() ? "faults" : "no fault") << std::endl;
    }
    void Expect(const Text& query, size_t expected, const std::string& what) {
        const Text found = database.Query(query);
        if (found != ToText(static_cast<long long>(expected)))
            result.faults.push_back(std::to_string(expected) + " " + what + " were saved, and there are " +
                                    ToUtf8(found));
    }
    void ReleaseAll() {
        for (const auto& author : authors) author->ReleaseAll();
        // A connection that was closed a moment ago may not have ended yet on the server.
        const auto end = Clock::now() + 30s;
        Text left;
        do {
            left = database.Query(
                isOnCluster ? u"SELECT Count(*) FROM information_schema.PROCESSLIST WHERE DB = "
                              u"DATABASE() AND ID <> CONNECTION_ID()"
                            : u"SELECT Count(*) FROM pg_stat_activity WHERE datname = current_database() AND pid <> "
                              u"pg_backend_pid() AND backend_type = 'client backend'");
        } while (left != u"0" && Clock::now() < end);
        if (left != u"0") result.faults.push_back(ToUtf8(left) + " connections are left open");
    }
    int Progress() const {
        int sum = 0;
        for (const auto& author : authors) sum += author->rounds + author->saves + author->refused;
        return sum;
    }

    const bool isOnCluster;
    test::OwnServer server;
    test::TestDatabase database;
    std::vector<std::unique_ptr<Author>> authors;
    Clock::time_point lastProgress = Clock::now(), begin, lastReport;
    double planned = 0; // minutes; 0: no reports
    size_t heap = 0, files = 0;
};

} // namespace

Result Run(int rounds, double minutes, bool isOnCluster) {
    Soak soak(isOnCluster);
    soak.Stretch([&] { soak.WaitForRounds(2); });
    soak.Measure();
    soak.ReportFor(minutes);
    soak.Stretch([&] {
        const auto end = Clock::now() + std::chrono::duration<double, std::ratio<60>>(minutes / 2);
        if (minutes <= 0) soak.WaitForRounds(rounds);
        while (Clock::now() < end && !soak.HasFailed()) soak.WaitForRounds(1);
    });
    soak.Compare();
    soak.Verify();
    return soak.result;
}

} // namespace dax::soak
