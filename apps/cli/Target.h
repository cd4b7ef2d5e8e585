// The database that a command works on: a file given by its path, or a connection string.
#pragma once

#include "Command.h"
#include "Interruption.h"
#include "data/Connection.h"
#include "data/Schema.h"

#include <optional>

namespace dax::cli {

struct Target {
    Text shown;      // for messages: the path, or the catalog; never a password
    Text connection; // what Connection::Open takes
    bool isFile = false;
};

// A text with "keyword=…" in front is a connection string, unless a file of that name exists.
Target ParseTarget(const Text& argument);
// The first argument, or another one, with the password that the options with that beginning give.
Target ParseTarget(const Arguments& arguments, size_t positional = 0, const Text& passwordOptions = u"--password");

// What may become of a place before a database is made there.
struct PlaceOptions {
    explicit PlaceOptions(const Arguments& arguments);
    bool replaces, makesCatalog;
};
inline constexpr Option ForceOption = {u"--force", u"", u"replace the file, or the tables and all their rows"};
inline constexpr Option NewCatalogOption = {u"--new-catalog", u"", u"on a server: make the catalog first"};

// A new database file, built beside its place and put there at the end, so that neither a failure nor a crash leaves
// half a database or loses the former one.
class NewFile {
public:
    // Makes an empty one; throws Error when it cannot be written.
    explicit NewFile(const Target& target);
    ~NewFile() { Remove(); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const Text& Path() const { return building; } // until it is put in its place
    void Put();
    void Remove() noexcept; // unless it was put

private:
    Text shown, place, building;
    bool isPut = false;
};

// A new database under construction, which Finish puts in its place. The tables and all rows are one transaction
// where the engine can do that. Ctrl+C is a failure like others.
class NewDatabase {
public:
    // Throws Error when the place is taken and must not be replaced, or when it cannot be written.
    NewDatabase(Target target, Schema::Database kind, const PlaceOptions& options);
    ~NewDatabase();
    NewDatabase(const NewDatabase&) = delete;
    NewDatabase& operator=(const NewDatabase&) = delete;

    Connection& Rows() { return connection; }
    // How dates are written in statements.
    bool IsMDB() const;
    void Finish();

private:
    void PrepareFile(bool force);
    void PrepareCatalog(Schema::Database kind, bool force);

    Target target;
    std::optional<NewFile> file;
    std::optional<InterruptScope> making;
    Connection connection;
};

// The place is taken: nothing was changed.
class TargetExistsError : public Error {
public:
    using Error::Error;
};

} // namespace dax::cli
