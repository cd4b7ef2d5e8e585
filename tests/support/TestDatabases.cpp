#include "support/TestDatabases.h"

#include "base/Value.h"
#include "data/Dialect.h"
#include "data/Recordset.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <random>
#include <thread>

#ifndef _WIN32
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#ifdef __SANITIZE_ADDRESS__
// The drivers lose up to a kilobyte for each connection; the leak check is for our own.
extern "C" const char* __lsan_default_suppressions() { return "leak:libmaodbc\nleak:psqlodbcw"; }
#endif

namespace dax::test {

namespace {

std::string UniqueName() {
    static std::mt19937_64 generator{std::random_device{}()};
    return "daxtest_" + std::to_string(generator());
}

const char* VariableOf(Engine engine) {
    return engine == Engine::PostgreSQL ? "DAX_TEST_POSTGRES"
           : engine == Engine::MariaDB  ? "DAX_TEST_MARIADB"
                                        : nullptr;
}

} // namespace

TempFolder::TempFolder() : path(std::filesystem::temp_directory_path() / UniqueName()) {
    std::filesystem::create_directories(path);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

Text TempFolder::Write(const Text& name, const std::string& bytes) const {
    std::ofstream(path / name, std::ios::binary) << bytes;
    return File(name);
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Failure FailureOfOpen(const Text& connectionString) {
    Connection connection;
    const Failure failure = FailureOf([&] { connection.Open(connectionString); });
    EXPECT_FALSE(connection.IsOpen()) << ToUtf8(connectionString);
    return failure;
}

std::vector<Engine> AllEngines() { return {Engine::SQLite, Engine::PostgreSQL, Engine::MariaDB}; }

std::string EngineName(const ::testing::TestParamInfo<Engine>& info) { return ToUtf8(DialectOf(info.param).name); }

std::string SkipReason(Engine engine) {
    const char* variable = VariableOf(engine);
    if (!variable || std::getenv(variable)) return {};
    return std::string(variable) + " does not tell where the server is";
}

TestDatabase::TestDatabase(Engine kind)
    : TestDatabase(kind, kind == Engine::SQLite ? Text() : FromUtf8(std::getenv(VariableOf(kind)))) {}

TestDatabase::TestDatabase(Engine kind, const Text& administratorsString)
    : engine(kind), adminString(administratorsString) {
    if (engine == Engine::SQLite) {
        connectionString = name = folder.Write(u"test.db", "");
        return;
    }
    name = FromUtf8(UniqueName());
    Connection admin;
    admin.Open(adminString);
    admin.Execute(u"CREATE DATABASE " + name);
    connectionString = ConnectionStringThrough(adminString);
}

TestDatabase::~TestDatabase() {
    if (engine == Engine::SQLite) return;
    try {
        Connection admin;
        admin.Open(adminString);
        // A connection that was closed a moment ago may not have ended yet on the server.
        admin.Execute(u"DROP DATABASE " + name + (engine == Engine::PostgreSQL ? u" WITH (FORCE)" : u""));
    } catch (const std::exception& error) {
        ADD_FAILURE() << "the database of the test could not be dropped: " << error.what();
    }
}

void TestDatabase::Run(const std::vector<Text>& statements) const {
    Connection connection;
    connection.Open(connectionString);
    for (const Text& statement : statements) connection.Execute(statement);
}

Text TestDatabase::Query(const Text& query) const {
    Recordset recordset;
    recordset.Open(query, connectionString);
    return recordset.Eof() ? Text() : Text(recordset.FieldText(0));
}

void AwaitNoSessions(const TestDatabase& database) {
    const Text others = database.Kind() == Engine::PostgreSQL
                            ? u"SELECT Count(*) FROM pg_stat_activity WHERE datname = current_database() AND pid <> "
                              u"pg_backend_pid() AND backend_type = 'client backend'"
                            : u"SELECT Count(*) FROM information_schema.processlist WHERE db = database() AND id <> "
                              u"connection_id()";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (database.Kind() != Engine::SQLite && database.Query(others) != u"0") {
        if (std::chrono::steady_clock::now() > end) FAIL() << "a session of another does not end";
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

#ifndef _WIN32

int StatusOfChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    EXPECT_TRUE(child > 0 && waitpid(child, &status, 0) == child);
    return status;
}

void EndAfter(long microseconds) {
    const itimerval timer{{0, 0}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

#endif

int Setting(const char* variable, int usual) {
    const char* const value = std::getenv(variable);
    return value ? std::atoi(value) : usual;
}

void EngineTest::SetUp() {
    DAX_NEEDS_ENGINE(GetParam());
    database = std::make_unique<TestDatabase>(GetParam());
}

} // namespace dax::test
