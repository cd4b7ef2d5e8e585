#include "Target.h"

#include "Password.h"
#include "base/Secrets.h"
#include "base/modGeneric.h"
#include "data/CatalogConnection.h"
#include "data/ConnectionString.h"
#include "data/Dialect.h"
#include "data/Recordset.h"

#include <filesystem>
#include <fstream>

namespace dax::cli {

namespace {

Text Absolute(const Text& path) {
    std::error_code failure;
    const auto absolute = std::filesystem::absolute(std::filesystem::path(path), failure);
    return failure ? path : absolute.u16string();
}

void RemoveFile(const Text& path) noexcept {
    try {
        std::error_code ignored;
        std::filesystem::remove(std::filesystem::path(path), ignored);
    } catch (...) {
        // Nothing more can be done about a file left over.
    }
}

bool IsConnectionString(const Text& argument) {
    if (LooksLikeUrl(argument)) return true; // opening says what to use instead
    const size_t equals = argument.find(u'=');
    if (equals == Text::npos || modGeneric::FileExists(argument)) return false;
    return argument.substr(0, equals).find_first_of(u"/\\.") == Text::npos;
}

bool HasTable(Connection& connection, TextView table) {
    try {
        Recordset rows;
        rows.Open(u"SELECT Count(*) AS found FROM " + Text(table), connection);
        return true;
    } catch (const Error&) {
        return false;
    }
}

// A SQLite file and what the engine leaves beside it when it is stopped.
void RemoveDatabase(const Text& path) noexcept {
    for (const TextView ending : {u"", u"-journal", u"-wal", u"-shm"}) RemoveFile(path + Text(ending));
}

// From the catalog that the engine has for this. A statement of its own: no engine makes catalogs in a transaction.
void MakeCatalog(const Target& target) {
    const Text driver = ConnectionKeywords(target.connection).First({u"Driver"});
    const Text first = EngineFromName(driver) == Engine::PostgreSQL ? u"postgres" : u"";
    Connection server;
    server.Open(CatalogConnection(target.connection, first, {}, {}));
    const Dialect& dialect = DialectOf(server.Kind());
    Text name(1, dialect.openQuote);
    for (const char16_t unit : target.shown) name += Text(unit == dialect.closeQuote ? 2 : 1, unit);
    server.Execute(u"CREATE DATABASE " + name + dialect.closeQuote);
}

} // namespace

PlaceOptions::PlaceOptions(const Arguments& arguments)
    : replaces(arguments.Has(ForceOption.name)), makesCatalog(arguments.Has(NewCatalogOption.name)) {}

Target ParseTarget(const Text& argument) {
    // A URL is no path; opening it fails with an error that says what to give instead.
    if (argument.find(u"://") != Text::npos) return {MaskPasswords(argument), argument, false};
    if (!IsConnectionString(argument))
        return {MaskPasswords(argument), argument.empty() ? argument : Absolute(argument), true};
    const ConnectionKeywords keywords(argument);
    Text shown = keywords.First({u"Initial Catalog", u"Database", u"DBQ", u"Data Source", u"DSN", u"Server"});
    return {shown.empty() ? Text(u"the database") : MaskPasswords(shown), argument, false};
}

Target ParseTarget(const Arguments& arguments, size_t positional, const Text& passwordOptions) {
    Target target = ParseTarget(arguments.Positional(positional));
    if (const auto password = ReadPassword(arguments, passwordOptions))
        target.connection = WithPassword(target.connection, target.isFile, *password);
    return target;
}

NewFile::NewFile(const Target& target)
    : shown(target.shown), place(target.connection), building(target.connection + u".new") {
    RemoveDatabase(building); // of a program that was killed
    if (std::ofstream(std::filesystem::path(building), std::ios::binary | std::ios::trunc)) return;
    throw Error(ErrorNumbers::PathFileAccess, u"'" + shown +
                                                  u"' cannot be written. Check that its folder exists and that you may "
                                                  u"create files in it.");
}

void NewFile::Put() {
    std::error_code failure;
    std::filesystem::rename(std::filesystem::path(building), std::filesystem::path(place), failure);
    if (failure) {
        throw Error(ErrorNumbers::PathFileAccess, u"'" + shown + u"' could not be put in its place: " +
                                                      FromUtf8(failure.message()) +
                                                      u". Close the programs that have it open and try again.");
    }
    // What a killed program left beside the old file would be taken for a part of the new one.
    for (const TextView left : {u"-journal", u"-wal", u"-shm"}) RemoveFile(place + Text(left));
    isPut = true;
}

void NewFile::Remove() noexcept {
    if (!isPut) RemoveDatabase(building);
}

NewDatabase::NewDatabase(Target newTarget, Schema::Database kind, const PlaceOptions& options)
    : target(std::move(newTarget)) {
    const Text name = u"'" + target.shown + u"'";
    const Text left = !target.isFile ? name + u" may be incomplete; make it again with --force."
                      : modGeneric::FileExists(target.connection) ? name + u" is as it was."
                                                                  : Text(u"No file was made.");
    making.emplace(left, [this] {
        if (file) file->Remove();
    });
    try {
        if (target.isFile) PrepareFile(options.replaces);
        if (!target.isFile && options.makesCatalog) MakeCatalog(target);
        connection.Open(target.connection);
        if (!target.isFile) PrepareCatalog(kind, options.replaces);
        connection.BeginTrans();
        connection.ExecuteAll(Schema::CreateStatements(kind, connection.Kind()));
    } catch (...) {
        connection.Close();
        throw;
    }
}

NewDatabase::~NewDatabase() { connection.Close(); }

bool NewDatabase::IsMDB() const { return connection.Kind() == Engine::SQLite || connection.Kind() == Engine::Access; }

void NewDatabase::PrepareFile(bool force) {
    const std::filesystem::path path(target.connection);
    std::error_code failure;
    if (std::filesystem::is_directory(path, failure)) {
        throw TargetExistsError(ErrorNumbers::PathFileAccess,
                                u"'" + target.shown + u"' is a folder. Give the path of a file.");
    }
    if (std::filesystem::exists(path, failure) && !force) {
        throw TargetExistsError(ErrorNumbers::PathFileAccess,
                                u"'" + target.shown +
                                    u"' exists already. Choose another name, or replace it with --force.");
    }
    file.emplace(target);
    target.connection = file->Path();
}

void NewDatabase::PrepareCatalog(Schema::Database kind, bool force) {
    Schema::RequireCaseInsensitiveNames(connection);
    for (const Schema::Table& table : Schema::Tables(kind)) {
        if (!HasTable(connection, table.name)) continue;
        if (!force) {
            throw TargetExistsError(
                ErrorNumbers::Automation,
                u"'" + target.shown + u"' has a table " + Text(table.name) +
                    u" already. Use an empty catalog, or replace the tables and all their rows with "
                    u"--force.");
        }
        connection.Execute(u"DROP TABLE " + Text(table.name));
    }
}

void NewDatabase::Finish() {
    making->Finish();
    connection.CommitTrans();
    connection.Close();
    if (file) file->Put();
    making.reset();
}

} // namespace dax::cli
