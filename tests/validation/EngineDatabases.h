// A fresh database with our tables, on each engine there is.
#pragma once

#include "support/TestDatabases.h"

#include "data/Schema.h"

#include <functional>

namespace dax::test {

class EngineDatabase {
public:
    EngineDatabase(Engine engine, Schema::Database kind);

    const Text& ConnectionString() const { return database.ConnectionString(); }
    const Text& Path() const { return database.Name(); } // of a SQLite file
    void Run(const Text& statement) const { administrator.Execute(statement); }
    int64_t Count(const Text& table) const;
    // Rows of every table, in the order of the schema.
    std::vector<int64_t> Counts() const;
    // Takes away each table and each column, one at a time, and calls with the table and the name of what is missing.
    void WithoutEach(const std::function<void(const Schema::Table&, const Text&)>& act) const;
    // From now on every row for this table is refused with this text, until AcceptInserts.
    void RefuseInserts(const Text& table, const Text& reason) const;
    void AcceptInserts(const Text& table) const;

private:
    Schema::Database kind;
    TestDatabase database;
    mutable Connection administrator; // open as long as the database is there
};

// The server's connection string, empty where none is known.
Text ServerString(Engine engine);

class OnEveryEngine : public testing::TestWithParam<Engine> {
protected:
    void SetUp() override { DAX_NEEDS_ENGINE(GetParam()); }
};

#define DAX_ON_EVERY_ENGINE(Suite) INSTANTIATE_TEST_SUITE_P(Engines, Suite, testing::ValuesIn(AllEngines()), EngineName)

} // namespace dax::test
