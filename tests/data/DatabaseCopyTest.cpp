// A database on any engine copied to any other.
#include "data/DatabaseCopy.h"

#include "base/Dates.h"
#include "base/Error.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"
#include "support/TestDatabases.h"

#include <gmock/gmock.h>

#ifndef _WIN32
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace dax {

namespace {

using test::TestDatabase;
using ::testing::HasSubstr;

using Engines = std::pair<Engine, Engine>;

std::vector<Engines> AllPairs() {
    std::vector<Engines> pairs;
    for (const Engine from : test::AllEngines())
        for (const Engine to : test::AllEngines()) pairs.emplace_back(from, to);
    return pairs;
}

void Make(const TestDatabase& database, Schema::Database kind) {
    database.Run(Schema::CreateStatements(kind, database.Kind()));
}

// Every row as one text, in an order that no engine decides.
std::vector<Text> RowsOf(const TestDatabase& database, TextView table) {
    Connection connection;
    connection.Open(database.ConnectionString());
    Recordset recordset;
    recordset.Open(u"SELECT * FROM " + Text(table), connection);
    std::vector<Text> rows;
    for (; !recordset.Eof(); recordset.MoveNext()) {
        Text row;
        for (size_t column = 0; column < recordset.FieldCount(); ++column) {
            const Value value = recordset.Field(column);
            row += recordset.FieldIsNull(column)             ? Text(u"NULL")
                   : std::holds_alternative<DateTime>(value) ? FormatDate(std::get<DateTime>(value))
                                                             : u"'" + Text(recordset.FieldText(column)) + u"'";
            row += u"|";
        }
        rows.push_back(row);
    }
    std::ranges::sort(rows);
    return rows;
}

void Copy(const TestDatabase& from, const TestDatabase& to, const std::function<void(size_t)>& progress = {}) {
    DatabaseCopy copy({from.ConnectionString(), u"FROM"}, {to.ConnectionString(), u"TO"});
    copy.Write(progress ? progress : [](size_t) {});
    copy.Finish();
}

class CopyTest : public ::testing::TestWithParam<Engines> {
protected:
    void SetUp() override {
        for (const Engine engine : {GetParam().first, GetParam().second}) DAX_NEEDS_ENGINE(engine);
        from = std::make_unique<TestDatabase>(GetParam().first);
        to = std::make_unique<TestDatabase>(GetParam().second);
    }
    void Fill(const std::vector<Text>& titles) {
        Make(*from, Schema::Database::Content);
        Connection connection;
        connection.Open(from->ConnectionString());
        connection.BeginTrans();
        Command insert(connection);
        insert.SetCommandText(u"INSERT INTO velmoraLessons (lessonID, lessonTitle, parentID, sortPosition) VALUES (?, "
                              u"?, ?, ?)");
        int number = 0;
        for (const Text& title : titles) {
            insert.ClearParameters();
            insert.AppendParameter(u"Ä'\\ %_?{}語😀" + ToText(++number));
            insert.AppendParameter(title);
            insert.AppendParameter(number % 2 ? Value() : Value(Text()));
            insert.AppendParameter(number % 3 ? Value() : Value(int64_t{number % 2 ? INT32_MIN : INT32_MAX}));
            insert.Execute();
        }
        connection.CommitTrans();
    }
    std::unique_ptr<TestDatabase> from, to;
};

INSTANTIATE_TEST_SUITE_P(Engines, CopyTest, ::testing::ValuesIn(AllPairs()), [](const auto& pair) {
    return test::EngineName({pair.param.first, 0}) + "To" + test::EngineName({pair.param.second, 0});
});

TEST_P(CopyTest, EveryValueArrivesAsItWas) {
    Text longest(5'000'000, u'x');
    for (size_t i = 0; i < longest.size(); i += 7) longest[i] = i % 2 ? u'\'' : u'é';
    std::vector<Text> titles = {u"",
                                u" ",
                                u"'",
                                u"''\\''",
                                u"\\",
                                u"#2024/05/06#",
                                u"'; DROP TABLE talkPosts; --",
                                u"\r\n\t\x01\x7F",
                                u"ẞß e\u0301é \u202E 👩‍🏫",
                                Text{0xFFFF, 0xFEFF, 0xDBFF, 0xDFFF, 0xE000},
                                Text{u'a', 0xD83D, u'b', 0xDE00},
                                Text(8001, u'\''),
                                longest};
    for (int i = 0; i < 1500; ++i) titles.push_back(Text(static_cast<size_t>(i % 40), u'ü'));
    Fill(titles);
    from->Run(
        {u"INSERT INTO velmoraUserLocks (lessonID, username, lockDate, lockType) VALUES ('', NULL, '2024-02-29 "
         u"23:59:59', -2)",
         u"INSERT INTO velmoraUserLocks (lessonID, lockDate) VALUES ('a', '1899-12-30 00:00:00.25')",
         u"INSERT INTO velmoraUserLocks (lessonID, lockDate) VALUES ('a', '1999-12-31 12:00:00.000001')",
         u"INSERT INTO velmoraUserLocks (username) VALUES ('twice')",
         u"INSERT INTO velmoraUserLocks (username) VALUES ('twice')",
         u"INSERT INTO velmoraAutonumbers (ignored) VALUES (1)", u"INSERT INTO velmoraAutonumbers (ignored) VALUES (2)",
         u"INSERT INTO velmoraAutonumbers (ignored) VALUES (3)", u"DELETE FROM velmoraAutonumbers WHERE ignored <> 2",
         u"DROP TABLE talkConfiguration", u"CREATE TABLE theirs (a integer)"});
    to->Run({u"CREATE TABLE others (b integer)"});
    size_t last = 0;
    {
        DatabaseCopy copy({from->ConnectionString(), u"FROM"}, {to->ConnectionString(), u"TO"});
        EXPECT_TRUE(copy.HasContent());
        EXPECT_FALSE(copy.HasConnector());
        EXPECT_EQ(copy.RowsInAll(), titles.size() + 6);
        EXPECT_THAT(copy.BeyondSource(), ::testing::ElementsAre(u"theirs"));
        EXPECT_THAT(copy.BeyondTarget(), ::testing::ElementsAre(u"others"));
        copy.Write([&](size_t done) {
            EXPECT_GE(done, last);
            last = done;
        });
        if (to->Kind() != Engine::SQLite) { // where so much is written that nobody may read meanwhile
            EXPECT_ANY_THROW((void)to->Ask(u"SELECT * FROM velmoraLessons")) << "seen too early";
        }
        copy.Finish();
    }
    EXPECT_EQ(last, 2 * (titles.size() + 6));
    for (const Schema::Table& table : Schema::Tables(Schema::Database::Content)) {
        if (table.name == u"talkConfiguration") continue;
        EXPECT_TRUE(RowsOf(*from, table.name) == RowsOf(*to, table.name)) << ToUtf8(table.name);
    }
    EXPECT_ANY_THROW((void)to->Ask(u"SELECT * FROM talkConfiguration"));
    // What was drawn and deleted is not drawn again.
    to->Run({u"INSERT INTO velmoraAutonumbers (ignored) VALUES (9)"});
    EXPECT_EQ(to->Ask(u"SELECT nextNumber FROM velmoraAutonumbers WHERE ignored = 9"), u"4");
}

TEST_P(CopyTest, WhatFailsLeavesTheTargetAsItWas) {
    Fill(std::vector<Text>(700, u"new"));
    // In the midst of writing, of comparing, and directly before the end.
    const auto stop = [&](int atCall, const std::function<void()>& how) {
        Copy(*from, *to, [&, calls = 0](size_t) mutable {
            if (++calls == atCall) how();
        });
    };
    const auto fail = [&](int atCall) {
        EXPECT_THROW(stop(atCall, [] { throw std::runtime_error("stop"); }), std::runtime_error);
    };
    const auto kill = [&]([[maybe_unused]] int atCall) {
#ifndef _WIN32
        const pid_t child = fork();
        if (child == 0) {
            try {
                stop(atCall, [] { raise(SIGKILL); });
            } catch (...) {
            }
            _exit(7);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << atCall;
#endif
    };
    const Text tables = to->Kind() == Engine::SQLite ? u"SELECT Count(*) FROM sqlite_master"
                        : to->Kind() == Engine::MariaDB
                            ? u"SELECT Count(*) FROM information_schema.TABLES WHERE TABLE_SCHEMA = DATABASE()"
                            : u"SELECT Count(*) FROM pg_tables WHERE schemaname = 'public'";
    for (const int call : {1, 30, 60}) {
        fail(call);
        EXPECT_EQ(to->Ask(tables), u"0") << call;
        kill(call);
        EXPECT_ANY_THROW((void)to->Ask(u"SELECT * FROM velmoraLessons")) << call;
    }
    Copy(*from, *to);
    from->Run({u"UPDATE velmoraLessons SET lessonTitle = 'newer'", u"DELETE FROM velmoraLessons WHERE parentID = ''"});
    to->Run({u"INSERT INTO talkPosts (postID) VALUES ('old')"});
    const std::vector<Text> before = RowsOf(*to, u"velmoraLessons");
    for (const int call : {1, 30}) {
        fail(call);
        kill(call);
        EXPECT_TRUE(RowsOf(*to, u"velmoraLessons") == before);
    }
    {
        DatabaseCopy copy({from->ConnectionString(), u"FROM"}, {to->ConnectionString(), u"TO"});
        EXPECT_EQ(copy.TakenTable(), u"velmoraLessons");
        copy.Write([](size_t) {});
    } // not finished
    EXPECT_TRUE(RowsOf(*to, u"velmoraLessons") == before);
    Copy(*from, *to);
    EXPECT_TRUE(RowsOf(*to, u"velmoraLessons") == RowsOf(*from, u"velmoraLessons"));
    EXPECT_EQ(to->Ask(u"SELECT Count(*) FROM talkPosts"), u"0") << "the rows of the former course";
}

TEST_P(CopyTest, SaysWhatItCannotCopy) {
    const auto failure = [&]() -> std::string {
        try {
            Copy(*from, *to);
        } catch (const Error& error) {
            return ToUtf8(error.Description());
        }
        return "no error";
    };
    EXPECT_THAT(failure(), HasSubstr("'FROM': It has none of the tables"));
    Make(*from, Schema::Database::Connector);
    from->Run({u"INSERT INTO velmoraDBUsers VALUES (7, 'юлия', 1)", u"INSERT INTO velmoraDBUserRights VALUES (7, 1, 2)",
               u"INSERT INTO velmoraConnectionHistory (username, machineName, lastConnect) VALUES ('a', 'B', "
               u"'2020-01-02 03:04:05')"});
    // A target of another layout: what it cannot hold is not lost silently.
    to->Run(Schema::CreateStatements(Schema::Database::Connector, to->Kind()));
    to->Run({u"DROP TABLE velmoraDBUsers",
             u"CREATE TABLE velmoraDBUsers (userID integer, username varchar(30), superUser integer CHECK (superUser "
             u"<> 1))"});
    EXPECT_THAT(failure(), HasSubstr("'TO': velmoraDBUsers: "));
    to->Run({u"DROP TABLE velmoraDBUsers"});
    if (to->Kind() != Engine::SQLite) { // which keeps what it is given
        to->Run({u"CREATE TABLE velmoraDBUsers (userID integer, username varchar(30), superUser varchar(9) DEFAULT "
                 u"'x')",
                 u"DROP TABLE velmoraConnectionHistory",
                 u"CREATE TABLE velmoraConnectionHistory (username text, machineName text, machineIP text, osVersion "
                 u"text, appVersion text, lastConnect date, lastCatalog text)"});
        EXPECT_THAT(failure(), HasSubstr("'TO': velmoraConnectionHistory: Values of lastConnect were not the same"));
        to->Run({u"DROP TABLE velmoraConnectionHistory"});
    }
    EXPECT_EQ(failure(), "no error");
    EXPECT_EQ(RowsOf(*from, u"velmoraDBUsers"), RowsOf(*to, u"velmoraDBUsers"));
    from->Run({u"ALTER TABLE velmoraDBList ADD COLUMN colour integer"});
    EXPECT_THAT(DatabaseCopy({from->ConnectionString(), u""}, {to->ConnectionString(), u""}).BeyondSource(),
                ::testing::ElementsAre(u"velmoraDBList.colour"));
    from->Run({u"DROP TABLE velmoraDBList"});
    EXPECT_THAT(failure(), HasSubstr("velmoraDBList is missing"));
}

} // namespace

} // namespace dax
