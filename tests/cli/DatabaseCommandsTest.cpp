// The commands on real databases: SQLite files, and servers where there are any.
#include "Program.h"

#include "base/modGeneric.h"
#include "data/Recordset.h"
#include "support/TestDatabases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace dax::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string Bytes(const TempFolder& folder, const std::string& name) {
    std::ifstream stream(folder.Path() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

size_t Entries(const TempFolder& folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

Text Ask(const Text& connection, const Text& query) {
    Recordset rows;
    rows.Open(query, connection);
    return Text(rows.FieldText(0));
}

TEST(SampleTest, MakesTheCourseThatWasAskedFor) {
    const TempFolder folder;
    for (const Text lessons : {u"0", u"1", u"47", u"700"}) {
        const Text file = folder.File(u"Kurs 語 😀 O'N " + lessons + u".db");
        ExpectSaid(file, {{"sample --lessons " + ToUtf8(lessons), 0, ""},
                          {"validate", 0, "file '" + ToUtf8(file) + "' validated on "},
                          {"validate", 0, "discussions: supported"}});
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons WHERE lessonType = 1"), lessons);
        // Every parent is there and is a group one level higher; no two siblings share a place.
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons c LEFT JOIN velmoraLessons p ON c.parentID = "
                            u"p.lessonID WHERE NOT ((c.parentID = '' AND c.indentLevel = 1) OR (p.lessonType = 0 AND "
                            u"c.indentLevel = p.indentLevel + 1))"),
                  u"0");
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM (SELECT parentID FROM velmoraLessons GROUP BY parentID, "
                            u"sortPosition HAVING Count(*) > 1) AS twice"),
                  u"0");
    }
    const Text file = folder.File(u"Kurs 語 😀 O'N 700.db");
    EXPECT_EQ(Ask(file, u"SELECT Count(DISTINCT lockType) FROM velmoraUserLocks WHERE lockType IN (-2,1,2,3,4,5)"),
              u"6");
    EXPECT_NE(Ask(file, u"SELECT Max(indentLevel) FROM velmoraLessons"), u"1");
    EXPECT_EQ(Entries(folder), 4u) << "something was left beside the files";
}

TEST(SampleTest, ReplacesOnlyWhenForced) {
    const TempFolder folder;
    const Text file = folder.Write(u"diary.txt", "dear diary");
    for (const std::string command : {"sample", "create"}) {
        ExpectSaid(file, {{command, 1, "'" + ToUtf8(file) + "' exists already"}});
        EXPECT_EQ(Bytes(folder, "diary.txt"), "dear diary");
    }
    folder.Write(u"diary.txt-journal", "left behind by a killed program");
    ExpectSaid(file, {{"create --force", 0, ""}});
    EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons"), u"0");
    EXPECT_EQ(Entries(folder), 1u);
    ExpectSaid(folder.File(u"none/x.db"), {{"sample", 3, "x.db' cannot be written"}});
    ExpectSaid(folder.File(u""), {{"sample --force", 1, ""}});
}

class CommandsTest : public EngineTest {};

TEST_P(CommandsTest, CourseOnAnyEngine) {
    const std::string force = GetParam() == Engine::SQLite ? " --force" : "";
    ExpectSaid(database->ConnectionString(), {{"sample --lessons 150" + force, 0, ""}});
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonType = 1"), u"150");
    EXPECT_EQ(
        database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonTitle LIKE 'Party time 🎉👩‍🏫 %'"),
        u"1");
    ExpectSaid(database->ConnectionString(), {{"validate", 0, ToUtf8(database->Name())}});
    ExpectSaid(database->ConnectionString(), {{"sample", 1, "already"}, {"create --force", 0, ""}});
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons"), u"0");
    database->Run({u"DROP TABLE talkPosts"});
    ExpectSaid(database->ConnectionString(), {{"validate", 0, "discussions: not supported"}});
}

TEST_P(CommandsTest, CopiesToAFileAndBack) {
    const TempFolder folder;
    const Text first = folder.File(u"Kurs 語.db"), back = folder.File(u"back.db"),
               note = folder.Write(u"a.txt", "note");
    ASSERT_EQ(RunDax({u"sample", first, u"--lessons", u"40"}).exitCode, 0);
    const Outcome made = RunDax({u"copy", first, database->ConnectionString()});
    EXPECT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_THAT(made.output, HasSubstr("' to '" + ToUtf8(database->Name()) + "': "));
    EXPECT_THAT(made.output, HasSubstr("Read again and compared: every value is the same\n"));
    database->Run({u"CREATE TABLE theirs (a integer)"});
    const Outcome refused = RunDax({u"copy", first, database->ConnectionString()});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr("has rows in velmoraLessons already"));
    EXPECT_THAT(RunDax({u"copy", first, database->ConnectionString(), u"--force"}).output, HasSubstr("theirs\n"));
    const Outcome again = RunDax({u"copy", database->ConnectionString(), back});
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_THAT(again.output, HasSubstr("has no such tables or columns: theirs\n"));
    const auto tree = [](const Text& file) {
        const std::string shown = RunDax({u"tree", file}).output;
        return shown.substr(shown.find('\n')); // behind the name
    };
    EXPECT_EQ(tree(back), tree(first));

    // What fails leaves no file, and no file changed.
    const struct {
        Text from, to;
        std::string said;
    } failures[] = {
        {back, back, "is the source itself"},
        {back, note, "a.txt' is not a database file"},
        {note, folder.File(u"new.db"), "is not a database file, or it is encrypted. Nothing was copied."},
        {folder.File(u"none.db"), folder.File(u"new.db"), "none.db' does not exist."},
        {back, folder.File(u"none/new.db"), "new.db' cannot be written"},
        {back, u"Driver={No such driver};Database=x;PWD=geheim1", "'x': "},
    };
    for (const auto& [from, to, said] : failures) {
        const Outcome failed = RunDax({u"copy", from, to, u"--force"});
        EXPECT_EQ(failed.exitCode, 3) << said;
        EXPECT_THAT(failed.errors, HasSubstr(said));
        EXPECT_THAT(failed.errors, Not(HasSubstr("geheim1")));
    }
    EXPECT_EQ(Bytes(folder, "a.txt"), "note");
    EXPECT_EQ(Entries(folder), 3u);
}

INSTANTIATE_TEST_SUITE_P(Engines, CommandsTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST(CatalogsTest, ListsRecordsAndRefuses) {
    const TestDatabase connector(Engine::SQLite);
    ExpectSaid(connector.ConnectionString(),
               {{"sample --connector --force", 0, ""},
                {"validate-connector --catalog c --source s --user j.o'neil", 0, "validated on "},
                {"validate-connector --catalog c --source s --user guest", 1, "You do not have access rights"},
                {"validate-connector --catalog c --source \"\" --user admin", 1, "no connector specified"},
                {"catalogs --user anna --default velmora_languages", 0,
                 "  Safety at work  [velmora_safety]  login velmora, administrator\n"
                 "* Sprachen – языки – 言語  [velmora_languages]  login velmora, read and write\n"
                 "  Archive (O'Neil's)  [velmora_archive]  login velmora, read only\n"},
                {"catalogs --user anna --json", 0,
                 "{\"user\":\"anna\",\"superUser\":false,\"catalogs\":[{\"catalog\":\"velmora_safety\",\"title\":"
                 "\"Safety at work\",\"description\":\"What everybody has to know before the first day\","
                 "\"login\":\"velmora\",\"rights\":\"administrator\",\"chosen\":true},"},
                {"catalogs --user guest", 1, ""},
                {"catalogs --user nobody", 1, ""},
                {"catalogs --user юлия --record КАБИНЕТ --os \"OS 語\" --default velmora_archive", 0, ""},
                {"catalogs --user юлия --record КАБИНЕТ --os \"OS 語\" --default velmora_languages", 0, ""},
                {"catalogs --user j.o'neil --record M", 1, ""}});
    EXPECT_EQ(connector.Ask(u"SELECT Count(*) FROM velmoraConnectionHistory WHERE username = 'юлия' AND machineName = "
                            u"'КАБИНЕТ' AND osVersion = 'OS 語' AND lastCatalog = 'velmora_languages'"),
              u"1");
    connector.Run({u"DROP TABLE velmoraDBUsers"});
    ExpectSaid(connector.ConnectionString(), {{"catalogs --user anna", 3, "'dax validate-connector'"}});
}

} // namespace
} // namespace dax::test
