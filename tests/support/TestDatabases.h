// Real databases for tests: fresh SQLite files, and a fresh database of its own on a real PostgreSQL or MariaDB server.
#pragma once

#include "base/Error.h"
#include "data/Connection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace dax::test {

// A folder of its own, removed with all that is in it.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::filesystem::path& Path() const { return path; }
    // The path of a file in it, in the form in which hosts write paths.
    Text File(const Text& name) const { return (path / name).u16string(); }
    // The same, with the file written.
    Text Write(const Text& name, const std::string& bytes) const;

private:
    std::filesystem::path path;
};

// All bytes of a file; none when it is not there.
std::string ReadFile(const std::filesystem::path& path);

struct Failure : Error {
    Failure(const Error& error, double after) : Error(error), seconds(after) {}
    bool Mentions(const std::string& words) const { return std::string(what()).find(words) != std::string::npos; }
    double seconds; // until it was reported
};

// What the action throws; a test whose action throws nothing has failed.
template <typename Action>
Failure FailureOf(Action action) {
    const auto begin = std::chrono::steady_clock::now();
    Error error(0, u"no error");
    try {
        action();
        ADD_FAILURE() << "no error";
    } catch (const Error& thrown) {
        error = thrown;
    }
    return {error, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
}

// Of opening a connection, which then is not open.
Failure FailureOfOpen(const Text& connectionString);

// SQLite, PostgreSQL, MariaDB: the engines that run here.
std::vector<Engine> AllEngines();
std::string EngineName(const ::testing::TestParamInfo<Engine>& info);
// Why the engine cannot be tested now (the variable that would name its server); empty when it can.
std::string SkipReason(Engine engine);

// An empty database, dropped at the end; connections to it must be closed by then.
class TestDatabase {
public:
    explicit TestDatabase(Engine engine);
    // On another server than the tests' usual one.
    TestDatabase(Engine engine, const Text& administratorsString);
    ~TestDatabase();
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    Engine Kind() const { return engine; }
    const Text& ConnectionString() const { return connectionString; }
    // The same database through another administrator's string: another node of the cluster.
    Text ConnectionStringThrough(const Text& administratorsString) const {
        return administratorsString + u";Database=" + name; // of a repeated keyword the last one counts
    }
    // The catalog's name, or the path of the file.
    const Text& Name() const { return name; }
    // Runs statements on a connection of its own.
    void Run(const std::vector<Text>& statements) const;
    // The value of the first field of the first row, as text.
    Text Query(const Text& query) const;

private:
    Engine engine;
    TempFolder folder;
    Text adminString, connectionString, name;
};

// A killed session may still be running in the server: waits until there is none but its own.
void AwaitNoSessions(const TestDatabase& database);

#ifndef _WIN32
// The status of the work as waitpid returns it, run in a process of its own that ends with this exit code.
int StatusOfChild(const std::function<int()>& work);
// This process is then killed by a signal: with what it has open, and whatever it is doing.
void EndAfter(long microseconds);
#endif
// A variable of the environment, where it is set: DAX_KILLS, DAX_FUZZ_INPUTS.
int Setting(const char* variable, int usual);

// A test that runs once for each engine, on a database of its own; skipped where there is no server.
// INSTANTIATE_TEST_SUITE_P(Engines, MyTest, ::testing::ValuesIn(AllEngines()), EngineName);
class EngineTest : public ::testing::TestWithParam<Engine> {
protected:
    void SetUp() override;
    std::unique_ptr<TestDatabase> database;
};

// For tests on one engine: ends the test, skipped, when the engine cannot be had.
#define DAX_NEEDS_ENGINE(engine)                                                                                       \
    if (const std::string why = dax::test::SkipReason(engine); !why.empty()) GTEST_SKIP() << why

} // namespace dax::test
