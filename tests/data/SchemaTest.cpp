#include "data/Schema.h"

#include "data/modDB.h"
#include "support/TestDatabases.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

using Schema::Database;

// That every table and column is made is tested by taking them away one at a time (tests/validation).
class SchemaTest : public test::EngineTest {};

TEST_P(SchemaTest, KeysCountersAndTextsBehave) {
    database->Run(Schema::CreateStatements(Database::Content, GetParam()));
    const Text longText(300000, u'語');
    const auto lesson = [](const Text& id, const Text& title) {
        return u"INSERT INTO velmoraLessons (lessonID, lessonTitle) VALUES (" + modDB::QuoteSQLString(id) + u", " +
               modDB::QuoteSQLString(title) + u")";
    };
    database->Run({lesson(u"a", longText), lesson(u"A", u"other"), lesson(u"a ", u"blank")});
    EXPECT_THROW(database->Run({lesson(u"a", u"again")}), Error);
    EXPECT_EQ(database->Ask(u"SELECT lessonTitle FROM velmoraLessons WHERE lessonID = 'a'"), longText);
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonID = 'A'"), u"1");
    // Both spellings of the table name are the same table.
    database->Run({u"INSERT INTO velmoraUserlocks (lessonID, lockType) VALUES ('a', -2)"});
    EXPECT_EQ(database->Ask(u"SELECT lockType FROM velmoraUserLocks"), u"-2");

    for (int i = 0; i < 2; ++i) database->Run({u"INSERT INTO velmoraAutonumbers (ignored) VALUES (-1)"});
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraAutonumbers WHERE nextNumber > 0"), u"2");
}

INSTANTIATE_TEST_SUITE_P(Engines, SchemaTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST(SchemaTextTest, WritesWhatCannotRunHereAsText) {
    const Text access = Schema::Script(Database::Content, Engine::Access);
    for (const TextView part : {u"CREATE TABLE [velmoraAutonumbers] ([nextNumber] COUNTER NOT NULL, [ignored] LONG, "
                                u"PRIMARY KEY ([nextNumber]));",
                                u"[lessonTitle] LONGTEXT", u"CREATE TABLE [velmoraUserLocks]", u"[talkComments]"}) {
        EXPECT_NE(access.find(part), Text::npos) << ToUtf8(part) << "\n" << ToUtf8(access);
    }
    const Text server = Schema::Script(Database::Connector, Engine::SQLServer);
    for (const TextView part : {u"[password] NVARCHAR(MAX)", u"PRIMARY KEY ([userID], [dbID])",
                                u"PRIMARY KEY ([username], [machineName])", u"[lastConnect] DATETIME"}) {
        EXPECT_NE(server.find(part), Text::npos) << ToUtf8(part) << "\n" << ToUtf8(server);
    }
    EXPECT_THROW(Schema::CreateStatements(Database::Content, Engine::Other), Error);
}

} // namespace
} // namespace dax
