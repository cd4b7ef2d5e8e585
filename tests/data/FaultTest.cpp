// Real faults: what cannot be opened, what breaks while it is open, and that nothing is left open.
#include "base/Error.h"
#include "data/Recordset.h"
#include "support/TestDatabases.h"

namespace dax {

namespace {

Error FailureOfOpen(const Text& connectionString) {
    Connection connection;
    try {
        connection.Open(connectionString);
    } catch (const Error& error) {
        EXPECT_FALSE(connection.IsOpen());
        return error;
    }
    ADD_FAILURE() << "opened: " << ToUtf8(connectionString);
    return {0, u""};
}

bool Tells(const Error& error, const std::string& words) {
    return std::string(error.what()).find(words) != std::string::npos;
}

Text With(const Text& connectionString, const Text& keyword, const Text& value) {
    const size_t begin = connectionString.find(keyword + u"=") + keyword.size() + 1;
    Text result = connectionString;
    return result.replace(begin, std::min(result.find(u';', begin), result.size()) - begin, value);
}

TEST(FaultTest, AFileThatIsNoDatabaseFailsAtOpen) {
    const test::TempFolder folder;
    const Text missing = folder.File(u"missing ü.db"), text = folder.Write(u"text.db", std::string(5000, 'x'));
    const Text access = folder.Write(u"a.db", std::string("\0\1\0\0Standard Jet DB", 19) + std::string(4000, '\0'));
    EXPECT_TRUE(Tells(FailureOfOpen(missing), "does not exist"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / u8"missing ü.db")) << "must not be created";
    EXPECT_TRUE(Tells(FailureOfOpen(text), "is not a database"));
    EXPECT_TRUE(Tells(FailureOfOpen(folder.File(u"")), "is a folder"));
    EXPECT_TRUE(Tells(FailureOfOpen(u"Driver=SQLite3;Database=" + access), "Microsoft Access file"));
}

TEST(FaultTest, PathsOfEveryKindOpen) {
    const test::TempFolder folder;
    for (const Text name : {u"kurs ü 漢😀.db", u"a=b.db", u"a{b}.db", u"100% 'x'.db", u"#[x]@!.db"}) {
        const Text path = folder.Write(name, "");
        Connection connection;
        ASSERT_NO_THROW(connection.Open(path)) << ToUtf8(path);
        connection.Execute(u"CREATE TABLE t (a integer)");
        connection.Close();
        Recordset recordset;
        recordset.Open(u"SELECT a FROM t", u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\"" + path + u"\"");
        EXPECT_TRUE(recordset.Eof());
    }
}

TEST(FaultTest, AMissingDriverIsNamedWithTheWayToGetIt) {
    const Error server = FailureOfOpen(u"Driver={PostgreSQL Of Nowhere};Server=127.0.0.1;UID=u");
    EXPECT_TRUE(Tells(server, "\"PostgreSQL Of Nowhere\" is not installed") && Tells(server, "odbc-postgresql") &&
                Tells(server, "psqlODBC"))
        << server.what();
    EXPECT_EQ(server.Number(), ErrorNumbers::Unspecified);
    EXPECT_TRUE(Tells(FailureOfOpen(u"DSN=dax_no_such_source"), "not set up"));
}

TEST(FaultTest, ALockedFileAndAClosedConnectionSaySo) {
    const test::TestDatabase database(Engine::SQLite);
    Connection writer;
    writer.Open(database.ConnectionString());
    writer.Execute(u"CREATE TABLE t (a integer)");
    writer.Execute(u"PRAGMA locking_mode = EXCLUSIVE");
    writer.Execute(u"INSERT INTO t VALUES (1)");
    EXPECT_EQ(FailureOfOpen(database.ConnectionString()).Number(), ErrorNumbers::Timeout);
    writer.Close();
    EXPECT_THROW(writer.Execute(u"SELECT 1"), Error);
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM t"), u"1");
}

class ServerTest : public test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, ServerTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), test::EngineName);

TEST_P(ServerTest, AWrongPasswordAMissingCatalogAndAStoppedServer) {
    const Text& good = database->ConnectionString();
    const Error password = FailureOfOpen(With(good, u"PWD", u"wrong"));
    EXPECT_EQ(password.Number(), ErrorNumbers::Authentication) << password.what();
    const Error catalog = FailureOfOpen(With(good, u"Database", u"dax_no_such_catalog"));
    EXPECT_TRUE(Tells(catalog, "dax_no_such_catalog")) << catalog.what();
    const Error server = FailureOfOpen(With(good, u"Port", u"1")); // nothing listens there
    EXPECT_EQ(server.Number(), ErrorNumbers::Unspecified) << server.what();
    EXPECT_FALSE(server.Description().empty());
}

#ifdef __linux__
class HandleTest : public test::EngineTest {
protected:
    static long OpenFiles() {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, HandleTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(HandleTest, NothingStaysOpenOnAnyPath) {
    database->Run({u"CREATE TABLE t (a integer)", u"INSERT INTO t VALUES (1)"});
    const long before = OpenFiles();
    for (int i = 0; i < 3; ++i) {
        Connection connection;
        connection.Open(database->ConnectionString());
        connection.BeginTrans();
        connection.Execute(u"INSERT INTO t VALUES (2)");
        Recordset open, failing;
        open.Open(u"SELECT a FROM t", connection);
        EXPECT_THROW(failing.Open(u"SELECT b FROM t", database->ConnectionString()), Error);
        EXPECT_THROW(connection.Execute(u"SELEKT"), Error);
        open.Close();
    }
    EXPECT_EQ(OpenFiles(), before);
}
#endif

} // namespace

} // namespace dax
