// What only SQLite files have: paths of every kind, what is no file, waits for other programs, statements that repeat.
#include "base/Error.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/sqlite/StatementShape.h"
#include "support/TestDatabases.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace dax {
namespace {

namespace fs = std::filesystem;
using test::Failure;
using test::FailureOf;
using test::FailureOfOpen;

class SQLiteTest : public ::testing::Test {
protected:
    SQLiteTest() { connection.Open(database.ConnectionString()); }
    static void Expect(const Failure& failure, int32_t number, const std::string& words, double most = 4) {
        EXPECT_TRUE(failure.Number() == number && failure.Mentions(words)) << failure.what();
        EXPECT_LT(failure.seconds, most) << failure.what();
    }
    void ExpectRefused(const Text& statement, int32_t number, const std::string& words) {
        Expect(FailureOf([&] { connection.Execute(statement); }), number, words);
    }
    const test::TestDatabase database{Engine::SQLite};
    Connection connection;
};

TEST_F(SQLiteTest, PathsOfEveryKindOpen) {
    const test::TempFolder folder;
    std::vector<Text> names = {u"kurs ü 漢😀.db", u"a=b.db", u"a{b}.db", u"100% 'x'.db",          u"#[x]@!.db",
                               u"a;b.db",        u"%41.db", u"-.db",    Text(200, u'l') + u".db"};
#ifndef _WIN32
    names.insert(names.end(),
                 {u"a?mode=ro.db", u"file:x.db", u"file:x.db?mode=memory", u":memory:", u" blank ", u"\\x.db"});
#endif
    fs::create_directories(folder.Path() / std::string(120, 'd'));
    names.push_back(Text(120, u'd') + static_cast<char16_t>(fs::path::preferred_separator) + Text(100, u'n') + u"=.db");
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    for (const Text& name : names) {
        const Text path = folder.Write(name, "");
        connection.Close();
        connection.Open(path);
        connection.Execute(u"CREATE TABLE t (a integer)");
        EXPECT_GT(fs::file_size(fs::path(path)), 0u) << "another file was opened than " << ToUtf8(path);
        for (const Text& string :
             {name, u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\"" + path + u"\"",
              u"Driver=SQLite3;Database={" + (name == u"a{b}.db" ? Text(u"a{b}}.db") : name) + u"}"}) {
            EXPECT_NO_THROW(Recordset().Open(u"SELECT a FROM t", string)) << ToUtf8(string);
        }
    }
    fs::current_path(before);
    connection.Close();
    ExpectRefused(u"SELECT 1", ErrorNumbers::Unspecified, "The connection is closed");
    for (const Text& path : {Text(u"\\\\no-such-server\\share\\course.db"), folder.File(Text(300, u'x')),
                             folder.File(Text(u"a") + u'\0' + u"b")})
        EXPECT_GT(FailureOfOpen(path).Description().size(), path.size()) << ToUtf8(path);
}

TEST_F(SQLiteTest, WhatIsNoDatabaseFileIsRefusedAtOnce) {
    const test::TempFolder folder;
    std::vector<std::pair<Text, std::string>> cases = {
        {folder.File(u""), "is a folder"},
        {folder.File(u"missing ü.db"), "does not exist"},
        {folder.Write(u"text.db", std::string(5000, 'x')), "is not a database"},
        {folder.Write(u"a.db", std::string("\0\1\0\0Standard Jet DB", 19) + std::string(4000, '\0')), "Access"},
    };
#ifdef _WIN32
    for (const Text name : {u"NUL", u"\\\\.\\pipe\\dax", u"CON"}) cases.emplace_back(name, "not a database file");
#else
    ASSERT_EQ(mkfifo((folder.Path() / "fifo").c_str(), 0600), 0);
    for (const Text& path : {folder.File(u"fifo"), Text(u"/dev/null"), Text(u"/dev/zero")})
        cases.emplace_back(path, "not a database file");
#endif
    for (const auto& [path, words] : cases)
        for (const Text prefix : {u"", u"Driver=SQLite3;Database=", u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source="}) {
            const Failure refusal = FailureOfOpen(prefix + path);
            EXPECT_TRUE(refusal.Mentions(words) || (words[0] == 'n' && refusal.Mentions("does not exist")))
                << ToUtf8(prefix + path) << ": " << refusal.what();
            EXPECT_LT(refusal.seconds, 1) << ToUtf8(path);
        }
    EXPECT_FALSE(fs::exists(folder.Path() / u8"missing ü.db")) << "must not be created";
}

TEST_F(SQLiteTest, WaitsForOthersEndInTime) {
    database.Run({u"PRAGMA journal_mode = WAL", u"CREATE TABLE t (a integer)", u"INSERT INTO t VALUES (1)"});
    const auto expectCalls = [](const Failure& refusal, double least, double most) {
        Expect(refusal, ErrorNumbers::Timeout, "locked by another", most);
        EXPECT_GT(refusal.seconds, least);
    };
    connection.Execute(u"BEGIN IMMEDIATE");
    Connection other;
    other.Open(u"Driver=SQLite3;Timeout=300;Database=" + database.Name());
    expectCalls(FailureOf([&] { other.Execute(u"INSERT INTO t VALUES (3)"); }), 0.2, 1.8);
    other.Close();
    connection.Close(); // takes back what was begun
#ifndef _WIN32
    // A program that stopped while opening the file in WAL mode: the engine itself would wait for ten seconds.
    const pid_t stopped = fork();
    ASSERT_GE(stopped, 0);
    if (stopped == 0) {
        const int shared = open((ToUtf8(database.Name()) + "-shm").c_str(), O_RDWR | O_CREAT, 0600);
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_start = 128; // the byte that is locked while the shared memory is set up
        range.l_len = 1;
        if (shared < 0 || fcntl(shared, F_SETLK, &range) != 0) _exit(1);
        raise(SIGSTOP);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(stopped, &status, WUNTRACED), stopped);
    ASSERT_TRUE(WIFSTOPPED(status));
    expectCalls(FailureOfOpen(database.ConnectionString()), 1.8, 4);
    kill(stopped, SIGKILL);
    waitpid(stopped, &status, 0);
#endif
    EXPECT_EQ(database.Query(u"SELECT Count(*) FROM t"), u"1");
}

TEST_F(SQLiteTest, WorkEndsInTimeOrWhenCancelled) {
    const Text endless = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT max(i) FROM n";
    Connection limited;
    limited.Open(u"Provider=Microsoft.Jet.OLEDB.4.0;Command Timeout=1;Data Source=" + database.Name());
    Recordset idle;
    idle.Open(u"SELECT 1", limited);
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        idle.Cancel(); // ends nothing but its own work
    });
    const Failure late = FailureOf([&] { limited.Execute(endless); });
    other.join();
    Expect(late, ErrorNumbers::Timeout,
           "'" + ToUtf8(database.Name()) + "' was stopped because it took longer than 1 second");
    EXPECT_GT(late.seconds, 0.9);
    EXPECT_EQ(limited.Execute(u"SELECT 1"), 0); // has all its time
    connection.Close();
    connection.Open(u"Driver=SQLite3;Command Timeout=0;Database=" + database.Name()); // no limit
    std::atomic<bool> isDone = false;
    std::thread canceller([&] {
        while (!isDone) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            connection.Cancel();
        }
    });
    const Failure cancelled = FailureOf([&] { connection.Execute(endless); });
    isDone = true;
    canceller.join();
    Expect(cancelled, ErrorNumbers::Unspecified, "cancelled", 15);
    EXPECT_EQ(connection.Execute(u"SELECT 1"), 0);
}

TEST_F(SQLiteTest, ValuesAreReadAsTheirColumnsMean) {
    database.Run({u"CREATE TABLE v (b BOOLEAN, i INTEGER, d DATETIME, r REAL, t TEXT)",
                  u"INSERT INTO v VALUES (1, '12', '2024-05-06', 0.5, 'x'), (0, 'x', 'y', 'z', X'0AF9'), "
                  u"('t', 1.5, NULL, 7, ''), ('f', 1e300, '', 1, 'f'), ('10', -3, '2024-13-01', 2.5, 0)"});
    const std::vector<std::vector<Value>> expected = {{true, int64_t{12}, DateTime{2024, 5, 6}, 0.5, Text(u"x")},
                                                      {false, Text(u"x"), Text(u"y"), Text(u"z"), Text(u"X'0AF9'")},
                                                      {true, 1.5, Value(), 7.0, Text(u"")},
                                                      {false, 1e300, Text(u""), 1.0, Text(u"f")},
                                                      {Text(u"10"), int64_t{-3}, Text(u"2024-13-01"), 2.5, Text(u"0")}};
    for (const CursorLocations location : {adUseServer, adUseClient}) {
        Recordset rows;
        rows.SetCursorLocation(location);
        rows.Open(u"SELECT b, i, d, r, t FROM v", database.ConnectionString());
        for (const std::vector<Value>& row : expected) {
            for (size_t column = 0; column < row.size(); ++column)
                EXPECT_EQ(rows.Field(column), row[column]) << ToUtf8(rows.FieldText(column));
            rows.MoveNext();
        }
        EXPECT_TRUE(rows.Eof());
    }
    Recordset rows; // whose columns have no type: the first value decides
    rows.Open(u"SELECT 1 + 1, 0.5, NULL UNION ALL SELECT 'y', 2, 4", database.ConnectionString());
    EXPECT_TRUE(rows.Field(0) == Value(int64_t{2}) && rows.Field(1) == Value(0.5) && IsNull(rows.Field(2)));
    rows.MoveNext();
    EXPECT_TRUE(rows.Field(0) == Value(Text(u"y")) && rows.Field(1) == Value(2.0) && rows.FieldText(2) == u"4");
}

TEST_F(SQLiteTest, ErrorsSayWhatHasHappenedToTheFile) {
    connection.Execute(u"CREATE TABLE t (a text)");
    connection.Execute(u"INSERT INTO t VALUES (1), (2)");
    Recordset rows;
    rows.Open(u"SELECT a FROM t", connection);
    ExpectRefused(u"DROP TABLE t", ErrorNumbers::Timeout, "still being read");
    rows.Close();
    connection.Execute(u"PRAGMA max_page_count = 3");
    ExpectRefused(u"INSERT INTO t VALUES (zeroblob(100000))", ErrorNumbers::Unspecified, "is full");
    ExpectRefused(u"INSERT INTO t VALUES (zeroblob(600000000))", ErrorNumbers::DataOverflow, "too big");
    ExpectRefused(u"SELECT 1; SELECT 2", ErrorNumbers::Unspecified, "Only one SQL statement");
    for (const Text statement : {u"SELECT 1; \r\n", u"-- nothing"}) EXPECT_EQ(connection.Execute(statement), 0);
#ifndef _WIN32
    fs::rename(database.Name(), database.Name() + u".moved");
    ExpectRefused(u"DELETE FROM t", ErrorNumbers::Permission, "was moved");
#endif
}

// What is compiled once for many values ("|": what may not be, since a number in it may be that of a column), and that
// the same statements do the same once each on connections of their own and all in a row.
TEST_F(SQLiteTest, StatementsThatRepeatDoWhatEachDoes) {
    const std::pair<Text, Text> cases[] = {
        {u"INSERT INTO t VALUES (#, 'it''s $''', -23, '', 5, \"b\", 7)",
         u"INSERT INTO t VALUES (?, ?, -?, ?, ?, \"b\", ?)"},
        {u"update t SET \"a1\" = #.5, [a2]=#, `a3` = '$' WHERE a >= 6 - 7/8",
         u"update t SET \"a1\" = 1.5, [a2]=?, `a3` = ? WHERE a >= ? - ?/?"},
        {u"UPDATE t SET b = b || '$', c = # WHERE a = # OR a IN (SELECT a FROM t ORDER BY 1 LIMIT #)",
         u"UPDATE t SET b = b || ?, c = ? WHERE a = ? OR a IN (SELECT a FROM t ORDER BY ? LIMIT ?)|"},
        {u"DELETE FROM t WHERE b = '$' OR a = # + 1000000000000000000#",
         u"DELETE FROM t WHERE b = ? OR a = ? + 10000000000000000001"},
        {u" DELETE FROM t WHERE a = 999999999999999999 OR a = #", u" DELETE FROM t WHERE a = ? OR a = ?"},
        {u"INSERT INTO t (a, b) VALUES (#, CAST(# AS varchar(5#)))",
         u"INSERT INTO t (a, b) VALUES (?, CAST(? AS varchar(?)))"},
        {u"INSERT OR REPLACE INTO t (a, b) VALUES (7, '$') RETURNING a",
         u"INSERT OR REPLACE INTO t (a, b) VALUES (?, ?) RETURNING a"},
        {u"UPDATE 't' SET 'b' = 'q#'  WHERE 'a' = '#'", u"UPDATE ? SET ? = ?  WHERE ? = ?"},
        {u"UPDATE t SET d = x'0#', c = 0x1# WHERE a = #", u""},
        {u"DELETE FROM t WHERE a = 1e5 OR a = .5 OR a = 0x1f OR a = \u00E41", u""},
        {u"INSERT INTO missing VALUES (#)", u"INSERT INTO missing VALUES (?)"},
        {u"DELETE FROM by1 WHERE xBY = 1", u"DELETE FROM by1 WHERE xBY = ?"},
        {u"DELETE FROM t WHERE by\n= 1", u"DELETE FROM t WHERE by\n= ?|"},
        {u"UPDATE t SET \"\" = 1", u"UPDATE t SET \"\" = ?"},
        {u"DELETE FROM t WHERE a = #; DELETE FROM t", u""},
        {u"DELETE FROM t", u""},
        {u"SELECT 1", u""},
        {u"UPDATE t SET a = 'b'c", u""},
        {u"UPDATE t SET a = 'b", u""},
        {u"UPDATE t SET a = 'b''", u""},
        {u"UPDATE t SET \"a = 1", u""},
        {u"UPDATE t SET [a = 1", u""},
        {u"UPDATE t SET a = 1 -- b", u""},
        {u"UPDATE t SET a = 1 /* b */", u""},
    };
    const auto made = [](Text statement, const Text& digit) {
        for (size_t at; (at = statement.find_first_of(u"#$")) != Text::npos;)
            statement.replace(at, 1, statement[at] == u'#' ? digit : digit + u"漢" + digit);
        return statement;
    };
    StatementShape shape;
    for (const auto& [form, expected] : cases) {
        const Text words = shape.Read(made(form, u"1")) ? shape.Template() + (shape.MayRepeat() ? u"" : u"|") : Text();
        EXPECT_EQ(ToUtf8(words), ToUtf8(expected)) << ToUtf8(form);
    }
    for (const char16_t mark : TextView(u"?:@$#;\0", 7))
        EXPECT_FALSE(shape.Read(Text(u"UPDATE t SET a = 1 ") + mark)) << ToUtf8(Text(1, mark));
    const auto run = [&](bool isInARow) {
        std::string results;
        for (const auto& [form, expected] : cases) {
            database.Run({u"DROP TABLE IF EXISTS t", u"CREATE TABLE t (a INTEGER, b TEXT, c NUMERIC, d, a1, a2, a3)",
                          u"INSERT INTO t (a, b) VALUES (1, 'one'), (2, 'two'), (3, '3')"});
            for (const Text digit : {u"1", u"2", u"3", u"1"}) {
                Connection own;
                own.Open(database.ConnectionString());
                try {
                    results += std::to_string((isInARow ? connection : own).Execute(made(form, digit))) + "\n";
                } catch (const Error& error) {
                    results += error.what();
                }
            }
            results += ToUtf8(
                database.Query(u"SELECT group_concat(quote(a) || quote(b) || quote(c) || quote(d) || quote(a1) || "
                               u"quote(a2) || quote(a3), ' ') FROM t"));
        }
        return results;
    };
    EXPECT_EQ(run(true), run(false));
}

TEST_F(SQLiteTest, ZerosInTextsErrorsInTransactionsAndStatementsForbidden) {
    const Text zero = Text(u"a") + u'\0' + u"b'";
    connection.Execute(u"CREATE TABLE t (a text)");
    for (int i = 0; i < 3; ++i) connection.Execute(Text(u"INSERT INTO t VALUES ('a") + u'\0' + u"b''')");
    Command command(connection);
    command.SetCommandText(u"INSERT INTO t VALUES (?)");
    command.AppendParameter(zero);
    command.Execute();
    Recordset rows;
    rows.Open(u"SELECT a FROM t", connection);
    for (; !rows.Eof(); rows.MoveNext()) EXPECT_EQ(rows.FieldText(0), zero);
    rows.Close();
    ExpectRefused(Text(u"DELETE FROM t") + u'\0' + u" WHERE a = ''", ErrorNumbers::SyntaxOrColumn, "NUL");
    // An error that ends the transaction: what follows is not written by itself.
    connection.Execute(u"CREATE TRIGGER r BEFORE INSERT ON t WHEN NEW.a = 'x' BEGIN SELECT RAISE(ROLLBACK, 'no'); END");
    connection.BeginTrans();
    connection.Execute(u"DELETE FROM t");
    ExpectRefused(u"INSERT INTO t VALUES ('x')", ErrorNumbers::Integrity, "no");
    ExpectRefused(u"INSERT INTO t VALUES ('y')", ErrorNumbers::Unspecified, "was rolled back");
    EXPECT_TRUE(FailureOf([&] { connection.CommitTrans(); }).Mentions("was rolled back"));
    connection.RollbackTrans();
    EXPECT_EQ(database.Query(u"SELECT Count(*) FROM t"), u"4");
    connection.Execute(u"PRAGMA writable_schema = ON"); // of no effect
    ExpectRefused(u"UPDATE sqlite_master SET sql = ''", ErrorNumbers::Unspecified, "may not be modified");
    ExpectRefused(u"ATTACH 'x.db' AS x", ErrorNumbers::Unspecified, "too many attached");
    // What a file defines may not read what is not in the file.
    connection.Execute(u"CREATE VIEW v AS SELECT file FROM pragma_database_list");
    EXPECT_TRUE(FailureOf([&] { rows.Open(u"SELECT file FROM v", connection); }).Mentions("unsafe use"));
    // Its connection is destroyed first.
    rows.Open(u"SELECT a FROM t", connection);
    connection.Close();
    EXPECT_TRUE(FailureOf([&] { rows.MoveNext(); }).Mentions("closed"));
}

#ifndef _WIN32

TEST_F(SQLiteTest, AFileThatMayNotBeWrittenIsReadAndOneThatMayNotBeReadIsRefused) {
    connection.Execute(u"CREATE TABLE t (a integer)");
    connection.Close();
    const std::tuple<fs::perms, int32_t, std::string> cases[] = {
        {fs::perms(0444), ErrorNumbers::Permission, "is read-only"},
        {fs::perms::none, ErrorNumbers::Unspecified, "cannot be opened (the system says: Permission denied)"}};
    for (const auto& each : cases) {
        fs::permissions(fs::path(database.Name()), std::get<fs::perms>(each));
        const int status = test::StatusOfChild([&] {
            if (geteuid() == 0 && setuid(65534) != 0) return 2; // root may do all
            const Failure failure = FailureOf([&] {
                connection.Open(database.ConnectionString());
                EXPECT_EQ(connection.Execute(u"SELECT a FROM t"), 0);
                connection.Execute(u"INSERT INTO t VALUES (2)");
            });
            Expect(failure, std::get<int32_t>(each), std::get<std::string>(each));
            return HasFailure() ? 1 : 0;
        });
        EXPECT_EQ(status, 0);
    }
}

TEST_F(SQLiteTest, DataSourcesOpenTheirFiles) {
    const test::TempFolder folder;
    const Text file =
        folder.Write(u"odbc.ini", "[other]\nDriver=SQLite3\n[dax_Course]\n; a remark\nDriver = SQLite3\n" +
                                      ("Database=" + ToUtf8(database.Name())) + "\nTimeout=100\n");
    setenv("ODBCINI", ToUtf8(file).c_str(), 1);
    for (const Text string : {u"DSN=dax_course", u"Provider=MSDASQL;Data Source=DAX_COURSE"})
        EXPECT_NO_THROW(Connection().Open(string)) << ToUtf8(string);
    EXPECT_TRUE(FailureOfOpen(u"DSN=other").Mentions("names no database file"));
    unsetenv("ODBCINI");
}

#endif

} // namespace
} // namespace dax
