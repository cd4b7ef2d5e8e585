// From a connector to its catalogs.
#include "TypicalStart.h"
#include "Program.h"

#include "data/CatalogConnection.h"

#include <gmock/gmock.h>

namespace dax::test {
namespace {

using ::testing::HasSubstr;

// The map of a lesson by way of a file, as scripts do, and back as it was; what the two ways to a catalog refuse.
TEST(TypicalStartTest, ByWayOfFiles) {
    const TypicalStart start(Engine::SQLite);
    const TempFolder folder;
    ExpectSaid(start.Connector(), {{"pick --user guest", 1, "may not open any catalog"},
                                   {"pick --user anna --catalog other", 1, "may not open a catalog 'other'"}});
    Text content = FromUtf8(RunOn(start.Connector(), "pick --user anna --catalog " + ToUtf8(start.Catalog())).output);
    content.pop_back(); // the line's end
    const auto pages = [&] { return RunOn(content, "map L-1").output; };
    const std::string before = pages();
    for (const Text option : {u"--utf-16", u"--trace"}) {
        const Text file = folder.File(u"語 " + option);
        EXPECT_EQ(RunDax({u"lesson", content, u"L-1", u"--export", file, option}).exitCode, 0);
        ExpectSaid(content, {{"map L-1 --move INTRO --to down", 0, "├─ What is it?"}});
        EXPECT_EQ(RunDax({u"lesson", content, u"L-1", u"--import", file}).output, "Saved: l1\n");
        EXPECT_EQ(pages(), before);
    }
    EXPECT_THAT(RunDax({u"lesson", content, u"L-1", u"--import", folder.Write(u"none", "nothing")}).errors,
                HasSubstr("holds no lesson: Line 1"));
}

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
