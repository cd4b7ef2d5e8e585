// Real faults: what cannot be opened, what breaks while it is open, and that nothing is left open.
#include "base/Error.h"
#include "data/Recordset.h"
#include "data/modDB.h"
#include "support/TestDatabases.h"

namespace dax {

namespace {

using test::Failure;
using test::FailureOf;
using test::FailureOfOpen;

TEST(FaultTest, AMissingDriverIsNamedWithTheWayToGetIt) {
    const Failure server = FailureOfOpen(u"Driver={PostgreSQL Of Nowhere};Server=127.0.0.1;UID=u");
    EXPECT_TRUE(server.Tells("\"PostgreSQL Of Nowhere\" is not installed") && server.Tells("odbc-postgresql") &&
                server.Tells("psqlODBC"))
        << server.what();
    EXPECT_EQ(server.Number(), ErrorNumbers::Unspecified);
    EXPECT_TRUE(FailureOfOpen(u"DSN=dax_no_such_source").Tells("not set up"));
}

class ServerTest : public test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, ServerTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), test::EngineName);

TEST_P(ServerTest, AWrongPasswordAMissingCatalogAndAStoppedServer) {
    const Text& good = database->ConnectionString();
    const Failure password = FailureOfOpen(good + u";PWD=wrong");
    EXPECT_EQ(password.Number(), ErrorNumbers::Authentication) << password.what();
    const Failure catalog = FailureOfOpen(good + u";Database=dax_no_such_catalog");
    EXPECT_TRUE(catalog.Tells("dax_no_such_catalog")) << catalog.what();
    EXPECT_EQ(catalog.Number(), ErrorNumbers::Unspecified) << catalog.what();
    const Failure server = FailureOfOpen(good + u";Port=1"); // nothing listens there
    EXPECT_EQ(server.Number(), ErrorNumbers::Unspecified) << server.what();
    EXPECT_FALSE(server.Description().empty());
}

TEST_P(ServerTest, NamesAndPasswordsOfEveryKind) {
    enum Takes { Anything, Password, Nothing };
    const struct {
        Text value; // with the name of the test's catalog for the '#'
        Takes postgres, mariaDB;
    } cases[] = {
        {u"my #", Anything, Anything},  {u"a@#,b", Anything, Anything},    {u"+%41#50%", Anything, Anything},
        {u"#=x y", Anything, Anything}, {u"[#]!*?()", Anything, Anything}, {u"o'#\"\\", Anything, Anything},
        {u"ü漢#", Anything, Anything},  {u"{#}", Anything, Anything},      {u"#}}{", Anything, Anything},
        {u" #", Anything, Nothing},     {u"#\t", Anything, Nothing},       {u"#;PWD=x", Password, Anything},
        {u"{#", Password, Anything},
    };
    const bool isMariaDB = GetParam() == Engine::MariaDB;
    const auto marked = [](Text value, const Text& open, char16_t close) {
        for (size_t at = value.find(close); at != Text::npos; at = value.find(close, at + 2))
            value.insert(at, 1, close);
        return open + value + close;
    };
    for (const auto& c : cases) {
        const Takes takes = isMariaDB ? c.mariaDB : c.postgres;
        const Text value = Text(c.value).replace(c.value.find(u'#'), 1, database->Name());
        const Text& login = takes == Anything ? value : database->Name();
        const Text text = marked(value, u"'", u'\''),
                   name = isMariaDB ? marked(value, u"`", u'`') : marked(value, u"\"", u'"');
        const Text account = isMariaDB ? marked(login, u"'", u'\'') + u"@'%'" : marked(login, u"\"", u'"');
        SCOPED_TRACE(ToUtf8(value));
        database->Run({u"CREATE USER " + account + (isMariaDB ? u" IDENTIFIED BY " : u" PASSWORD ") + text});
        if (takes == Anything) database->Run({u"CREATE DATABASE " + name});
        if (isMariaDB) database->Run({u"GRANT ALL ON *.* TO " + account});
        for (const auto& [open, close] : {std::pair<Text, char16_t>{u"{", u'}'}, {u"'", u'\''}, {u"\"", u'"'}}) {
            const Text given = marked(value, open, close), catalog = u";Database=" + given, password = u";PWD=" + given;
            const Text with = database->ConnectionString() + u";UID=" + marked(login, open, close);
            EXPECT_TRUE(takes == Anything || FailureOfOpen(with + catalog).Tells("value of \"Database\""));
            EXPECT_TRUE(takes != Nothing || FailureOfOpen(with + password).Tells("value of \"PWD\""));
            if (takes == Nothing) continue;
            Recordset who;
            who.Open(u"SELECT " + Text(isMariaDB ? u"database()" : u"current_database()") + u" = " + text,
                     with + (takes == Anything ? catalog : Text()) + password);
            EXPECT_EQ(who.FieldText(0), takes == Anything ? u"1" : u"0");
        }
        if (takes == Anything) database->Run({u"DROP DATABASE " + name});
        database->Run({u"DROP USER " + account});
    }
}

TEST_P(ServerTest, OptionsOfTheHostSpoilNothing) {
    const bool isMariaDB = GetParam() == Engine::MariaDB;
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
    reader.Open(plain + u";ReadOnly=1");
    EXPECT_TRUE(FailureOf([&] { reader.Execute(u"DELETE FROM t"); }).Tells("readonly"));
    // A server that does not read a backslash as told: its length is another here.
    database->Run({u"CREATE FUNCTION length(text) RETURNS integer LANGUAGE sql AS 'SELECT 1'"});
    EXPECT_TRUE(FailureOfOpen(plain + u";ConnSettings={SET search_path = public, pg_catalog}").Tells("backslash"));
}

} // namespace

} // namespace dax
