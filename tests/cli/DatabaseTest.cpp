// Databases that are made, validated, copied and picked: files, and servers where there are any.
#include "Program.h"

#include "data/CatalogConnection.h"
#include "data/Recordset.h"
#include "support/TestDatabases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

Text Query(const Text& connection, const Text& query) {
    Recordset rows;
    rows.Open(query, connection);
    return Text(rows.FieldText(0));
}

TEST(SampleTest, MakesTheCourseThatWasAskedFor) {
    const TempFolder folder;
    Text file;
    for (const Text lessons : {u"0", u"1", u"700"}) {
        file = folder.File(u"Kurs 語 😀 O'N " + lessons + u".db");
        ExpectOutput(file, {{"sample --lessons " + ToUtf8(lessons), 0, ""},
                            {"validate", 0, "file '" + ToUtf8(file) + "' validated on "}});
        EXPECT_EQ(Query(file, u"SELECT Count(*) FROM velmoraLessons WHERE lessonType = 1"), lessons);
        // Every parent is there and is a group one level higher; no two siblings share a place.
        EXPECT_EQ(Query(file, u"SELECT Count(*) FROM velmoraLessons c LEFT JOIN velmoraLessons p ON c.parentID = "
                              u"p.lessonID WHERE NOT ((c.parentID = '' AND c.indentLevel = 1) OR (p.lessonType = 0 AND "
                              u"c.indentLevel = p.indentLevel + 1))"),
                  u"0");
        EXPECT_EQ(Query(file, u"SELECT Count(*) - Count(DISTINCT parentID || sortPosition) FROM velmoraLessons"), u"0");
    }
    EXPECT_EQ(Query(file, u"SELECT Count(DISTINCT lockType) FROM velmoraUserLocks WHERE lockType IN (-2,1,2,3,4,5)"),
              u"6");
    EXPECT_NE(Query(file, u"SELECT Max(indentLevel) FROM velmoraLessons"), u"1");
    EXPECT_EQ(CountFiles(folder), 3u) << "something was left beside the files";
}

TEST(SampleTest, ReplacesOnlyWhenForced) {
    const TempFolder folder;
    const Text file = folder.Write(u"diary.txt", "dear diary");
    for (const std::string command : {"sample", "create"}) {
        ExpectOutput(file, {{command, 1, "'" + ToUtf8(file) + "' exists already"}});
        EXPECT_EQ(ReadFile(folder.Path() / "diary.txt"), "dear diary");
    }
    folder.Write(u"diary.txt-journal", "left behind by a killed program");
    ExpectOutput(file, {{"create --force", 0, ""}});
    EXPECT_EQ(Query(file, u"SELECT Count(*) FROM velmoraLessons"), u"0");
    EXPECT_EQ(CountFiles(folder), 1u);
    ExpectOutput(folder.File(u"none/x.db"), {{"sample", 3, "x.db' cannot be written"}});
    ExpectOutput(folder.File(u""), {{"sample --force", 1, ""}});
}

class EnginesTest : public EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, EnginesTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST_P(EnginesTest, HoldTheCourse) {
    const std::string force = GetParam() == Engine::SQLite ? " --force" : "";
    ExpectOutput(database->ConnectionString(), {{"sample --lessons 150" + force, 0, ""}});
    EXPECT_EQ(
        database->Query(u"SELECT Count(*) FROM velmoraLessons WHERE lessonTitle LIKE 'Party time 🎉👩‍🏫 %'"),
        u"1");
    ExpectOutput(database->ConnectionString(), {{"validate", 0, ToUtf8(database->Name())},
                                                {"tree", 0, "150 lessons"},
                                                {"edit move SAF-2 down --force", 0, "Saved: 1 moved"},
                                                {"sample", 1, "already"},
                                                {"create --force", 0, ""}});
    EXPECT_EQ(database->Query(u"SELECT Count(*) FROM velmoraLessons"), u"0");
    database->Run({u"DROP TABLE talkPosts"});
    ExpectOutput(database->ConnectionString(), {{"validate", 0, "discussions: not supported"}});
    if (GetParam() == Engine::SQLite) return;
    // A catalog with a name that must be quoted on every engine; the second time it is there.
    const Text name = database->Name() + u"-New", quote(1, GetParam() == Engine::PostgreSQL ? u'"' : u'`');
    ExpectOutput(CatalogConnection(database->ConnectionString(), name, {}, {}),
                 {{"create --new-catalog", 0, ""}, {"create --new-catalog", 3, ""}, {"validate", 0, ""}});
    database->Run({u"DROP DATABASE " + quote + name + quote});
}

// That every value arrives on every engine is tested with the copy itself.
TEST(CopyTest, ReportsWhatItCopiedOrWhyNot) {
    const TempFolder folder;
    const TestDatabase target(Engine::SQLite);
    target.Run({u"CREATE TABLE theirs (a integer)"});
    const Text first = folder.File(u"Kurs 語.db"), note = folder.Write(u"a.txt", "note");
    const auto copyTo = [](const Text& name) { return "copy \"" + ToUtf8(name) + "\""; };
    const std::string again = copyTo(target.Name()), copyToNew = copyTo(folder.File(u"new.db")), force = " --force";
    ExpectOutput(first, {{"sample --lessons 40", 0, ""},
                         {again, 0, "Read again and compared: every value is the same\n"},
                         {again, 1, "has rows in velmoraLessons already"},
                         {again + force, 0, "test.db': theirs\n"}});
    ExpectOutput(target.Name(), {{copyTo(folder.File(u"back.db")), 0, "has no such tables or columns: theirs\n"}});
    // What fails leaves no file, and no file changed.
    ExpectOutput(first, {{copyTo(first) + force, 3, "is the source itself"},
                         {copyTo(note) + force, 3, "a.txt' is not a database file"},
                         {copyTo(folder.File(u"none/new.db")), 3, "new.db' cannot be written"},
                         {"copy \"Driver={No such driver};Database=x\"", 3, "'x': "}});
    ExpectOutput(note, {{copyToNew, 3, "is not a database file, or it is encrypted. Nothing was copied."}});
    ExpectOutput(folder.File(u"none.db"), {{copyToNew, 3, "none.db' does not exist."}});
    EXPECT_EQ(ReadFile(folder.Path() / "a.txt"), "note");
    EXPECT_EQ(CountFiles(folder), 3u);
}

TEST(CatalogsTest, AreListedRecordedAndRefused) {
    const TestDatabase connector(Engine::SQLite);
    ExpectOutput(connector.ConnectionString(),
                 {{"sample --connector --force", 0, ""},
                  {"validate-connector --catalog c --source s --user j.o'neil", 0, "validated on "},
                  {"validate-connector --catalog c --source s --user guest", 1, "You do not have access rights"},
                  {"validate-connector --catalog c --source \"\" --user admin", 1, "no connector specified"},
                  {"catalogs --user anna --default velmora_languages", 0,
                   "  Safety at work  [velmora_safety]  login velmora, administrator\n"
                   "* Sprachen – языки – 言語  [velmora_languages]  login velmora, read and write\n"
                   "  Archive (O'Neil's)  [velmora_archive]  login velmora, read only\n"},
                  {"catalogs --user guest", 1, ""},
                  {"catalogs --user юлия --record КАБИНЕТ --os \"OS 語\" --default velmora_languages", 0, ""},
                  {"catalogs --user j.o'neil --record M", 1, ""},
                  {"pick --user anna --catalog velmora_archive", 0, "velmora_archive"},
                  {"pick --user guest", 1, "may not open any catalog"},
                  {"pick --user anna --catalog other", 1, "may not open a catalog 'other'"}});
    EXPECT_EQ(
        connector.Query(u"SELECT Count(*) FROM velmoraConnectionHistory WHERE username = 'юлия' AND machineName = "
                        u"'КАБИНЕТ' AND osVersion = 'OS 語' AND lastCatalog = 'velmora_languages'"),
        u"1");
    connector.Run({u"DROP TABLE velmoraDBUsers"});
    ExpectOutput(connector.ConnectionString(), {{"catalogs --user anna", 3, "'dax validate-connector'"}});
}

} // namespace
} // namespace dax::test
