// dax create: an empty database with all tables, or the script that makes one.
#include "Command.h"
#include "Console.h"
#include "Target.h"

namespace dax::cli {

namespace {

constexpr std::pair<TextView, Engine> EngineNames[] = {
    {u"access", Engine::Access},         {u"sqlserver", Engine::SQLServer}, {u"sqlite", Engine::SQLite},
    {u"postgresql", Engine::PostgreSQL}, {u"mariadb", Engine::MariaDB},
};

Engine EngineNamed(const Text& name) {
    for (const auto& [known, engine] : EngineNames) {
        if (EqualNoCase(known, name)) return engine;
    }
    throw UsageError(u"'--print' accepts access, sqlserver, sqlite, postgresql and mariadb, not '" + name + u"'.");
}

ExitCode Create(const Arguments& arguments) {
    const bool isConnector = arguments.Has(u"--connector");
    const Schema::Database kind = isConnector ? Schema::Database::Connector : Schema::Database::Content;
    if (arguments.Has(u"--print")) {
        Text script = Schema::Script(kind, EngineNamed(arguments.Value(u"--print")));
        if (script.ends_with(u'\n')) script.pop_back();
        Print(script);
        return Success;
    }
    if (!arguments.HasPositional(0))
        throw UsageError(u"An argument is missing: FILE-or-CONNECTION, or --print ENGINE.");
    const Target target = ParseTarget(arguments);
    try {
        NewDatabase database(target, kind, PlaceOptions(arguments));
        database.Finish();
    } catch (const TargetExistsError& error) {
        PrintError(u"dax create: " + error.Description());
        return Refused;
    }
    Announce(u"Made an empty " + Text(isConnector ? u"connector" : u"content") + u" database: " + target.shown);
    return Success;
}

constexpr Option CreateOptions[] = {
    {u"--connector", u"", u"a connector database instead of a content database"},
    {u"--print", u"ENGINE", u"only print the script: access, sqlserver, sqlite, postgresql or mariadb"},
    ForceOption,
    NewCatalogOption,
};

} // namespace

const Command CreateCommand = {u"create",
                               u"FILE-or-CONNECTION",
                               0,
                               1,
                               u"Create an empty database with all tables.\n"
                               u"A file becomes a SQLite database, whatever its name. Prints what was created.",
                               CreateOptions,
                               Create};

} // namespace dax::cli
