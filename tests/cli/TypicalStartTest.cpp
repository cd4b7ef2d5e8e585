// The whole start of an application by the real program, on every engine.
#include "TypicalStart.h"
#include "Program.h"

#include "data/CatalogConnection.h"

#include <gmock/gmock.h>

namespace dax::test {
namespace {

using ::testing::HasSubstr;

class TypicalStartTest : public ::testing::TestWithParam<Engine> {};

TEST_P(TypicalStartTest, FromTheConnectorToTheRecord) {
    DAX_NEEDS_ENGINE(GetParam());
    const TypicalStart start(GetParam());
    const TempFolder folder;
    const Text connector = start.Connector();
    const std::string catalog = ToUtf8(start.Catalog());
    ExpectSaid(connector, {{"validate-connector --source s --catalog c --user anna", 0, "connector validated on "},
                           {"catalogs --user anna", 0, "* Kurs 語  [" + catalog + "]"}});
    Text content = FromUtf8(RunOn(connector, "pick --user anna --catalog \"" + catalog + "\"").output);
    content.pop_back(); // the line's end
    ExpectSaid(content, {{"validate", 0, catalog + (GetParam() == Engine::SQLite ? "' validated" : "\" validated")},
                         {"tree", 0, "├─ Grundlagen 語  [G-1]  1 group, 2 lessons\n│  ├─ O'Neil's \"first\"  [L-1]\n"},
                         {"info L-2", 0, "lesson\nidentifier: L-2\n"},
                         {"info L-2", 0, "(1 user): reading lesson\n"},
                         {"map L-1 --move INTRO --to down", 0, "Main (3)  default map\n├─ What is it?"},
                         {"locks --invalid --delete --as anna --admin --yes", 0, "\n2 of 2 locks deleted\n"}});
    ExpectSaid(connector,
               {{"catalogs --user anna --record STUDIO --default \"" + catalog + "\"", 0, "Recorded: anna"}});
    start.ExpectDone(u"STUDIO");
    if (GetParam() != Engine::SQLite) return; // the rest on one engine is enough

    ExpectSaid(connector, {{"pick --user guest", 1, "may not open any catalog"},
                           {"pick --user anna --catalog other", 1, "may not open a catalog 'other'"}});
    // The map by way of a file, as scripts do, and back as it was.
    for (const Text option : {u"--utf-16", u"--trace"}) {
        const Text file = folder.File(u"語 " + option);
        EXPECT_EQ(RunDax({u"lesson", content, u"L-1", u"--export", file, option}).exitCode, 0);
        ExpectSaid(content, {{"map L-1 --move INTRO --to up", 0, "├─ Welcome"}});
        EXPECT_EQ(RunDax({u"lesson", content, u"L-1", u"--import", file}).output, "Saved: l1\n");
        start.ExpectDone(u"STUDIO");
    }
    EXPECT_THAT(RunDax({u"lesson", content, u"L-1", u"--import", folder.Write(u"none", "nothing")}).errors,
                HasSubstr("holds no lesson: Line 1"));
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
