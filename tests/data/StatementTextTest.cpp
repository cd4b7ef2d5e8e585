// Texts that are read or made without a database.
#include "data/StatementText.h"

#include "data/ModuleConstants.h"
#include "data/Schema.h"
#include "data/modDB.h"

#include <gmock/gmock.h>

namespace dax {
namespace {

// That quotes are left alone whatever is in them is tested with hostile inputs.
TEST(StatementTextTest, AdaptsOutsideQuotesOnly) {
    const std::vector<std::pair<Text, Text>> cases = {
        {u"SELECT TOP 1 a, b FROM t", u"SELECT a, b FROM t LIMIT 1"},
        {u"select top 25 a FROM t ORDER BY a ; ", u"select a FROM t ORDER BY a LIMIT 25 ; "},
        {u"SELECT DISTINCT TOP (3) a FROM t", u"SELECT DISTINCT a FROM t LIMIT 3"},
        {u"SELECT TOP 5 PERCENT a FROM t", u"SELECT TOP 5 PERCENT a FROM t"},
        {u"SELECT TOPAZ FROM t", u"SELECT TOPAZ FROM t"},
        {u"SELECT TOP 1", u"SELECT TOP 1"},
        {u"SELECT TOP 1 a FROM t WHERE b = 'it''s", u"SELECT TOP 1 a FROM t WHERE b = 'it''s"},
        {u"SELECT TOP 1 a FROM t -- c", u"SELECT TOP 1 a FROM t -- c"},
        {u"a > #2024-5-6# AND b < #2024/12/31 11:59:59 PM# AND c = '#2024/05/06#'",
         u"a > '2024-05-06 00:00:00' AND b < '2024-12-31 23:59:59' AND c = '#2024/05/06#'"},
        {u"a = #2024/05/06 12:00:00 AM#", u"a = '2024-05-06 00:00:00'"},
        {u"a = #2023/02/29# OR #1/2/2024# OR #2024/05/06 25:00#",
         u"a = #2023/02/29# OR #1/2/2024# OR #2024/05/06 25:00#"},
        {u"#a# = #2024/05/06#", u"#a# = '2024-05-06 00:00:00'"},
        {u"##2024/05/06# # b", u"#'2024-05-06 00:00:00' # b"},
        {u"a = #2024/05/06" + Text(28, u' ') + u"#", u"a = '2024-05-06 00:00:00'"}, // 39 units
        {u"a = #2024/05/06" + Text(29, u' ') + u"#", u"a = #2024/05/06" + Text(29, u' ') + u"#"},
        {u"", u""},
        {u"SELECT ALL TOP(3)a FROM t", u"SELECT ALL a FROM t LIMIT 3"},
        {u"SELECT TOP ( 3 ) a FROM t", u"SELECT a FROM t LIMIT 3"},
        {u"SELECT TOP 3a FROM t", u"SELECT TOP 3a FROM t"},
        {u"SELECT TOP (3 a FROM t", u"SELECT TOP (3 a FROM t"},
        {u"SELECT TOP a FROM t", u"SELECT TOP a FROM t"},
        {u"SELECT TOP 1 a FROM t /* c */ ;\n", u"SELECT TOP 1 a FROM t /* c */ ;\n"},
        {u"#2024/05/06# -- #2024/05/06#\n#2024/05/06#",
         u"'2024-05-06 00:00:00' -- #2024/05/06#\n'2024-05-06 00:00:00'"},
        {u"/* ' */ #2024/05/06# - 1 / 2 /*/ #2024/05/06#*/",
         u"/* ' */ '2024-05-06 00:00:00' - 1 / 2 /*/ #2024/05/06#*/"},
        {u"1 /* a */* #2024/05/06#", u"1 /* a */* '2024-05-06 00:00:00'"},
        {u"1 - /* a */#2024/05/06#", u"1 - /* a */'2024-05-06 00:00:00'"},
        {u"[a]]#2024/05/06#] = `#2024/05/06#` + \"\"\"#2024/05/06#\"",
         u"[a]]#2024/05/06#] = `#2024/05/06#` + \"\"\"#2024/05/06#\""},
        {u"a = 'x'#2024/05/06#'y'", u"a = 'x' '2024-05-06 00:00:00' 'y'"}, // adjacent literals stay separate
    };
    for (const auto& [statement, adapted] : cases) {
        EXPECT_EQ(ToUtf8(AdaptStatement(statement, DialectOf(Engine::PostgreSQL))), ToUtf8(adapted));
        EXPECT_EQ(AdaptStatement(statement, DialectOf(Engine::Access)), statement);
        EXPECT_EQ(AdaptStatement(statement, DialectOf(Engine::SQLServer)), statement);
    }
}

TEST(StatementTextTest, OnlyWholeStatementsShareACall) {
    for (const TextView whole : {u"DELETE FROM t WHERE a = 'x;y'", u"UPDATE t SET a = 'it''s -- #'"})
        EXPECT_TRUE(IsSingleStatement(whole)) << ToUtf8(whole);
    for (const TextView open : {u"DELETE FROM t WHERE a = 'it's'", u"DELETE FROM t; DROP TABLE t", u"SELECT 1 -- x",
                                u"SELECT 1 /* x", u"SELECT \"x", u" ", u"SELECT 1 # x"})
        EXPECT_FALSE(IsSingleStatement(open)) << ToUtf8(open);
}

TEST(StatementTextTest, LongLiteralsBecomeParameters) {
    const auto taken =
        ParametrizeLongLiterals(u"UPDATE t SET a = 'ab''cd', b = 'abcde', c = \"abcdefgh\", d = '''''''''''' ", 5);
    ASSERT_TRUE(taken);
    EXPECT_EQ(ToUtf8(taken->statement), "UPDATE t SET a = ?, b = 'abcde', c = \"abcdefgh\", d = ? ");
    EXPECT_EQ(taken->values, (std::vector<Value>{Text(u"ab'cd"), Text(u"'''''")}));
    EXPECT_FALSE(ParametrizeLongLiterals(u"UPDATE t SET a = 'abcdefgh' WHERE b = ?", 5));
    EXPECT_FALSE(ParametrizeLongLiterals(u"UPDATE t SET a = 'abcdefgh", 5));
    EXPECT_FALSE(ParametrizeLongLiterals(u"UPDATE t SET a = 'abcdefgh'", 0));
}

TEST(StatementTextTest, TheTableOfASimpleSelect) {
    const std::pair<Text, Text> cases[] = {
        {u"SELECT a, b FROM t WHERE c = ' FROM u'", u"t"},
        {u"SELECT ' FROM u', fromage, a\nfrom  t_1,u", u"t_1"},
        {u"SELECT \"FROM v\"FROM t", u"t"},
        {u"SELECT a FROM/**/t", u"t"},
        {u"SELECT 1", u""},
        {u"SELECT 1 FROM ", u""},
    };
    for (const auto& [statement, table] : cases) EXPECT_EQ(ToUtf8(TableOf(statement)), ToUtf8(table));
}

TEST(StatementTextTest, QuotesDatesAndErrorNumbers) {
    EXPECT_EQ(modDB::QuoteSQLString(u"O'Neil\\"), u"'O''Neil\\'");
    EXPECT_EQ(modDB::FormatSQLDate({2026, 3, 4, 5, 6, 7}, true), u"#2026/03/04 5:06:07#");
    EXPECT_EQ(modDB::FormatSQLDate({999, 12, 31, 23, 0, 0, 5}, false), u"'0999/12/31 23:00:00'");
    EXPECT_EQ(modDB::FormatErrorNumber(-2147467259), u"error number: -2147467259 (&H80004005)");
    EXPECT_EQ(modDB::FormatErrorNumber(-86), u"error number: -86 (&HFFFFFFAA)");
    EXPECT_EQ(modDB::FormatErrorNumber(0), u"error number: 0 (&H0)");
}

// That every table and column is made is tested by taking them away one at a time (tests/validation).
TEST(SchemaTextTest, WritesWhatCannotRunHereAsText) {
    using Schema::Database;
    using ::testing::HasSubstr;
    const std::string access = ToUtf8(Schema::Script(Database::Content, Engine::Access));
    for (const char* const part :
         {"CREATE TABLE [velmoraAutonumbers] ([nextNumber] COUNTER NOT NULL, [ignored] LONG, PRIMARY KEY "
          "([nextNumber]));",
          "[lessonTitle] LONGTEXT", "CREATE TABLE [velmoraUserLocks]", "PRIMARY KEY ([lessonID])",
          "PRIMARY KEY ([milestoneID])", "PRIMARY KEY ([configurationID])", "PRIMARY KEY ([postID])",
          "PRIMARY KEY ([commentID])", "CREATE INDEX [talkComments_postID] ON [talkComments] ([postID])",
          "-- Run each statement by itself"})
        EXPECT_THAT(access, HasSubstr(part));
    const std::string server = ToUtf8(Schema::Script(Database::Connector, Engine::SQLServer));
    for (const char* const part :
         {"[password] NVARCHAR(MAX)", "PRIMARY KEY ([userID])", "PRIMARY KEY ([dbID])",
          "PRIMARY KEY ([userID], [dbID])", "PRIMARY KEY ([username], [machineName])", "[lastConnect] DATETIME"})
        EXPECT_THAT(server, HasSubstr(part));
    EXPECT_THAT(ToUtf8(Schema::Script(Database::Content, Engine::MariaDB)), HasSubstr("lower_case_table_names=1"));
    EXPECT_THROW(Schema::CreateStatements(Database::Content, Engine::Other), Error);
    for (const Schema::Table& table : Schema::Tables(Database::Content))
        EXPECT_EQ(table.isOptional, table.name.starts_with(u"talk")) << ToUtf8(table.name);
}

TEST(ConstantsTest, FormatsVersionAndPaths) {
    const struct {
        ModuleConstants module;
        Text version, path;
    } cases[] = {
        {{3, 3, 42, u"beta  ", u"C:\\Program Files\\DAX\\x.ocx"}, u"3.3 (Build 0042)  beta", u"C:\\Program Files\\DAX"},
        {{3, 3, 0, u"", u"C:\\x.ocx"}, u"3.3 (Build 0000)", u"C:\\"},
        {{3, 3, 1234, u"x", u"\\\\server\\share\\x.ocx"}, u"3.3 (Build 1234)  x", u"\\\\server\\share"},
        {{10, 0, 12345, u"   ", u"x.ocx"}, u"10.0 (Build 12345)", u""},
        {{3, 4, 5, u"", u"/x.ocx"}, u"3.4 (Build 0005)", u"/"},
    };
    for (const auto& [module, version, path] : cases) {
        EXPECT_EQ(module.OCXVersion(), version);
        EXPECT_EQ(module.OCXPath(), path);
    }
}

} // namespace
} // namespace dax
