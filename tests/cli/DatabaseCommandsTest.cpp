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
using ::testing::IsEmpty;
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
        const Outcome made = RunDax({u"sample", file, u"--lessons", lessons});
        ASSERT_EQ(made.exitCode, 0) << made.errors;
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons WHERE lessonType = 1"), lessons);
        // Every parent is there and is a group one level higher; no two siblings share a place.
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons c LEFT JOIN velmoraLessons p ON c.parentID = "
                            u"p.lessonID WHERE NOT ((c.parentID = '' AND c.indentLevel = 1) OR (p.lessonType = 0 AND "
                            u"c.indentLevel = p.indentLevel + 1))"),
                  u"0");
        EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM (SELECT parentID FROM velmoraLessons GROUP BY parentID, "
                            u"sortPosition HAVING Count(*) > 1) AS twice"),
                  u"0");
        const Outcome valid = RunDax({u"validate", file});
        EXPECT_EQ(valid.exitCode, 0) << valid.output << valid.errors;
        EXPECT_THAT(valid.output, HasSubstr("file '" + ToUtf8(file) + "' validated on "));
        EXPECT_THAT(valid.output, HasSubstr("discussions: supported"));
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
    for (const Text command : {u"sample", u"create"}) {
        const Outcome refused = RunDax({command, file});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_THAT(refused.errors, HasSubstr("'" + ToUtf8(file) + "' exists already"));
        EXPECT_EQ(Bytes(folder, "diary.txt"), "dear diary");
    }
    folder.Write(u"diary.txt-journal", "left behind by a killed program");
    EXPECT_EQ(RunDax({u"create", file, u"--force"}).exitCode, 0);
    EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraLessons"), u"0");
    EXPECT_EQ(Entries(folder), 1u);

    const Outcome noFolder = RunDax({u"sample", folder.File(u"none/x.db")});
    EXPECT_EQ(noFolder.exitCode, 3);
    EXPECT_THAT(noFolder.errors, HasSubstr("x.db' cannot be written"));
    EXPECT_EQ(RunDax({u"sample", folder.File(u""), u"--force"}).exitCode, 1);
}

TEST(ValidateTest, PrintsWhatThePanelShows) {
    const TempFolder folder;
    const Text missing = folder.File(u"none.db"), noDatabase = folder.Write(u"text.db", std::string(5000, 'x')),
               empty = folder.Write(u"empty.db", "");
    const struct {
        std::vector<Text> words;
        std::string title, rest;
    } cases[] = {
        {{missing}, "file not found\n", "'" + ToUtf8(missing) + "' was not found.  Select a valid velmora database"},
        {{missing, u"--catalog", u""}, "no file selected\n", "You must select a valid velmora database"},
        {{noDatabase}, "cannot open database connection\n", "\n\nerror details\n"},
        {{empty}, "invalid database structure\n", "velmoraAutonumbers"},
        {{u"Driver={No such driver};Database=x", u"--catalog", u"Kurs 語"},
         "cannot open database connection\n",
         "to 'Kurs 語'.\n\nCheck with your administrator"},
    };
    for (const auto& [words, title, rest] : cases) {
        std::vector<Text> all = {u"validate"};
        all.insert(all.end(), words.begin(), words.end());
        const Outcome outcome = RunDax(all);
        EXPECT_EQ(outcome.exitCode, 1) << title;
        EXPECT_THAT(outcome.output, ::testing::StartsWith(title));
        EXPECT_THAT(outcome.output, HasSubstr(rest));
        EXPECT_THAT(outcome.errors, IsEmpty());
    }
    EXPECT_FALSE(modGeneric::FileExists(missing));
}

TEST(ValidateTest, TracesEachStatement) {
    const TempFolder folder;
    const Text file = folder.File(u"a.db");
    ASSERT_EQ(RunDax({u"create", file}).exitCode, 0);
    for (const std::vector<Text>& words :
         {std::vector<Text>{u"validate", file, u"--trace"}, {u"--trace", u"validate", file}}) {
        const Outcome traced = RunDax(words);
        EXPECT_EQ(traced.exitCode, 0);
        EXPECT_THAT(traced.errors, HasSubstr("SELECT nextNumber, ignored FROM velmoraAutonumbers LIMIT 1\n"));
        EXPECT_THAT(traced.errors, HasSubstr("INSERT INTO velmoraUserlocks (lessonID, username"));
        EXPECT_THAT(traced.output, Not(HasSubstr("SELECT")));
    }
    EXPECT_EQ(Ask(file, u"SELECT Count(*) FROM velmoraUserLocks"), u"0");
}

class CommandsTest : public EngineTest {
protected:
    // Without what a driver keeps: sanitizers report that on standard error, on machines that do not suppress it.
    Outcome Run(Text command, std::vector<Text> options) const {
        options.insert(options.begin(), {std::move(command), database->ConnectionString()});
        return RunDax(options);
    }
};

TEST_P(CommandsTest, CourseOnAnyEngine) {
    const std::vector<Text> options = GetParam() == Engine::SQLite ? std::vector<Text>{u"--lessons", u"150", u"--force"}
                                                                   : std::vector<Text>{u"--lessons", u"150"};
    const Outcome made = Run(u"sample", options);
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonType = 1"), u"150");
    EXPECT_EQ(
        database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonTitle LIKE 'Party time 🎉👩‍🏫 %'"),
        u"8");
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons WHERE lessonTitle = 'Безопасность данных'"), u"1");

    const Outcome valid = Run(u"validate", {});
    EXPECT_EQ(valid.exitCode, 0) << valid.output << valid.errors;
    EXPECT_THAT(valid.output, HasSubstr(ToUtf8(database->Name())));

    EXPECT_EQ(Run(u"sample", {}).exitCode, 1) << "there is a course already";
    const Outcome replaced = Run(u"create", {u"--force"});
    EXPECT_EQ(replaced.exitCode, 0) << replaced.errors;
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraLessons"), u"0");

    database->Run({u"DROP TABLE talkPosts"});
    EXPECT_THAT(Run(u"validate", {}).output, HasSubstr("discussions: not supported"));
    database->Run({u"DROP TABLE velmoraMilestones"});
    const Outcome broken = Run(u"validate", {u"--catalog", u"Kurs"});
    EXPECT_EQ(broken.exitCode, 1);
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
        {back, back, "is the database that would be copied"},
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
    const auto run = [&](Text command, std::vector<Text> options) {
        options.insert(options.begin(), {std::move(command), connector.ConnectionString(), u"--user"});
        return RunDax(options);
    };
    ASSERT_EQ(RunDax({u"sample", connector.ConnectionString(), u"--connector", u"--force"}).exitCode, 0);
    for (const auto& [user, source, said] : {std::tuple(u"admin", u"s", "validated on "),
                                             {u"j.o'neil", u"s", "validated"},
                                             {u"guest", u"s", "no databases available\nYou do not have access rights"},
                                             {u"admin", u"", "no connector specified"}}) {
        EXPECT_THAT(run(u"validate-connector", {user, u"--source", source, u"--catalog", u"c"}).output,
                    HasSubstr(said));
    }
    EXPECT_EQ(run(u"catalogs", {u"anna", u"--default", u"velmora_languages"}).output,
              "  Safety at work  [velmora_safety]  login velmora, administrator\n"
              "* Sprachen – языки – 言語  [velmora_languages]  login velmora, read and write\n"
              "  Archive (O'Neil's)  [velmora_archive]  login velmora, read only\n");
    EXPECT_THAT(
        run(u"catalogs", {u"anna", u"--json"}).output,
        HasSubstr("{\"user\":\"anna\",\"superUser\":false,\"catalogs\":[{\"catalog\":\"velmora_safety\",\"title\":"
                  "\"Safety at work\",\"description\":\"What everybody has to know before the first day\","
                  "\"login\":\"velmora\",\"rights\":\"administrator\",\"chosen\":true},"));
    for (const Text user : {u"guest", u"nobody"}) EXPECT_EQ(run(u"catalogs", {user}).exitCode, 1);
    for (const Text catalog : {u"velmora_archive", u"velmora_languages"}) {
        const Outcome recorded =
            run(u"catalogs", {u"юлия", u"--record", u"КАБИНЕТ", u"--os", u"OS 語", u"--default", catalog});
        EXPECT_EQ(recorded.exitCode, 0) << recorded.errors;
    }
    EXPECT_EQ(connector.Ask(u"SELECT Count(*) FROM velmoraConnectionHistory WHERE username = 'юлия' AND machineName = "
                            u"'КАБИНЕТ' AND osVersion = 'OS 語' AND lastCatalog = 'velmora_languages'"),
              u"1");
    EXPECT_EQ(run(u"catalogs", {u"j.o'neil", u"--record", u"M"}).exitCode, 1);
    connector.Run({u"DROP TABLE velmoraDBUsers"});
    const Outcome broken = run(u"catalogs", {u"anna"});
    EXPECT_EQ(broken.exitCode, 3);
    EXPECT_THAT(broken.errors, HasSubstr("'dax validate-connector'"));
}

} // namespace
} // namespace dax::test
