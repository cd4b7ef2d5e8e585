// Servers: what cannot be opened, driver options of a host, and servers that do not answer, at once, after
// the login or during a call: no call waits longer than allowed, and nothing is left open.
#include "base/Error.h"
#include "data/Recordset.h"
#include "data/modDB.h"
#include "support/SilentServer.h"
#include "support/TestDatabases.h"

#include <chrono>
#include <future>

namespace dax {
namespace {

using test::Failure;
using test::FailureOf;
using test::FailureOfOpen;

class ServerTest : public test::EngineTest {
protected:
    const bool isMariaDB = GetParam() == Engine::MariaDB;
};
INSTANTIATE_TEST_SUITE_P(Engines, ServerTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), test::EngineName);

TEST_P(ServerTest, WhatCannotBeOpenedSaysWhy) {
    const struct {
        Text more;
        int32_t number;
        std::string words;
    } cases[] = {
        {u"PWD=wrong", ErrorNumbers::Authentication, isMariaDB ? "Access denied" : "authentication failed"},
        {u"Database=dax_no_such_catalog", ErrorNumbers::Unspecified, "dax_no_such_catalog"},
        {u"Port=1", ErrorNumbers::Unspecified, "127.0.0.1"}, // nothing listens there
        {u"Driver={MariaDB Of Nowhere}", ErrorNumbers::Unspecified,
         "driver \"MariaDB Of Nowhere\" is not installed. On Debian and Ubuntu install the package odbc-mariadb."},
    };
    for (const auto& [more, number, words] : cases) {
        const Failure failure = FailureOfOpen(database->ConnectionString() + u";" + more);
        EXPECT_EQ(failure.Number(), number) << failure.what();
        EXPECT_TRUE(failure.Mentions(words)) << failure.what();
    }
    EXPECT_TRUE(FailureOfOpen(u"DSN=dax_no_such_source").Mentions("not set up"));
}

#ifdef __linux__

// A library with an unknown name: the server reports what it is, and its driver's required options are set.
TEST_P(ServerTest, ADriverByAnotherNameIsServedAsItsServerNeeds) {
    std::ifstream maps("/proc/self/maps");
    std::string library, line;
    while (library.empty() && std::getline(maps, line))
        if (line.ends_with(isMariaDB ? "libmaodbc.so" : "psqlodbcw.so")) library = line.substr(line.find('/'));
    const test::TempFolder folder;
    std::filesystem::create_symlink(library, folder.Path() / "theirs.so");
    Connection connection;
    connection.Open(database->ConnectionString() + u";Driver=" + folder.File(u"theirs.so"));
    EXPECT_EQ(connection.Kind(), GetParam());
    const Text both[] = {u"CREATE TABLE t (a varchar(9))", u"INSERT INTO t VALUES ('a\\')"};
    connection.ExecuteAll(both); // which is sent in one call
    EXPECT_EQ(database->Query(u"SELECT a FROM t"), u"a\\");
}

#endif

TEST_P(ServerTest, NamesAndPasswordsOfEveryKind) {
    const std::pair<Text, bool> cases[] = {
        // With the name of the test's catalog for the '#'; false: PostgreSQL's driver takes it as a password only.
        {u"my #", true},     {u"a@#,b", true},    {u"+%41#50%", true}, {u"#=x y", true},
        {u"[#]!*?()", true}, {u"o'#\"\\", true},  {u"ü漢#", true},     {u"{#}", true},
        {u"#}}{", true},     {u"#;PWD=x", false}, {u"{#", false},
    };
    const auto marked = [](Text value, const Text& open, char16_t close) {
        for (size_t at = value.find(close); at != Text::npos; at = value.find(close, at + 2))
            value.insert(at, 1, close);
        return open + value + close;
    };
    for (const auto& [form, isName] : cases) {
        const bool isForAll = isName || isMariaDB;
        const Text value = Text(form).replace(form.find(u'#'), 1, database->Name());
        const Text& login = isForAll ? value : database->Name();
        const Text text = marked(value, u"'", u'\''),
                   name = isMariaDB ? marked(value, u"`", u'`') : marked(value, u"\"", u'"');
        const Text account = isMariaDB ? marked(login, u"'", u'\'') + u"@'%'" : marked(login, u"\"", u'"');
        SCOPED_TRACE(ToUtf8(value));
        database->Run({u"CREATE USER " + account + (isMariaDB ? u" IDENTIFIED BY " : u" PASSWORD ") + text});
        if (isForAll) database->Run({u"CREATE DATABASE " + name});
        if (isMariaDB) database->Run({u"GRANT ALL ON *.* TO " + account});
        for (const auto& [open, close] : {std::pair<Text, char16_t>{u"{", u'}'}, {u"'", u'\''}, {u"\"", u'"'}}) {
            const Text given = marked(value, open, close);
            Recordset who;
            who.Open(u"SELECT " + Text(isMariaDB ? u"database()" : u"current_database()") + u" = " + text,
                     database->ConnectionString() + u";UID=" + marked(login, open, close) + u";PWD=" + given +
                         (isForAll ? u";Database=" + given : Text()));
            EXPECT_EQ(who.FieldText(0), isForAll ? u"1" : u"0");
        }
        if (isForAll) database->Run({u"DROP DATABASE " + name});
        database->Run({u"DROP USER " + account});
    }
}

TEST_P(ServerTest, OptionsOfTheHostDoNoHarm) {
    const std::vector<Text> options =
        isMariaDB ? std::vector<Text>{u"CHARSET=latin1;OPTION=3",
                                      u"charset=utf8;OPTION=0",
                                      u"OPTION=4457984;AUTO_RECONNECT=1", // columns with tables, no transactions
                                      u"INITSTMT={SET NAMES latin1}",
                                      u"INITSTMT={SET sql_mode = ''}",
                                      u"INITSTMT={SET autocommit = 0, sql_select_limit = 1}"}
                  : std::vector<Text>{u"Protocol=7.4-1", u"A1=7.4-0;LFConversion=1;AB=8", u"CX=1c00000001;C5=1",
                                      u"ConnSettings={SET standard_conforming_strings = off}",
                                      u"ConnSettings={SET client_encoding = 'latin1'; SET DateStyle = 'SQL, DMY'}"};
    const Text title = u"\\'; DROP TABLE t; --\n\r\nü漢😀", plain = database->ConnectionString();
    const auto insert = [](int id, const Text& text) {
        return u"INSERT INTO t VALUES (" + ToText(id) + u", " + modDB::QuoteSQLString(text) +
               u", '2024/02/03 4:05:06')";
    };
    for (const Text& option : options) {
        SCOPED_TRACE(ToUtf8(option));
        database->Run(
            {u"DROP TABLE IF EXISTS t", u"CREATE TABLE t (id integer PRIMARY KEY, title varchar(40), made " +
                                            Text(isMariaDB ? u"datetime) CHARACTER SET utf8mb4" : u"timestamp)")});
        Connection connection;
        connection.Open(plain + u";" + option);
        connection.BeginTrans();
        connection.Execute(insert(1, title));
        EXPECT_THROW(connection.Execute(insert(2, Text(50, u'x'))), Error); // neither cut nor the end of it all
        const Text more[] = {insert(3, title), insert(4, u"")};
        connection.ExecuteAll(more);
        connection.CommitTrans();
        EXPECT_EQ(connection.Execute(u"UPDATE t SET title = title WHERE id = 1"), 1);
        connection.Execute(insert(5, u""));
        connection.Close();
        for (const Text& reader : {plain, option + u";" + plain}) {
            Recordset rows;
            rows.Open(u"SELECT title, made FROM t ORDER BY id", reader);
            EXPECT_EQ(std::get<Text>(rows.Field(u"title")), title);
            EXPECT_EQ(std::get<DateTime>(rows.Field(u"made")), (DateTime{2024, 2, 3, 4, 5, 6, 0}));
            for (int row = 0; row < 4; ++row, rows.MoveNext()) EXPECT_FALSE(rows.Eof());
            EXPECT_TRUE(rows.Eof());
        }
    }
    if (isMariaDB) return;
    Connection reader; // lets no setting through as such
    database->Run({u"ALTER DATABASE " + database->Name() + u" SET standard_conforming_strings = off"});
    reader.Open(plain + u";ReadOnly=1");
    EXPECT_TRUE(FailureOf([&] { reader.Execute(u"DELETE FROM t"); }).Mentions("readonly"));
    // A server that does not read a backslash as set: its length is another here.
    database->Run({u"CREATE FUNCTION length(text) RETURNS integer LANGUAGE sql AS 'SELECT 1'"});
    EXPECT_TRUE(FailureOfOpen(plain + u";ConnSettings={SET search_path = public, pg_catalog}").Mentions("backslash"));
}

#ifdef __linux__

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class UnresponsiveServerTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        if (!database) return;
        database->Run({u"CREATE TABLE t (a integer)", u"INSERT INTO t VALUES (1)"});
        before = Count();
    }
    // All abandoned threads end when their server does.
    void TearDown() override {
        if (!database) return;
        EXPECT_TRUE(IsSoon([&] { return Count() == before; })) << "threads and open files";
    }
    template <typename Condition>
    static bool IsSoon(Condition condition) {
        const auto end = Clock::now() + std::chrono::seconds(30);
        while (!condition() && Clock::now() < end) std::this_thread::sleep_for(milliseconds(5));
        return condition();
    }
    static std::pair<long, long> Count() {
        const std::filesystem::directory_iterator threads("/proc/self/task"), files("/proc/self/fd");
        return {std::distance(begin(threads), end(threads)), std::distance(begin(files), end(files))};
    }
    // The limit ends the action, and the error names the server and the limit.
    template <typename Action>
    static Failure ExpectTimeout(Action action, const test::SilentServer& server, const std::string& seconds = "1") {
        const Failure error = FailureOf(action);
        const double limit = std::stod(seconds);
        EXPECT_TRUE(error.seconds > limit - 0.1 && error.seconds < limit + 1.5) << error.seconds;
        EXPECT_TRUE(error.Number() == ErrorNumbers::Timeout &&
                    error.Mentions("'127.0.0.1:" + server.Port() + "' did not answer within " + seconds +
                                   (limit > 1 ? " seconds." : " second.")))
            << error.what();
        return error;
    }
    std::pair<long, long> before;
};
INSTANTIATE_TEST_SUITE_P(Engines, UnresponsiveServerTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         test::EngineName);

TEST_P(UnresponsiveServerTest, WhileOpening) {
    using Kind = test::SilentServer::Kind;
    for (const auto& [kind, seconds] : {std::pair(Kind::Accepts, "1"), {Kind::Full, "2"}}) {
        const test::SilentServer server(kind);
        const Text limit = u"Connect Timeout=" + FromUtf8(seconds);
        Connection connection;
        ExpectTimeout([&] { connection.Open(server.ConnectionThrough(database->ConnectionString(), limit)); }, server,
                      seconds);
        EXPECT_FALSE(connection.IsOpen());
        EXPECT_EQ(database->Query(u"SELECT a FROM t"), u"1") << "the next one works beside it";
    }
    // A login that is never finished.
    test::SilentServer proxy(database->ConnectionString());
    proxy.StopAnsweringAt(ToUtf8(database->Name()), true);
    ExpectTimeout(
        [&] { Connection().Open(proxy.ConnectionThrough(database->ConnectionString(), u"Connect Timeout=1")); }, proxy);
}

TEST_P(UnresponsiveServerTest, AfterTheLogin) {
    const Text insert = u"INSERT INTO t VALUES (2)";
    const std::vector<Text> many(250, insert);
    const auto begin = [&](Connection& connection) {
        connection.BeginTrans();
        connection.Execute(insert);
    };
    const struct {
        const char *what, *effect;
        bool isBegun; // before the server stops answering
        std::function<void(Connection&)> action;
    } cases[] = {
        {"execute", "load again to see", false, [&](Connection& connection) { connection.Execute(insert); }},
        {"a batch", "not committed is lost", true, [&](Connection& connection) { connection.ExecuteAll(many); }},
        {"reading", "was closed. Check", false,
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
        connection.Open(proxy.ConnectionThrough(database->ConnectionString(), u"Command Timeout=1"));
        if (c.isBegun) begin(connection);
        proxy.StopAnswering();
        const Failure error = ExpectTimeout([&] { c.action(connection); }, proxy);
        EXPECT_TRUE(error.Mentions(c.effect)) << error.what();
        EXPECT_FALSE(connection.InTransaction());
        const Failure later = FailureOf([&] { connection.Execute(insert); });
        EXPECT_TRUE(later.Number() == ErrorNumbers::Timeout && later.Mentions("was closed") && later.seconds < 0.3)
            << later.what();
        connection.Close();
        EXPECT_EQ(database->Query(u"SELECT Count(*) FROM t"), u"1") << "nothing of it was stored";
    }
    // Closing gives the server the time of one call, and reports nothing.
    test::SilentServer proxy(database->ConnectionString());
    Connection connection;
    connection.Open(proxy.ConnectionThrough(database->ConnectionString(), u"Command Timeout=1"));
    begin(connection);
    proxy.StopAnswering();
    const auto start = Clock::now();
    connection.Close();
    EXPECT_LE(Clock::now() - start, milliseconds(2500));
}

TEST_P(UnresponsiveServerTest, WhileCancelling) {
    const Text wait = isMariaDB ? u"SELECT SLEEP(60)" : u"SELECT pg_sleep(60)";
    const Text waiting = isMariaDB
                             ? u"SELECT Count(*) FROM information_schema.processlist WHERE info LIKE '%SLEEP(60%' "
                               u"AND id <> connection_id() AND db = database()"
                             : u"SELECT Count(*) FROM pg_stat_activity WHERE query LIKE '%sleep(60%' AND pid <> "
                               u"pg_backend_pid() AND state = 'active' AND datname = current_database()";
    const auto until = [&](const Text& count) {
        EXPECT_TRUE(IsSoon([&] { return database->Query(waiting) == count; })) << ToUtf8(count);
    };
    test::SilentServer proxy(database->ConnectionString());
    // On a server that is only slow the statement is cancelled.
    Connection slow;
    slow.Open(proxy.ConnectionThrough(database->ConnectionString(), u"Command Timeout=1"));
    ExpectTimeout([&] { slow.Execute(wait); }, proxy);
    until(u"0");
    for (const bool isSilent : {false, true}) {
        Connection connection;
        connection.Open(proxy.ConnectionThrough(database->ConnectionString(), u"Command Timeout=0;Connect Timeout=1"));
        auto done = std::async(std::launch::async, [&] { connection.Execute(wait); });
        until(u"1");
        if (isSilent) proxy.StopAnswering();
        connection.Cancel();
        if (isSilent) {
            EXPECT_TRUE(FailureOf([&] { done.get(); }).Mentions("did not answer within"));
            continue;
        }
        try {
            done.get(); // MariaDB's sleep ends without an error
        } catch (const Error&) {
        }
        EXPECT_NO_THROW(connection.Execute(u"INSERT INTO t VALUES (2)")) << "goes on as before";
    }
}

#endif

} // namespace
} // namespace dax
