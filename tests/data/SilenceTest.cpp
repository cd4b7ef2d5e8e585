// Servers that do not answer: at once, after the login, while something is under way. Nobody waits longer than allowed.
#ifdef __linux__

#include "base/Error.h"
#include "data/Recordset.h"
#include "support/SilentServer.h"
#include "support/TestDatabases.h"

#include <chrono>
#include <future>

namespace dax {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The error of an action, which ends within `least` to `most` seconds.
template <typename Action>
test::Failure Ended(Action action, double least, double most) {
    const test::Failure failure = test::FailureOf(action);
    EXPECT_GE(failure.seconds, least) << failure.what();
    EXPECT_LE(failure.seconds, most) << failure.what();
    return failure;
}

class SilenceTest : public test::EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        database->Run({u"CREATE TABLE t (a integer)", u"INSERT INTO t VALUES (1)"});
        before = Count();
    }
    // All that was left to itself ends when its server does.
    void TearDown() override {
        if (!database) return;
        const auto end = Clock::now() + std::chrono::seconds(30);
        while (Count() != before && Clock::now() < end) std::this_thread::sleep_for(milliseconds(5));
        EXPECT_EQ(Count(), before) << "threads and open files";
    }
    static std::pair<long, long> Count() {
        const std::filesystem::directory_iterator threads("/proc/self/task"), files("/proc/self/fd");
        return {std::distance(begin(threads), end(threads)), std::distance(begin(files), end(files))};
    }
    static void ExpectTimeout(const test::Failure& error, const test::SilentServer& server) {
        EXPECT_EQ(error.Number(), ErrorNumbers::Timeout) << error.what();
        EXPECT_TRUE(error.Tells("'127.0.0.1:" + server.Port() + "' did not answer within 1 second.")) << error.what();
    }
    std::pair<long, long> before;
};
INSTANTIATE_TEST_SUITE_P(Engines, SilenceTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         test::EngineName);

TEST_P(SilenceTest, WhileOpening) {
    using Kind = test::SilentServer::Kind;
    for (const Kind kind : {Kind::Accepts, Kind::Full}) {
        const test::SilentServer server(kind);
        for (const Text keyword : {u"Connect Timeout=1", u"connection timeout=1"}) {
            Connection connection;
            ExpectTimeout(
                Ended([&] { connection.Open(server.ThroughIt(database->ConnectionString(), keyword)); }, 0.9, 2.5),
                server);
            EXPECT_FALSE(connection.IsOpen());
            EXPECT_EQ(database->Ask(u"SELECT a FROM t"), u"1") << "the next one works beside it";
        }
    }
    // A login that is never finished.
    test::SilentServer proxy(database->ConnectionString());
    proxy.FallSilentAt(ToUtf8(database->Name()), true);
    Connection connection;
    ExpectTimeout(
        Ended([&] { connection.Open(proxy.ThroughIt(database->ConnectionString(), u"Connect Timeout=1")); }, 0.9, 2.5),
        proxy);
}

TEST_P(SilenceTest, AfterTheLogin) {
    const Text insert = u"INSERT INTO t VALUES (2)";
    const std::vector<Text> many(250, insert);
    const auto begin = [&](Connection& connection) {
        connection.BeginTrans();
        connection.Execute(insert);
    };
    const struct {
        const char *what, *consequence;
        bool isBegun; // before the server falls silent
        std::function<void(Connection&)> action;
    } cases[] = {
        {"execute", "load again to see", false, [&](Connection& connection) { connection.Execute(insert); }},
        {"a batch", "not committed is lost", true, [&](Connection& connection) { connection.ExecuteAll(many); }},
        {"reading", "given up. Check", false,
         [](Connection& connection) { Recordset().Open(u"SELECT a FROM t", connection); }},
        {"beginning", "", false, begin},
        {"committing", "load again to see", true, [](Connection& connection) { connection.CommitTrans(); }},
        {"rolling back", "not committed is lost", true, [](Connection& connection) { connection.RollbackTrans(); }},
        {"asking for a key", "", false,
         [](Connection& connection) {
             Recordset table;
             table.Open(u"t", connection, adOpenKeyset, adLockOptimistic, adCmdTable);
             table.SetField(u"a", int64_t{7});
             table.Update();
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        test::SilentServer proxy(database->ConnectionString());
        Connection connection;
        connection.Open(proxy.ThroughIt(database->ConnectionString(), u"Command Timeout=1"));
        if (c.isBegun) begin(connection);
        proxy.FallSilent();
        const test::Failure error = Ended([&] { c.action(connection); }, 0.9, 2.5);
        ExpectTimeout(error, proxy);
        EXPECT_TRUE(error.Tells(c.consequence)) << error.what();
        EXPECT_FALSE(connection.InTransaction());
        const test::Failure later = Ended([&] { connection.Execute(insert); }, 0, 0.3);
        EXPECT_TRUE(later.Number() == ErrorNumbers::Timeout && later.Tells("given up")) << later.what();
        connection.Close();
        EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM t"), u"1") << "nothing of it was stored";
    }
    // Closing gives the server the time of one call, and tells nothing.
    test::SilentServer proxy(database->ConnectionString());
    Connection connection;
    connection.Open(proxy.ThroughIt(database->ConnectionString(), u"Command Timeout=1"));
    begin(connection);
    proxy.FallSilent();
    const auto start = Clock::now();
    connection.Close();
    EXPECT_LE(Clock::now() - start, milliseconds(2500));
}

TEST_P(SilenceTest, WhileCancelling) {
    const bool isMariaDB = GetParam() == Engine::MariaDB;
    const Text wait = isMariaDB ? u"SELECT SLEEP(60)" : u"SELECT pg_sleep(60)";
    const Text waiting = isMariaDB
                             ? u"SELECT Count(*) FROM information_schema.processlist WHERE info LIKE '%SLEEP(60%' "
                               u"AND id <> connection_id() AND db = database()"
                             : u"SELECT Count(*) FROM pg_stat_activity WHERE query LIKE '%sleep(60%' AND pid <> "
                               u"pg_backend_pid() AND state = 'active' AND datname = current_database()";
    const auto until = [&](const Text& count) {
        const auto end = Clock::now() + std::chrono::seconds(30);
        while (database->Ask(waiting) != count && Clock::now() < end) std::this_thread::sleep_for(milliseconds(5));
        EXPECT_EQ(database->Ask(waiting), count);
    };
    test::SilentServer proxy(database->ConnectionString());
    // A server that is only slow does not go on for nothing.
    Connection slow;
    slow.Open(proxy.ThroughIt(database->ConnectionString(), u"Command Timeout=1"));
    ExpectTimeout(Ended([&] { slow.Execute(wait); }, 0.9, 2.5), proxy);
    until(u"0");
    const Text limits = u"Command Timeout=0;Connect Timeout=1";
    for (const bool isSilent : {false, true}) {
        Connection connection;
        connection.Open(proxy.ThroughIt(database->ConnectionString(), limits));
        auto done = std::async(std::launch::async, [&] { connection.Execute(wait); });
        until(u"1");
        if (isSilent) proxy.FallSilent();
        connection.Cancel();
        if (isSilent) {
            EXPECT_TRUE(Ended([&] { done.get(); }, 0, 30).Tells("did not answer within"));
            continue;
        }
        try {
            done.get(); // MariaDB's sleep ends without an error
        } catch (const Error&) {
        }
        EXPECT_NO_THROW(connection.Execute(u"INSERT INTO t VALUES (2)")) << "goes on as before";
    }
}

} // namespace

} // namespace dax

#endif
