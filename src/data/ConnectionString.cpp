#include "data/ConnectionString.h"

#include "base/Error.h"
#include "data/Dialect.h"
#include "data/FileKind.h"
#include "data/odbc/DriverString.h"
#include "data/odbc/Odbc.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace dax {

namespace {

constexpr TextView accessDriver = u"Microsoft Access Driver (*.mdb, *.accdb)";
constexpr TextView newestServerDriver = u"ODBC Driver 18 for SQL Server";
constexpr TextView accessDriverOf32Bit = u"Microsoft Access Driver (*.mdb)";

// The first driver of the list that is installed; the first of all when none is, so that the error names it.
TextView ChooseDriver(const OdbcConfiguration& odbc, std::initializer_list<TextView> names) {
    const std::vector<Text> drivers = odbc.drivers();
    for (const TextView name : names)
        for (const Text& driver : drivers)
            if (EqualNoCase(driver, name)) return name;
    return *names.begin();
}

bool HasDriver(const OdbcConfiguration& odbc, Engine engine) {
    const std::vector<Text> drivers = odbc.drivers();
    return std::ranges::any_of(drivers, [&](const Text& driver) { return EngineFromName(driver) == engine; });
}

bool IsTrue(TextView value) {
    return EqualNoCase(value, u"yes") || EqualNoCase(value, u"true") || EqualNoCase(value, u"SSPI") || value == u"1" ||
           EqualNoCase(value, u"mandatory") || EqualNoCase(value, u"strict");
}

int ToNumber(TextView digits, int defaultValue) {
    if (digits.empty() || digits.size() > 5) return defaultValue;
    int number = 0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9') return defaultValue;
        number = number * 10 + (digit - u'0');
    }
    return number;
}

void RefuseUrl(TextView text) {
    if (!LooksLikeUrl(text)) return;
    const Text scheme = LowerAscii(text.substr(0, text.find(u"://")));
    static constexpr std::pair<TextView, TextView> forms[] = {
        {u"postgres", u"\"Driver={PostgreSQL Unicode};Server=…;Port=…;Database=…;UID=…;PWD=…\""},
        {u"mariadb", u"\"Driver={MariaDB Unicode};Server=…;Port=…;Database=…;UID=…;PWD=…\""},
        {u"mysql", u"\"Driver={MariaDB Unicode};Server=…;Port=…;Database=…;UID=…;PWD=…\""},
        {u"sql",
         u"the path of the file, or \"Provider=MSOLEDBSQL;Data Source=…;Initial Catalog=…;User ID=…;Password=…\""},
        {u"", u"the path of a file, or \"Driver={…};Server=…;Database=…;UID=…;PWD=…\""},
    };
    for (const auto& [word, form] : forms)
        if (scheme.find(word) != Text::npos)
            throw Error(u"A connection string is not a URL (\"" + scheme + u"://…\"). Use " + Text(form) +
                        u" instead.");
}

constexpr TextView blanks = u" \t\r\n";

TextView Trimmed(TextView text) {
    const size_t first = text.find_first_not_of(blanks);
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool IsBarePath(TextView text) {
    const TextView behindDrive = text.substr(1, 2);
    return text.find(u'=') == TextView::npos || text.front() == u'/' || text.starts_with(u"\\\\") ||
           behindDrive == u":\\" || behindDrive == u":/";
}

ConnectionTarget SQLiteTarget(const Text& path) {
    ConnectionTarget target;
    target.engine = Engine::SQLite;
    target.path = PathHere(path);
    return target;
}

// One of the words that an option may have, as SQLite writes it; empty for any other.
std::string OneOf(const Text& value, std::initializer_list<const char*> words) {
    for (const char* const word : words)
        if (EqualNoCase(value, FromUtf8(word))) return word;
    return {};
}

// Of the driver's options, those that apply without it. Files are never created, whatever NoCreat says,
// transactions are never left out, and what could damage a file when a program is killed is ignored.
ConnectionTarget SQLiteTarget(const ConnectionKeywords& host, const Text& dataSource, const OdbcConfiguration& odbc) {
    const auto setting = [&](TextView keyword) {
        const Text* const own = host.Find(keyword);
        return own ? *own : dataSource.empty() ? Text() : odbc.settingOfDataSource(dataSource, keyword);
    };
    const Text path = setting(u"Database");
    if (path.empty())
        throw Error(dataSource.empty()
                        ? Text(u"The connection string names no database file: it has no \"Database\".")
                        : u"The data source \"" + dataSource + u"\" names no database file: it has no \"Database\".");
    ConnectionTarget target = SQLiteTarget(path);
    target.file.lockTimeout =
        std::chrono::milliseconds(ToNumber(setting(u"Timeout"), static_cast<int>(target.file.lockTimeout.count())));
    target.file.foreignKeys = IsTrue(setting(u"FKSupport")) || EqualNoCase(setting(u"FKSupport"), u"on");
    target.file.synchronous = OneOf(setting(u"SyncPragma"), {"NORMAL", "FULL", "EXTRA"});
    target.file.journalMode = OneOf(setting(u"JournalMode"), {"DELETE", "TRUNCATE", "PERSIST", "WAL"});
    return target;
}

ConnectionTarget AccessTarget(const Text& path, const ConnectionKeywords& host, const OdbcConfiguration& odbc) {
    if (path.empty()) throw Error(u"The connection string names no database file: it has no \"Data Source\".");
    RefuseUrl(path);
    const FileKind kind = KindOfFile(path);
    const bool hasDriver = HasDriver(odbc, Engine::Access);
    if (kind == FileKind::SQLite || (!hasDriver && kind != FileKind::Access)) return SQLiteTarget(path);
    if (!hasDriver && ManagerIsUnix())
        throw Error(u"'" + path + u"' is a Microsoft Access file, and no driver for it is installed. " +
                    Text(DialectOf(Engine::Access).howToGetDriver));
    ConnectionKeywords keywords;
    const TextView driver = ChooseDriver(odbc, {accessDriver, accessDriverOf32Bit});
    keywords.Set(u"Driver", driver);
    keywords.Set(u"DBQ", path);
    const auto pass = [&](TextView keyword, const Text& value) {
        if (!value.empty()) keywords.Set(keyword, value);
    };
    pass(u"UID", host.Last({u"User ID", u"UID"}));
    // The file's own password has precedence over the account's.
    const Text password = host.Last({u"Jet OLEDB:Database Password"});
    pass(u"PWD", password.empty() ? host.Last({u"Password", u"PWD"}) : password);
    pass(u"SystemDB", host.Last({u"Jet OLEDB:System Database", u"System Database"}));
    const Text mode = host.Last({u"Mode"});
    if (EqualNoCase(mode, u"Read")) keywords.Set(u"ReadOnly", u"1");
    if (EqualNoCase(mode, u"Share Exclusive")) keywords.Set(u"Exclusive", u"1");
    return {Engine::Access, WriteForDriver(keywords, DialectOf(Engine::Access)), Text(driver), path};
}

// The server for messages; the data source where no server is named.
Text ServerIn(const ConnectionKeywords& keywords) {
    Text server = keywords.Last({u"Server", u"Servername", u"Address", u"Addr", u"Network Address"});
    const Text port = keywords.Last({u"Port"});
    if (server.empty()) return keywords.Last({u"DSN", u"FILEDSN", u"Driver"});
    return port.empty() ? server : server + u":" + port;
}

// Encrypting as the provider would: the newest one by default, the older ones on request.
Text Encryption(const ConnectionKeywords& host, TextView provider, TextView driver) {
    const Text encrypt = host.Last({u"Use Encryption for Data", u"Encrypt"});
    if (EqualNoCase(encrypt, u"strict")) {
        if (driver != newestServerDriver)
            throw Error(u"\"Encrypt=Strict\" needs \"" + Text(newestServerDriver) + u"\". " +
                        Text(DialectOf(Engine::SQLServer).howToGetDriver));
        return u"strict";
    }
    constexpr TextView family = u"msoledbsql";
    const int generation = provider.starts_with(family) ? ToNumber(provider.substr(family.size(), 2), 0) : 0;
    return IsTrue(encrypt) || (encrypt.empty() && generation >= 19) ? u"yes" : u"no";
}

ConnectionTarget SQLServerTarget(const ConnectionKeywords& host, TextView provider, const OdbcConfiguration& odbc) {
    const TextView driver = ChooseDriver(odbc, {newestServerDriver, u"ODBC Driver 17 for SQL Server", u"SQL Server"});
    ConnectionKeywords keywords;
    keywords.Set(u"Driver", driver);
    const auto pass = [&](TextView keyword, std::initializer_list<TextView> names) {
        const Text value = host.Last(names);
        if (!value.empty()) keywords.Set(keyword, value);
    };
    pass(u"Server", {u"Data Source", u"Server", u"Address", u"Addr", u"Network Address"});
    pass(u"Database", {u"Initial Catalog", u"Database"});
    if (IsTrue(host.Last({u"Integrated Security", u"Trusted_Connection"}))) {
        keywords.Set(u"Trusted_Connection", u"Yes");
    } else {
        pass(u"UID", {u"User ID", u"UID", u"User"});
        pass(u"PWD", {u"Password", u"PWD"});
    }
    pass(u"APP", {u"Application Name", u"App"});
    pass(u"WSID", {u"Workstation ID", u"WSID"});
    pass(u"Language", {u"Current Language", u"Language"});
    pass(u"Failover_Partner", {u"Failover Partner", u"FailoverPartner", u"Failover_Partner"});
    pass(u"AttachDBFileName", {u"AttachDBFileName", u"Initial File Name"});
    const Text encryption = Encryption(host, provider, driver);
    if (driver == u"SQL Server") { // supports no more than this
        if (encryption == u"yes") keywords.Set(u"Encrypt", encryption);
    } else {
        pass(u"Authentication", {u"Authentication"});
        pass(u"ApplicationIntent", {u"ApplicationIntent", u"Application Intent"});
        pass(u"HostNameInCertificate", {u"HostNameInCertificate", u"Host Name In Certificate"});
        const Text subnets = host.Last({u"MultiSubnetFailover", u"Multi Subnet Failover"});
        if (!subnets.empty()) keywords.Set(u"MultiSubnetFailover", IsTrue(subnets) ? u"Yes" : u"No");
        keywords.Set(u"Encrypt", encryption);
        if (IsTrue(host.Last({u"Trust Server Certificate", u"TrustServerCertificate"})))
            keywords.Set(u"TrustServerCertificate", u"yes");
        keywords.Set(u"MARS_Connection", u"yes"); // a recordset open while another statement runs
    }
    return {Engine::SQLServer,
            WriteForDriver(keywords, DialectOf(Engine::SQLServer)),
            Text(driver),
            {},
            ServerIn(keywords)};
}

// The section [ODBC] of a file data source, a keyword per line, overridden by the string. The Unix
// manager finds such files only through its narrow functions; read here, the driver is known before connecting.
ConnectionKeywords WithFileDataSource(const ConnectionKeywords& host) {
    const Text name = host.Last({u"FILEDSN"});
    if (name.empty()) return host;
    std::ifstream stream;
    for (const Text& path : {name, name + u".dsn", u"/etc/ODBCDataSources/" + name}) {
        // Never a pipe, which may wait for ever.
        if (!stream.is_open() && KindOfFile(PathHere(path)) == FileKind::Unknown)
            stream.open(std::filesystem::path(PathHere(path)));
    }
    if (!stream.is_open()) {
        if (!ManagerIsUnix() && name.find_first_of(u"/\\") == Text::npos) return host; // in the manager's folder
        throw Error(u"The file data source '" + name + u"' cannot be read.");
    }
    ConnectionKeywords keywords;
    bool isInside = false;
    for (std::string line; std::getline(stream, line);) {
        const Text text = FromUtf8(line);
        const TextView trimmed = Trimmed(text);
        const size_t equals = trimmed.find(u'=');
        if (trimmed.starts_with(u"[")) isInside = EqualNoCase(trimmed, u"[ODBC]");
        if (!isInside || trimmed.starts_with(u";") || equals == TextView::npos) continue;
        TextView value = Trimmed(trimmed.substr(equals + 1));
        if (value.starts_with(u'{') && value.ends_with(u'}')) value = value.substr(1, value.size() - 2);
        keywords.Set(Trimmed(trimmed.substr(0, equals)), value);
    }
    for (const auto& [keyword, value] : host.Items()) keywords.Set(keyword, value);
    keywords.Remove(u"FILEDSN");
    return keywords;
}

// Strings that are ODBC's own already, with what a file data source adds: the engine's options are forced, the
// provider's words taken out.
ConnectionTarget OdbcTarget(ConnectionKeywords keywords, const OdbcConfiguration& odbc, Engine known, int timeout,
                            int commandTimeout) {
    const auto gather = [&](std::initializer_list<TextView> words, TextView to) {
        const Text value = keywords.Last(words);
        for (const TextView word : words) keywords.Remove(word);
        if (!value.empty()) keywords.Set(to, value);
    };
    gather({u"Data Source", u"DSN"}, u"DSN");
    if (!keywords.Last({u"Driver"}).empty()) keywords.Remove(u"DSN");
    gather({u"Initial Catalog", u"Database"}, u"Database");
    gather({u"User ID", u"UID"}, u"UID");
    gather({u"Password", u"PWD"}, u"PWD");
    for (const TextView word : {u"Provider", u"Persist Security Info", u"Mode", u"Connect Timeout",
                                u"Connection Timeout", u"Command Timeout"})
        keywords.Remove(word);

    ConnectionTarget target;
    target.driver = keywords.Last({u"Driver"});
    const Text dataSource = keywords.Last({u"DSN"});
    if (target.driver.empty() && dataSource.empty() && keywords.Last({u"FILEDSN"}).empty())
        throw Error(
            u"The connection string contains neither a Provider nor a Driver nor a data source (DSN). Use for example "
            u"\"Driver={PostgreSQL Unicode};Server=…;Database=…;UID=…;PWD=…\", or just the path of a SQLite file.");
    target.engine = EngineFromName(dataSource.empty() ? target.driver : odbc.driverOfDataSource(dataSource));
    if (target.engine == Engine::Other) target.engine = known;
    if (target.engine == Engine::SQLite) return SQLiteTarget(keywords, dataSource, odbc);
    const Dialect& dialect = DialectOf(target.engine);
    for (const DriverOption& option : dialect.driverOptions) { // those that are kept but for some bits
        if (dataSource.empty() || !option.value.empty() || keywords.Find(option.keyword)) continue;
        keywords.Set(option.keyword, odbc.settingOfDataSource(dataSource, option.keyword));
    }
    // Its driver ignores ODBC's attribute for it. It ends what we no longer wait for.
    if (target.engine == Engine::MariaDB) {
        keywords.SetIfMissing(u"CONN_TIMEOUT", ToText(timeout + secondsForDriver));
        const Text seconds = ToText(commandTimeout == 0 ? 0 : commandTimeout + secondsForDriver);
        for (const TextView word : {u"READ_TIMEOUT", u"WRITE_TIMEOUT"}) keywords.SetIfMissing(word, seconds);
    }
    target.server = ServerIn(keywords);
    target.odbcString = WriteForDriver(keywords, dialect);
    return target;
}

} // namespace

ConnectionKeywords::ConnectionKeywords(TextView text) {
    for (size_t at = 0;;) {
        const size_t equals = text.find(u'=', at), semicolon = text.find(u';', at);
        if (semicolon <= equals) { // a word without a value has no meaning
            if (semicolon == TextView::npos) return;
            at = semicolon + 1;
            continue;
        }
        const Text keyword(Trimmed(text.substr(at, equals - at)));
        at = std::min(text.find_first_not_of(blanks, equals + 1), text.size());
        Text value;
        const TextView mark = text.substr(at, 1);
        if (mark == u"'" || mark == u"\"" || mark == u"{") {
            const TextView close = mark == u"{" ? u"}" : mark;
            for (;;) {
                const size_t end = text.find(close, ++at);
                if (end == TextView::npos)
                    throw Error(u"The value of \"" + keyword +
                                u"\" in the connection string begins with a quote or brace that is not closed.");
                value.append(text.substr(at, end - at));
                at = end + 1;
                if (text.substr(at, 1) != close) break;
                value += close; // a doubled one is part of the value
            }
            at = std::min(text.find_first_not_of(blanks, at), text.size());
            if (at < text.size() && text[at] != u';')
                throw Error(
                    u"The value of \"" + keyword +
                    u"\" in the connection string continues after its closing quote or brace. Put the whole value "
                    u"between quotes or braces, and double each closing one inside it.");
        } else {
            const size_t end = std::min(text.find(u';', at), text.size());
            value = Trimmed(text.substr(at, end - at));
            at = end;
        }
        ++at;
        if (!keyword.empty()) Set(keyword, value);
    }
}

const Text* ConnectionKeywords::Find(TextView keyword) const {
    for (const auto& [name, value] : items)
        if (EqualNoCase(name, keyword)) return &value;
    return nullptr;
}

Text ConnectionKeywords::First(std::initializer_list<TextView> keywords) const {
    for (const TextView keyword : keywords)
        if (const Text* value = Find(keyword)) return *value;
    return {};
}

Text ConnectionKeywords::Last(std::initializer_list<TextView> keywords) const {
    for (auto item = items.rbegin(); item != items.rend(); ++item)
        for (const TextView keyword : keywords)
            if (EqualNoCase(item->first, keyword)) return item->second;
    return {};
}

void ConnectionKeywords::Set(TextView keyword, TextView value) {
    Remove(keyword);
    items.emplace_back(keyword, value);
}

void ConnectionKeywords::SetIfMissing(TextView keyword, TextView value) {
    if (!Find(keyword)) items.emplace_back(keyword, value);
}

void ConnectionKeywords::Remove(TextView keyword) {
    std::erase_if(items, [&](const auto& item) { return EqualNoCase(item.first, keyword); });
}

Text ConnectionKeywords::Write() const {
    Text text;
    for (const auto& [keyword, value] : items) {
        const bool braces = EqualNoCase(keyword, u"Driver") || value.find_first_of(u"[]{}(),;?*=!@'\"") != Text::npos ||
                            value.find_first_of(blanks) != Text::npos;
        text += keyword + (braces ? u"={" : u"=");
        for (const char16_t unit : value) text += Text(braces && unit == u'}' ? 2 : 1, unit);
        text += braces ? u"};" : u";";
    }
    return text;
}

ConnectionKeywords WithExtendedProperties(const ConnectionKeywords& keywords) {
    const Text* const inner = keywords.Find(u"Extended Properties");
    if (!inner) return keywords;
    ConnectionKeywords all(*inner);
    for (const auto& [keyword, value] : keywords.Items()) all.Set(keyword, value);
    all.Remove(u"Extended Properties");
    return all;
}

bool LooksLikeUrl(TextView text) {
    const size_t slash = LowerAscii(text).find_first_not_of(u"abcdefghijklmnopqrstuvwxyz0123456789+-.:");
    return slash != TextView::npos && slash > 2 && text.substr(slash - 1, 3) == u"://"; // one letter is a drive
}

ConnectionTarget TranslateConnectionString(const Text& connectionString, const OdbcConfiguration& odbc, Engine known) {
    Text text(Trimmed(connectionString));
    if (text.empty()) throw Error(u"The connection string is empty.");
    RefuseUrl(text);
    // A text that names an existing file is a path, whatever is in it, even blanks at its ends.
    const auto isFile = [](const Text& path) { return KindOfFile(path) != FileKind::Missing; };
    if (text.size() < connectionString.size() && isFile(connectionString)) text = connectionString;
    if (IsBarePath(text) || isFile(text))
        return KindOfFile(PathHere(text)) == FileKind::Access ? AccessTarget(text, {}, odbc) : SQLiteTarget(text);
    const ConnectionKeywords keywords(text);
    const Text provider = keywords.Last({u"Provider"});
    const Text lower = LowerAscii(provider);
    const auto serves = [&](std::initializer_list<TextView> prefixes) {
        return std::any_of(prefixes.begin(), prefixes.end(),
                           [&](TextView prefix) { return lower.starts_with(prefix); });
    };
    const bool isOdbc = provider.empty() || serves({u"msdasql"});
    const ConnectionKeywords all =
        isOdbc ? WithFileDataSource(WithExtendedProperties(keywords)) : WithExtendedProperties(keywords);
    ConnectionTarget target;
    if (const int timeout = ToNumber(all.Last({u"Connect Timeout", u"Connection Timeout"}), 0); timeout > 0)
        target.timeout = timeout;
    target.commandTimeout = ToNumber(all.Last({u"Command Timeout"}), target.commandTimeout);
    const int timeout = target.timeout, commandTimeout = target.commandTimeout;
    if (serves({u"microsoft.jet.oledb", u"microsoft.ace.oledb"}))
        target = AccessTarget(keywords.Last({u"Data Source", u"DBQ"}), keywords, odbc);
    else if (serves({u"sqloledb", u"sqlncli", u"msoledbsql"}))
        target = SQLServerTarget(keywords, lower, odbc);
    else if (isOdbc)
        target = OdbcTarget(all, odbc, known, timeout, commandTimeout);
    else
        throw Error(u"The provider \"" + provider +
                    u"\" cannot be used here. Name an ODBC driver instead (\"Driver={…};Server=…;Database=…\"), a data "
                    u"source (\"DSN=…\"), the path of a SQLite file, or one of the providers Microsoft.Jet.OLEDB, "
                    u"Microsoft.ACE.OLEDB, SQLOLEDB, SQLNCLI, MSOLEDBSQL and MSDASQL.");
    target.timeout = timeout;
    target.commandTimeout = commandTimeout;
    // Waiting for another program's lock is part of the call.
    if (commandTimeout > 0)
        target.file.lockTimeout = std::min(target.file.lockTimeout, std::chrono::milliseconds(1000LL * commandTimeout));
    return target;
}

} // namespace dax
