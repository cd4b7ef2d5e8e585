#include "EngineDatabases.h"

#include "data/Recordset.h"
#include "data/modDB.h"

#include <cstdlib>

namespace dax::test {

Text ServerString(Engine engine) {
    const char* value = std::getenv(engine == Engine::PostgreSQL ? "DAX_TEST_POSTGRES" : "DAX_TEST_MARIADB");
    return value ? FromUtf8(value) : Text();
}

EngineDatabase::EngineDatabase(Engine engine, Schema::Database useKind) : kind(useKind), database(engine) {
    administrator.Open(database.ConnectionString());
    for (const Text& statement : Schema::CreateStatements(kind, engine)) administrator.Execute(statement);
}

int64_t EngineDatabase::Count(const Text& table) const {
    Recordset recordset;
    recordset.Open(u"SELECT Count(*) AS n FROM " + table, administrator);
    return recordset.FieldNumber(0, -1);
}

std::vector<int64_t> EngineDatabase::Counts() const {
    std::vector<int64_t> counts;
    for (const Schema::Table& table : Schema::Tables(kind)) counts.push_back(Count(Text(table.name)));
    return counts;
}

void EngineDatabase::WithoutEach(const std::function<void(const Schema::Table&, const Text&)>& act) const {
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

void EngineDatabase::RefuseInserts(const Text& table, const Text& reason) const {
    const Text quoted = modDB::QuoteSQLString(reason);
    const Text trigger = u"CREATE TRIGGER refuse_" + table + u" BEFORE INSERT ON " + table;
    if (database.Kind() == Engine::SQLite) {
        Run(trigger + u" BEGIN SELECT RAISE(ABORT, " + quoted + u"); END");
    } else if (database.Kind() == Engine::PostgreSQL) {
        Run(u"CREATE OR REPLACE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION " +
            quoted + u"; END $$");
        Run(trigger + u" FOR EACH ROW EXECUTE FUNCTION refuse()");
    } else {
        Run(trigger + u" FOR EACH ROW SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = " + quoted);
    }
}

void EngineDatabase::AcceptInserts(const Text& table) const {
    Run(u"DROP TRIGGER refuse_" + table + (database.Kind() == Engine::PostgreSQL ? u" ON " + table : Text()));
}

} // namespace dax::test
