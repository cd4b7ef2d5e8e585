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
// The first argument, with the password that the options give.
Target ParseTarget(const Arguments& arguments);

// What may become of a place before a database is made there.
struct PlaceOptions {
    explicit PlaceOptions(const Arguments& arguments);
    bool replaces, makesCatalog;
};
inline constexpr Option ForceOption = {u"--force", u"", u"replace the file, or the tables and all their rows"};
inline constexpr Option NewCatalogOption = {u"--new-catalog", u"", u"on a server: make the catalog first"};

// A new database under construction. A file is built beside its place and put there by Finish, so that neither a
// failure nor a crash leaves half a database or loses the former one. The tables and all rows are one transaction
// where the engine can do that. Ctrl+C is a failure like others.
class NewDatabase {
public:
    // Throws Error when the place is taken and shall not be replaced, or when it cannot be written.
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
    Text place, building; // of a file
    std::optional<Unfinished> making;
    Connection connection;
};

// The place is taken: nothing was changed.
class TakenError : public Error {
public:
    using Error::Error;
};

} // namespace dax::cli
