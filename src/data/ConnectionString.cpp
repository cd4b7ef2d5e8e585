#include "data/ConnectionString.h"

#include "base/Error.h"
#include "data/Dialect.h"
#include "data/odbc/Odbc.h"

#include <algorithm>

namespace dax {

namespace {

constexpr TextView accessDriver = u"Microsoft Access Driver (*.mdb, *.accdb)";
constexpr TextView accessDriverOf32Bit = u"Microsoft Access Driver (*.mdb)";

[[noreturn]] void Refuse(Text description) { throw Error(ErrorNumbers::Unspecified, std::move(description)); }

// The first driver of the list that is installed; the first of all when none is, so that the error names it.
TextView ChooseDriver(const Machine& machine, std::initializer_list<TextView> names) {
    const std::vector<Text> drivers = machine.drivers();
    for (const TextView name : names)
        for (const Text& driver : drivers)
            if (EqualNoCase(driver, name)) return name;
    return *names.begin();
}

bool HasDriver(const Machine& machine, Engine engine) {
    const std::vector<Text> drivers = machine.drivers();
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

bool IsBarePath(TextView text) {
    const bool drive = text.size() > 2 && text[1] == u':' && (text[2] == u'\\' || text[2] == u'/');
    return text.find(u'=') == TextView::npos || text.front() == u'/' || text.starts_with(u"\\\\") || drive;
}

void AddConnectOptions(ConnectionKeywords& keywords, Engine engine) {
    const TextView options = DialectOf(engine).connectOptions;
    for (size_t begin = 0; begin < options.size();) {
        const size_t end = std::min(options.find(u';', begin), options.size());
        const TextView option = options.substr(begin, end - begin);
        const size_t equals = option.find(u'=');
        keywords.SetIfMissing(option.substr(0, equals), option.substr(equals + 1));
        begin = end + 1;
    }
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

// Of the words that the driver knows, those that make sense without it. Files are never made, whatever NoCreat says,
// transactions are never left out, and what could spoil a file when a program is killed is not taken either.
ConnectionTarget SQLiteTarget(const ConnectionKeywords& host, const Text& dataSource, const Machine& machine) {
    const auto setting = [&](TextView keyword) {
        const Text* const own = host.Find(keyword);
        return own ? *own : dataSource.empty() ? Text() : machine.settingOfDataSource(dataSource, keyword);
    };
    const Text path = setting(u"Database");
    if (path.empty())
        Refuse(dataSource.empty()
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

ConnectionTarget AccessTarget(const Text& path, const ConnectionKeywords& host, const Machine& machine) {
    if (path.empty()) Refuse(u"The connection string names no database file: it has no \"Data Source\".");
    const FileKind kind = KindOfFile(path);
    const bool hasDriver = HasDriver(machine, Engine::Access);
    if (kind == FileKind::SQLite || (!hasDriver && kind != FileKind::Access)) return SQLiteTarget(path);
    if (!hasDriver && ManagerIsUnix())
        Refuse(u"'" + path + u"' is a Microsoft Access file, and no driver for it is installed. " +
               Text(DialectOf(Engine::Access).howToGetDriver));
    ConnectionKeywords keywords;
    const TextView driver = ChooseDriver(machine, {accessDriver, accessDriverOf32Bit});
    keywords.Set(u"Driver", driver);
    keywords.Set(u"DBQ", path);
    const auto pass = [&](TextView keyword, const Text& value) {
        if (!value.empty()) keywords.Set(keyword, value);
    };
    pass(u"UID", host.First({u"User ID", u"UID"}));
    pass(u"PWD", host.First({u"Jet OLEDB:Database Password", u"Password", u"PWD"}));
    pass(u"SystemDB", host.First({u"Jet OLEDB:System Database", u"System Database"}));
    const Text mode = host.First({u"Mode"});
    if (EqualNoCase(mode, u"Read")) keywords.Set(u"ReadOnly", u"1");
    if (EqualNoCase(mode, u"Share Exclusive")) keywords.Set(u"Exclusive", u"1");
    return {Engine::Access, keywords.Write(), Text(driver), path};
}

ConnectionTarget SQLServerTarget(const ConnectionKeywords& host, const Machine& machine) {
    const TextView driver =
        ChooseDriver(machine, {u"ODBC Driver 18 for SQL Server", u"ODBC Driver 17 for SQL Server", u"SQL Server"});
    ConnectionKeywords keywords;
    keywords.Set(u"Driver", driver);
    const auto pass = [&](TextView keyword, std::initializer_list<TextView> names) {
        const Text value = host.First(names);
        if (!value.empty()) keywords.Set(keyword, value);
    };
    pass(u"Server", {u"Data Source", u"Server", u"Address", u"Addr", u"Network Address"});
    pass(u"Database", {u"Initial Catalog", u"Database"});
    if (IsTrue(host.First({u"Integrated Security", u"Trusted_Connection"}))) {
        keywords.Set(u"Trusted_Connection", u"Yes");
    } else {
        pass(u"UID", {u"User ID", u"UID", u"User"});
        pass(u"PWD", {u"Password", u"PWD"});
    }
    pass(u"APP", {u"Application Name", u"App"});
    pass(u"WSID", {u"Workstation ID", u"WSID"});
    pass(u"Language", {u"Current Language", u"Language"});
    if (driver != u"SQL Server") {
        keywords.Set(u"Encrypt", IsTrue(host.First({u"Use Encryption for Data", u"Encrypt"})) ? u"yes" : u"no");
        if (IsTrue(host.First({u"Trust Server Certificate", u"TrustServerCertificate"})))
            keywords.Set(u"TrustServerCertificate", u"yes");
        keywords.Set(u"MARS_Connection", u"yes"); // a recordset open while another statement runs
    }
    return {Engine::SQLServer, keywords.Write(), Text(driver), {}};
}

// Strings that are ODBC's own already: the engine's options are added, the provider's words taken out.
ConnectionTarget OdbcTarget(ConnectionKeywords keywords, const Machine& machine) {
    if (const Text* inner = keywords.Find(u"Extended Properties")) {
        ConnectionKeywords more(*inner);
        keywords.Remove(u"Extended Properties");
        more.SetIfMissing(u"DSN", keywords.First({u"Data Source"}));
        if (more.First({u"DSN"}).empty()) more.Remove(u"DSN");
        keywords = more;
    }
    for (const auto& [from, to] : {std::pair<TextView, TextView>{u"Data Source", u"DSN"},
                                   {u"Initial Catalog", u"Database"},
                                   {u"User ID", u"UID"},
                                   {u"Password", u"PWD"}}) {
        const Text value = keywords.First({from});
        keywords.Remove(from);
        if (!value.empty()) keywords.SetIfMissing(to, value);
    }
    for (const TextView word : {u"Provider", u"Persist Security Info", u"Mode"}) keywords.Remove(word);

    ConnectionTarget target;
    target.driver = keywords.First({u"Driver"});
    const Text dataSource = keywords.First({u"DSN"});
    if (target.driver.empty() && dataSource.empty() && keywords.First({u"FILEDSN"}).empty())
        Refuse(u"The connection string names neither a Provider nor a Driver nor a data source (DSN). Use for example "
               u"\"Driver={PostgreSQL Unicode};Server=…;Database=…;UID=…;PWD=…\", or just the path of a SQLite file.");
    target.engine = EngineFromName(target.driver.empty() && !dataSource.empty() ? machine.driverOfDataSource(dataSource)
                                                                                : target.driver);
    if (target.engine == Engine::SQLite) return SQLiteTarget(keywords, dataSource, machine);
    AddConnectOptions(keywords, target.engine);
    target.odbcString = keywords.Write();
    return target;
}

} // namespace

ConnectionKeywords::ConnectionKeywords(TextView text) {
    size_t at = 0;
    const auto skipBlanks = [&] {
        while (at < text.size() && (text[at] == u' ' || text[at] == u'\t')) ++at;
    };
    while (at < text.size()) {
        const size_t equals = text.find(u'=', at), semicolon = text.find(u';', at);
        if (equals == TextView::npos || semicolon < equals) { // a word without a value tells nothing
            if (semicolon == TextView::npos) break;
            at = semicolon + 1;
            continue;
        }
        const Text keyword(TrimBlanks(text.substr(at, equals - at)));
        at = equals + 1;
        skipBlanks();
        Text value;
        const char16_t open = at < text.size() ? text[at] : u';';
        if (open == u'\'' || open == u'"' || open == u'{') {
            const char16_t close = open == u'{' ? u'}' : open;
            for (++at;; ++at) {
                if (at >= text.size())
                    Refuse(u"The value of \"" + keyword +
                           u"\" in the connection string begins with a quote or brace "
                           u"that does not end.");
                if (text[at] == close && (at + 1 >= text.size() || text[++at] != close)) break;
                value.push_back(text[at]);
            }
            at = std::min(text.find(u';', at), text.size() - 1);
        } else {
            const size_t end = std::min(text.find(u';', at), text.size());
            value = TrimBlanks(text.substr(at, end - at));
            at = end;
        }
        ++at;
        if (!keyword.empty()) SetIfMissing(keyword, value);
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
        text += keyword + u"=";
        const bool quote = EqualNoCase(keyword, u"Driver") || value.find_first_of(u"[]{}(),;?*=!@'\" \t") != Text::npos;
        if (quote) text.push_back(u'{');
        for (const char16_t unit : value) {
            text.push_back(unit);
            if (quote && unit == u'}') text.push_back(unit);
        }
        if (quote) text.push_back(u'}');
        text.push_back(u';');
    }
    return text;
}

ConnectionTarget TranslateConnectionString(const Text& connectionString, const Machine& machine) {
    Text text(TrimBlanks(connectionString));
    if (text.empty()) Refuse(u"The connection string is empty.");
    // What names a file as it stands is a path, whatever is in it, blanks round it included.
    const auto isFile = [](const Text& path) { return KindOfFile(path) != FileKind::Missing; };
    if (text.size() < connectionString.size() && isFile(connectionString)) text = connectionString;
    if (IsBarePath(text) || isFile(text))
        return KindOfFile(PathHere(text)) == FileKind::Access ? AccessTarget(text, {}, machine) : SQLiteTarget(text);
    const ConnectionKeywords keywords(text);
    const Text provider = keywords.First({u"Provider"});
    const Text lower = LowerAscii(provider);
    const auto serves = [&](std::initializer_list<TextView> prefixes) {
        return std::any_of(prefixes.begin(), prefixes.end(),
                           [&](TextView prefix) { return lower.starts_with(prefix); });
    };
    ConnectionTarget target;
    if (serves({u"microsoft.jet.oledb", u"microsoft.ace.oledb"}))
        target = AccessTarget(keywords.First({u"Data Source", u"DBQ"}), keywords, machine);
    else if (serves({u"sqloledb", u"sqlncli", u"msoledbsql"}))
        target = SQLServerTarget(keywords, machine);
    else if (provider.empty() || serves({u"msdasql"}))
        target = OdbcTarget(keywords, machine);
    else
        Refuse(u"The provider \"" + provider +
               u"\" cannot be used here. Name an ODBC driver instead (\"Driver={…};Server=…;Database=…\"), a data "
               u"source (\"DSN=…\"), the path of a SQLite file, or one of the providers Microsoft.Jet.OLEDB, "
               u"Microsoft.ACE.OLEDB, SQLOLEDB, SQLNCLI, MSOLEDBSQL and MSDASQL.");
    target.timeout = ToNumber(keywords.First({u"Connect Timeout", u"Connection Timeout"}), target.timeout);
    return target;
}

} // namespace dax
