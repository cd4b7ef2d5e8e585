// A fresh database with our tables on each engine there is: SQLite always, the servers where DAX_TEST_POSTGRES and
// DAX_TEST_MARIADB name them.
#pragma once

#include "data/Connection.h"
#include "data/Schema.h"

#include <gtest/gtest.h>

namespace dax::test {

class EngineDatabase {
public:
    EngineDatabase(Engine engine, Schema::Database kind);
    ~EngineDatabase();
    EngineDatabase(const EngineDatabase&) = delete;
    EngineDatabase& operator=(const EngineDatabase&) = delete;

    const Text& ConnectionString() const { return connectionString; }
    const Text& Path() const { return path; } // of the file; empty on a server
    void Run(const Text& statement) const;
    int64_t Count(const Text& table) const;
    // Rows of every table, in the order of the schema.
    std::vector<int64_t> Counts() const;
    // From now on every row for this table is refused with this text, until AcceptInserts.
    void RefuseInserts(const Text& table, const Text& reason) const;
    void AcceptInserts(const Text& table) const;

private:
    Engine engine;
    Schema::Database kind;
    Text serverString, connectionString, path, name;
};

// The server's connection string, empty where none is known.
Text ServerString(Engine engine);

class OnEveryEngine : public testing::TestWithParam<Engine> {
protected:
    void SetUp() override;
};

std::string EngineName(const testing::TestParamInfo<Engine>& info);

// A name in the temporary folder that no other test has.
Text TemporaryPath(const Text& ending);

#define DAX_ON_EVERY_ENGINE(Suite)                                                                                     \
    INSTANTIATE_TEST_SUITE_P(Engines, Suite, testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::MariaDB),     \
                             EngineName)

} // namespace dax::test
