#include "data/modDB.h"

#include "data/Constants.h"
#include "support/TestDatabases.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

TEST(ModDBTest, FormatsDatesAndErrorNumbers) {
    EXPECT_EQ(modDB::FormatSQLDate({2026, 3, 4, 5, 6, 7}, true), u"#2026/03/04 5:06:07#");
    EXPECT_EQ(modDB::FormatSQLDate({999, 12, 31, 23, 0, 0, 5}, false), u"'0999/12/31 23:00:00'");
    EXPECT_EQ(modDB::FormatErrorNumber(-2147467259), u"error number: -2147467259 (&H80004005)");
    EXPECT_EQ(modDB::QuoteSQLString(u"O'Neil\\"), u"'O''Neil\\'");
    EXPECT_EQ(modDB::FormatErrorNumber(0), u"error number: 0 (&H0)");
}

TEST(ModDBTest, ClosesAndRollsBackWhateverTheState) {
    const test::TestDatabase database(Engine::SQLite);
    database.Run({u"CREATE TABLE t (a INTEGER)"});
    for (const bool rollBack : {true, false}) {
        Connection connection;
        Recordset recordset;
        connection.Open(database.ConnectionString());
        connection.BeginTrans();
        connection.Execute(u"INSERT INTO t VALUES (1)");
        recordset.Open(u"SELECT a FROM t", connection);
        modDB::CloseConnectionObjects(&recordset, &connection, rollBack);
        EXPECT_FALSE(recordset.IsOpen());
        EXPECT_FALSE(connection.IsOpen());
        modDB::CloseConnectionObjects(&recordset, &connection, rollBack);
    }
    modDB::CloseConnectionObjects(nullptr, nullptr, true);
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM t"), u"0");

    // Without a transaction the roll back fails, and the closing goes on.
    Connection connection;
    connection.Open(database.ConnectionString());
    modDB::CloseConnectionObjects(nullptr, &connection, true);
    EXPECT_FALSE(connection.IsOpen());

    int32_t number = 5;
    Text description = u"before";
    EXPECT_TRUE(modDB::TestOpenConnection(database.ConnectionString(), number, description));
    EXPECT_TRUE(number == 0 && description.empty());
    EXPECT_FALSE(modDB::TestOpenConnection(u"DSN=none;PWD=secret", number, description));
    EXPECT_TRUE(number == ErrorNumbers::Unspecified && description.find(u"not set up") != Text::npos);
}

TEST(ConstantsTest, FormatsVersionAndPaths) {
    const std::pair<ModuleConstants, Text> versions[] = {
        {{3, 3, 42, u"beta  ", u""}, u"3.3 (Build 0042)  beta"},
        {{3, 3, 0, u"", u""}, u"3.3 (Build 0000)"},
        {{3, 3, 1234, u"x", u""}, u"3.3 (Build 1234)  x"},
        {{10, 0, 12345, u"   ", u""}, u"10.0 (Build 12345)"},
    };
    for (const auto& [module, expected] : versions) EXPECT_EQ(module.OCXVersion(), expected);
    const std::pair<Text, Text> paths[] = {
        {u"C:\\Program Files\\DAX\\x.ocx", u"C:\\Program Files\\DAX"},
        {u"C:\\x.ocx", u"C:\\"},
        {u"\\\\server\\share\\x.ocx", u"\\\\server\\share"},
        {u"x.ocx", u""},
        {u"/x.ocx", u"/"},
    };
    for (const auto& [file, folder] : paths) EXPECT_EQ((ModuleConstants{0, 0, 0, u"", file}.OCXPath()), folder);
}

} // namespace
} // namespace dax
