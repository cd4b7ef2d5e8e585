// The whole start of an application by the real program, on every engine.
#include "TypicalStart.h"
#include "Program.h"

#include "data/CatalogConnection.h"

#include <gmock/gmock.h>

namespace dax::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class TypicalStartTest : public ::testing::TestWithParam<Engine> {};

TEST_P(TypicalStartTest, FromTheConnectorToTheRecord) {
    DAX_NEEDS_ENGINE(GetParam());
    const TypicalStart start(GetParam());
    const TempFolder folder;
    const auto run = [](const std::vector<Text>& words, const std::string& part, int exitCode = 0) {
        const Outcome outcome = RunDax(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.output << outcome.errors;
        EXPECT_THAT(outcome.output + outcome.errors, HasSubstr(part));
        return outcome.output;
    };
    const Text connector = start.Connector(), catalog = start.Catalog();
    run({u"validate-connector", connector, u"--source", u"s", u"--catalog", u"c", u"--user", u"anna"},
        "connector validated on ");
    run({u"catalogs", connector, u"--user", u"anna"}, "* Kurs 語  [" + ToUtf8(catalog) + "]");
    Text content = FromUtf8(run({u"pick", connector, u"--user", u"anna", u"--catalog", catalog}, ToUtf8(catalog)));
    content.pop_back(); // the line's end
    run({u"validate", content}, ToUtf8(catalog) + (GetParam() == Engine::SQLite ? "' validated" : "\" validated"));
    run({u"tree", content}, "├─ Grundlagen 語  [G-1]  1 group, 2 lessons\n│  ├─ O'Neil's \"first\"  [L-1]\n");
    EXPECT_THAT(run({u"info", content, u"L-2"}, "lesson\nidentifier: L-2\n"), EndsWith("(1 user): reading lesson\n"));
    run({u"map", content, u"L-1", u"--move", u"INTRO", u"--to", u"down"}, "Main (3)  default map\n├─ What is it?");
    EXPECT_THAT(
        run({u"locks", content, u"--invalid", u"--delete", u"--as", u"anna", u"--admin", u"--yes"}, "(deleted)"),
        EndsWith("\n2 of 2 locks deleted\n"));
    run({u"catalogs", connector, u"--user", u"anna", u"--default", catalog, u"--record", u"STUDIO"}, "Recorded: anna");
    start.ExpectDone(u"STUDIO");
    if (GetParam() != Engine::SQLite) return; // the rest on one engine is enough

    run({u"pick", connector, u"--user", u"guest"}, "may not open any catalog", 1);
    run({u"pick", connector, u"--user", u"anna", u"--catalog", u"other"}, "may not open a catalog 'other'", 1);
    // The map by way of a file, as scripts do, and back as it was.
    for (const Text option : {u"--utf-16", u"--trace"}) {
        const Text file = folder.File(u"語 " + option);
        run({u"lesson", content, u"L-1", u"--export", file, option}, "Written: ");
        run({u"map", content, u"L-1", u"--move", u"INTRO", u"--to", u"up"}, "├─ Welcome");
        run({u"lesson", content, u"L-1", u"--import", file}, "Saved: l1\n");
        start.ExpectDone(u"STUDIO");
    }
    run({u"lesson", content, u"L-1", u"--import", folder.Write(u"none", "nothing")}, "holds no lesson: Line 1", 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, TypicalStartTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST(CatalogConnectionTest, KeepsTheServerAndReplacesTheRest) {
    const struct {
        Text connector, catalog, login, connection;
    } cases[] = {
        {u"/srv/all.db", u"course", u"x", u"/srv/course.db"},
        {u"C:\\data\\all.db", u"course.mdb", u"", u"C:\\data\\course.mdb"},
        {u"all.db", u"D:\\other\\course", u"", u"D:\\other\\course"},
        {u"Driver={SQLite3};Database=/srv/all.db", u"course", u"", u"Driver={SQLite3};Database=/srv/course.db;"},
        {u"Driver=D;Server=h;Database=c;UID=me;PWD=old;X=y", u"a;b", u"you",
         u"Driver={D};Server=h;X=y;Database={a;b};UID=you;PWD={p}}w};"},
        {u"Provider=MSDASQL;Extended Properties='DSN=s;UID=me;Database=c';Initial Catalog=d", u"a", u"you",
         u"DSN=s;Provider=MSDASQL;Database=a;UID=you;PWD={p}}w};"},
        {u"Driver=D;database=c;uid=me;pwd=old", u"a", u"", u"Driver={D};uid=me;pwd=old;Database=a;"},
        {u"Provider=SQLOLEDB;Data Source=h;Initial Catalog=c;Integrated Security=SSPI", u"a", u"you",
         u"Provider=SQLOLEDB;Data Source=h;Initial Catalog=a;User ID=you;Password={p}}w};"},
        {u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\x\\all.mdb", u"a", u"",
         u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\x\\a.mdb;"},
    };
    for (const auto& [connector, catalog, login, connection] : cases) {
        EXPECT_EQ(ToUtf8(CatalogConnection(connector, catalog, login, u"p}w")), ToUtf8(connection));
    }
}

// With a name that no engine takes as it stands.
TEST(NewCatalogTest, IsMadeOnTheServer) {
    for (const Engine engine : {Engine::PostgreSQL, Engine::MariaDB}) {
        if (!SkipReason(engine).empty()) continue;
        const TestDatabase connector(engine);
        const Text name = connector.Name() + u"-New", quote(1, engine == Engine::PostgreSQL ? u'"' : u'`');
        const Text made = CatalogConnection(connector.ConnectionString(), name, {}, {});
        for (const int exitCode : {0, 3}) { // the second time it is there
            const Outcome outcome = RunDax({u"create", made, u"--new-catalog"});
            EXPECT_EQ(outcome.exitCode, exitCode) << outcome.errors;
        }
        EXPECT_EQ(RunDax({u"validate", made}).exitCode, 0);
        connector.Run({u"DROP DATABASE " + quote + name + quote});
    }
}

} // namespace
} // namespace dax::test
