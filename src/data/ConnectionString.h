// The one place that knows the forms of connection strings which hosts use, and turns them into ODBC's.
#pragma once

#include "data/Connection.h"

#include <optional>

namespace dax {

// Keywords and values in their order; a keyword is found without regard to case.
class ConnectionKeywords {
public:
    ConnectionKeywords() = default;
    // `keyword=value;…`, a value plain or in '…', "…" or {…}, where the closing mark doubled stands for itself.
    // Throws Error when a quote does not end.
    explicit ConnectionKeywords(TextView connectionString);

    const Text* Find(TextView keyword) const;
    // The first of several names for the same thing; empty when none is there.
    Text First(std::initializer_list<TextView> keywords) const;
    void Set(TextView keyword, TextView value);
    void SetIfMissing(TextView keyword, TextView value);
    void Remove(TextView keyword);
    // As an ODBC string; values are put between braces when they need it and `braces` allows.
    Text Write(bool braces = true) const;

private:
    std::vector<std::pair<Text, Text>> items;
};

struct ConnectionTarget {
    Engine engine = Engine::Other;
    Text odbcString;  // without the password it would still tell it: never show it
    Text driver;      // as named in the string; empty for a data source
    Text path;        // of the database file, as the host wrote it; empty for a server
    int timeout = 15; // seconds to wait for the server
};

// What the machine has: the names of its ODBC drivers, the driver of a data source, what a file is.
struct Machine {
    std::vector<Text> drivers;
    std::function<Text(TextView dataSource)> driverOfDataSource;
};

// A bare path names a SQLite file. A Jet or ACE string names an Access file, or a SQLite file in its place.
// Throws Error for an empty string, for a provider that nobody here can serve, and for a file that needs a missing
// driver.
ConnectionTarget TranslateConnectionString(const Text& connectionString, const Machine& machine);

enum class FileKind { Missing, Directory, Empty, SQLite, Access, Unknown };
FileKind KindOfFile(const Text& path) noexcept;

} // namespace dax
