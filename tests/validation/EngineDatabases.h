// A fresh database with our tables, on each engine there is.
#pragma once

#include "support/TestDatabases.h"

#include "data/Schema.h"
#include "data/modDB.h"

#include <functional>

namespace dax::test {

class EngineDatabase : public TestDatabase {
public:
    EngineDatabase(Engine engine, Schema::Database useKind) : TestDatabase(engine), kind(useKind) {
        administrator.Open(ConnectionString());
        for (const Text& statement : Schema::CreateStatements(kind, engine)) Run(statement);
    }

    void Run(const Text& statement) const { administrator.Execute(statement); }
    Text Count(const Text& table) const { return Ask(u"SELECT Count(*) FROM " + table); }
    // Rows of every table, in the order of the schema.
    std::vector<Text> Counts() const {
        std::vector<Text> counts;
        for (const Schema::Table& table : Schema::Tables(kind)) counts.push_back(Count(Text(table.name)));
        return counts;
    }
    // Takes away each table and each column, one at a time, and calls with the table and the name of what is missing.
    void WithoutEach(const std::function<void(const Schema::Table&, const Text&)>& act) const {
        for (const Schema::Table& table : Schema::Tables(kind)) {
            const Text name(table.name), alter = u"ALTER TABLE " + name + u" RENAME ";
            Run(alter + u"TO gone");
            act(table, name);
            Run(u"ALTER TABLE gone RENAME TO " + name);
            for (const Schema::Column& column : table.columns) {
                Run(alter + u"COLUMN " + Text(column.name) + u" TO gone");
                act(table, Text(column.name));
                Run(alter + u"COLUMN gone TO " + Text(column.name));
            }
        }
    }
    // Every row for this table is refused with this text while that is done.
    void Refusing(const Text& table, const Text& reason, const std::function<void()>& act) const {
        const bool isPostgres = Kind() == Engine::PostgreSQL;
        const Text trigger = u"CREATE TRIGGER refuse BEFORE INSERT ON " + table, quoted = modDB::QuoteSQLString(reason);
        if (isPostgres)
            Run(u"CREATE OR REPLACE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION " +
                quoted + u"; END $$");
        Run(trigger + (Kind() == Engine::SQLite ? u" BEGIN SELECT RAISE(ABORT, " + quoted + u"); END"
                       : isPostgres             ? u" FOR EACH ROW EXECUTE FUNCTION refuse()"
                                    : u" FOR EACH ROW SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = " + quoted));
        act();
        Run(u"DROP TRIGGER refuse" + (isPostgres ? u" ON " + table : Text()));
    }

private:
    Schema::Database kind;
    mutable Connection administrator; // open as long as the database is there
};

class OnEveryEngine : public testing::TestWithParam<Engine> {
protected:
    void SetUp() override { DAX_NEEDS_ENGINE(GetParam()); }
};

#define DAX_ON_EVERY_ENGINE(Suite) INSTANTIATE_TEST_SUITE_P(Engines, Suite, testing::ValuesIn(AllEngines()), EngineName)

} // namespace dax::test
