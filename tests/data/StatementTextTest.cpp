#include "data/StatementText.h"

#include <gtest/gtest.h>

namespace dax {

namespace {

// That quotes are left alone whatever stands in them is tested with hostile inputs.
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
        {u"a = 'x'#2024/05/06#'y'", u"a = 'x' '2024-05-06 00:00:00' 'y'"}, // no literal grows together with another
    };
    for (const auto& [statement, adapted] : cases) {
        EXPECT_EQ(ToUtf8(AdaptStatement(statement, DialectOf(Engine::PostgreSQL))), ToUtf8(adapted));
        EXPECT_EQ(AdaptStatement(statement, DialectOf(Engine::Access)), statement);
        EXPECT_EQ(AdaptStatement(statement, DialectOf(Engine::SQLServer)), statement);
    }
}

TEST(StatementTextTest, OnlyWholeStatementsShareACall) {
    for (const TextView whole : {u"DELETE FROM t WHERE a = 'x;y'", u"UPDATE t SET a = 'it''s -- #'"})
        EXPECT_TRUE(StandsAlone(whole)) << ToUtf8(whole);
    for (const TextView open : {u"DELETE FROM t WHERE a = 'it's'", u"DELETE FROM t; DROP TABLE t", u"SELECT 1 -- x",
                                u"SELECT 1 /* x", u"SELECT \"x", u" ", u"SELECT 1 # x"})
        EXPECT_FALSE(StandsAlone(open)) << ToUtf8(open);
}

TEST(StatementTextTest, LongLiteralsBecomeParameters) {
    const auto taken =
        TakeLongLiterals(u"UPDATE t SET a = 'ab''cde', b = 'abcd', c = \"abcdefgh\", d = '''''''''''' ", 5);
    ASSERT_TRUE(taken);
    EXPECT_EQ(ToUtf8(taken->statement), "UPDATE t SET a = ?, b = 'abcd', c = \"abcdefgh\", d = ? ");
    EXPECT_EQ(taken->values, (std::vector<Value>{Text(u"ab'cde"), Text(u"'''''")}));
    EXPECT_FALSE(TakeLongLiterals(u"UPDATE t SET a = 'abcdefgh' WHERE b = ?", 5));
    EXPECT_FALSE(TakeLongLiterals(u"UPDATE t SET a = 'abcdefgh", 5));
    EXPECT_FALSE(TakeLongLiterals(u"UPDATE t SET a = 'abcdefgh'", 0));
}

TEST(StatementTextTest, TheTableOfASimpleSelect) {
    const std::vector<std::pair<Text, Text>> cases = {
        {u"SELECT a, b FROM t WHERE c = ' FROM u'", u"t"},   {u"SELECT ' FROM u', a FROM dbo.t ORDER BY a", u"dbo.t"},
        {u"SELECT a FROM [my t] WHERE b = 1", u"[my t]"},    {u"SELECT a FROM t, u", u""},
        {u"SELECT a FROM t INNER JOIN u ON t.a = u.a", u""}, {u"SELECT 1", u""},
    };
    for (const auto& [statement, table] : cases) EXPECT_EQ(ToUtf8(TableOf(statement)), ToUtf8(table));
}

} // namespace

} // namespace dax
