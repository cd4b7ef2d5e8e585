#include "EngineDatabases.h"

#include "content/Utility.h"
#include "data/Recordset.h"
#include "data/modDB.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace dax::test {

namespace {

std::filesystem::path FilePath(const Text& path) { return std::filesystem::path(path); }

} // namespace

Text ServerString(Engine engine) {
    const char* value = std::getenv(engine == Engine::PostgreSQL ? "DAX_TEST_POSTGRES" : "DAX_TEST_MARIADB");
    return value ? FromUtf8(value) : Text();
}

Text TemporaryPath(const Text& ending) {
    return (std::filesystem::temp_directory_path() / (u"dax-" + Utility::NewIdentifier() + ending)).u16string();
}

std::string EngineName(const testing::TestParamInfo<Engine>& info) {
    if (info.param == Engine::SQLite) return "SQLite";
    return info.param == Engine::PostgreSQL ? "PostgreSQL" : "MariaDB";
}

void OnEveryEngine::SetUp() {
    if (GetParam() != Engine::SQLite && ServerString(GetParam()).empty())
        GTEST_SKIP() << "no such server is running: tools/servers starts one";
}

EngineDatabase::EngineDatabase(Engine useEngine, Schema::Database useKind) : engine(useEngine), kind(useKind) {
    if (engine == Engine::SQLite) {
        connectionString = path = TemporaryPath(u".db");
        const std::ofstream created(FilePath(path));
    } else {
        name = u"daxv" + Utility::NewIdentifier();
        serverString = connectionString = ServerString(engine);
        Connection server;
        server.Open(serverString);
        server.Execute(u"CREATE DATABASE " + name);
        const Text administration = u"Database=postgres;";
        if (const size_t at = connectionString.find(administration); at != Text::npos)
            connectionString.erase(at, administration.size());
        connectionString += u";Database=" + name;
    }
    Connection connection;
    connection.Open(connectionString);
    for (const Text& statement : Schema::CreateStatements(kind, engine)) connection.Execute(statement);
}

EngineDatabase::~EngineDatabase() {
    try {
        if (engine == Engine::SQLite) {
            std::filesystem::remove(FilePath(path));
        } else {
            Connection server;
            server.Open(serverString);
            server.Execute(u"DROP DATABASE " + name);
        }
    } catch (const std::exception& error) {
        ADD_FAILURE() << "the database could not be removed, something of it is still open: " << error.what();
    }
}

void EngineDatabase::Run(const Text& statement) const {
    Connection connection;
    connection.Open(connectionString);
    connection.Execute(statement);
}

int64_t EngineDatabase::Count(const Text& table) const {
    Recordset recordset;
    recordset.Open(u"SELECT Count(*) AS n FROM " + table, connectionString);
    return recordset.FieldNumber(0, -1);
}

std::vector<int64_t> EngineDatabase::Counts() const {
    std::vector<int64_t> counts;
    for (const Schema::Table& table : Schema::Tables(kind)) counts.push_back(Count(Text(table.name)));
    return counts;
}

void EngineDatabase::RefuseInserts(const Text& table, const Text& reason) const {
    const Text quoted = modDB::QuoteSQLString(reason);
    const Text trigger = u"CREATE TRIGGER refuse_" + table + u" BEFORE INSERT ON " + table;
    if (engine == Engine::SQLite) {
        Run(trigger + u" BEGIN SELECT RAISE(ABORT, " + quoted + u"); END");
    } else if (engine == Engine::PostgreSQL) {
        Run(u"CREATE OR REPLACE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION " +
            quoted + u"; END $$");
        Run(trigger + u" FOR EACH ROW EXECUTE FUNCTION refuse()");
    } else {
        Run(trigger + u" FOR EACH ROW SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = " + quoted);
    }
}

void EngineDatabase::AcceptInserts(const Text& table) const {
    Run(u"DROP TRIGGER refuse_" + table + (engine == Engine::PostgreSQL ? u" ON " + table : Text()));
}

} // namespace dax::test
