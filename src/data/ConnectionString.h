// Parses all forms of connection strings that hosts use, and determines what they open.
#pragma once

#include "data/Connection.h"

#include <chrono>

namespace dax {

// Keywords and values in the order of their last occurrence, which is the one that counts; a keyword is found without
// regard to case.
class ConnectionKeywords {
public:
    ConnectionKeywords() = default;
    // `keyword=value;…`, a value plain or in '…', "…" or {…}, where a doubled closing quote or brace is part of the
    // value. Throws Error when a quote does not end, or more than blanks follows it.
    explicit ConnectionKeywords(TextView connectionString);

    const Text* Find(TextView keyword) const;
    // The first of several names that is there; empty when none is.
    Text First(std::initializer_list<TextView> keywords) const;
    // Of several names for the same thing the one given last; empty when none is there.
    Text Last(std::initializer_list<TextView> keywords) const;
    void Set(TextView keyword, TextView value);
    void SetIfMissing(TextView keyword, TextView value);
    void Remove(TextView keyword);
    const std::vector<std::pair<Text, Text>>& Items() const { return items; }
    // In the form that is read; values are put between braces when they need it.
    Text Write() const;

private:
    std::vector<std::pair<Text, Text>> items;
};

// Seconds that drivers which end a wait by themselves are given beyond our own limit.
inline constexpr int secondsForDriver = 5;

// How a SQLite file is opened.
struct FileSettings {
    std::chrono::milliseconds lockTimeout{2000}; // for all that one statement waits for other programs
    bool foreignKeys = false;                    // are checked
    std::string synchronous{}, journalMode{};    // as the engine names them; empty: its own, and the file's
};

// With the Extended Properties of the provider for ODBC merged in; the string itself has precedence.
ConnectionKeywords WithExtendedProperties(const ConnectionKeywords& keywords);

// True for `scheme://…`, which no connection string is and which may hold a password.
bool LooksLikeUrl(TextView text);

struct ConnectionTarget {
    Engine engine = Engine::Other;
    Text odbcString;         // contains the password even if given separately: never show it
    Text driver;             // as named in the string; empty for a data source, and where none is needed
    Text path;               // of the database file, as the host wrote it; empty for a server
    Text server{};           // for messages: with its port, or the name of the data source; empty for a file
    int timeout = 15;        // seconds that opening may take, never 0
    int commandTimeout = 30; // seconds that one call may take after that; 0: no limit
    FileSettings file{};
};

// What is installed and set up for ODBC: the names of the drivers, the driver and the settings of a data source.
struct OdbcConfiguration {
    std::function<std::vector<Text>()> drivers;
    std::function<Text(TextView dataSource)> driverOfDataSource;
    std::function<Text(TextView dataSource, TextView keyword)> settingOfDataSource;
};

// A bare path names a SQLite file, and so do strings and data sources of its drivers, which are not needed any more. A
// Jet or ACE string names an Access file, or a SQLite file in its place. Throws Error for an empty string, for a
// provider for which there is no replacement, and for a file that needs a missing driver. `known` is the engine of
// a driver with an unknown name.
ConnectionTarget TranslateConnectionString(const Text& connectionString, const OdbcConfiguration& odbc,
                                           Engine known = Engine::Other);

} // namespace dax
