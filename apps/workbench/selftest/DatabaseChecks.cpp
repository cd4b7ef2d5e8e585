// Which database drivers there are, and a whole course in an empty catalog of its own for each connection that is
// given.
#include "com/Variant.h"
#include "data/CatalogConnection.h"
#include "data/ConnectionString.h"
#include "data/Dialect.h"
#include "data/odbc/Odbc.h"
#include "selftest/Course.h"
#include "selftest/StartChecks.h"
#include "ui/Input.h"

namespace dax::workbench::selftest {

namespace {

std::wstring FindDriver(Engine engine) {
    std::wstring found;
    for (const Text& driver : InstalledDrivers())
        if (EngineFromName(driver) == engine) found += (found.empty() ? L"" : L", ") + ToWide(driver);
    if (found.empty()) throw Skipped(L"Not installed. " + ToWide(DialectOf(engine).howToGetDriver));
    return found;
}

bool IsAccessFile(const std::wstring& path) {
    const size_t dot = path.rfind(L'.');
    const std::wstring ending = dot == std::wstring::npos ? L"" : path.substr(dot);
    return CompareStringOrdinal(ending.c_str(), -1, L".mdb", -1, TRUE) == CSTR_EQUAL ||
           CompareStringOrdinal(ending.c_str(), -1, L".accdb", -1, TRUE) == CSTR_EQUAL;
}

// The system's own way to make an empty Access file; loaded by hand, since it is not everywhere.
void MakeAccessFile(const std::wstring& path) {
    using Configure = BOOL(WINAPI*)(HWND, WORD, LPCWSTR, LPCWSTR);
    constexpr WORD addSource = 1;
    const HMODULE installer = LoadLibraryW(L"odbccp32.dll");
    const auto configure = installer ? reinterpret_cast<Configure>(reinterpret_cast<void (*)()>(
                                           GetProcAddress(installer, "SQLConfigDataSourceW")))
                                     : nullptr;
    const std::wstring attributes = L"CREATE_DB=\"" + path + L"\" General" + std::wstring(2, L'\0');
    Require(configure && configure(nullptr, addSource, L"Microsoft Access Driver (*.mdb, *.accdb)", attributes.c_str()),
            L"'" + path + L"' does not exist, and the Access driver has not made it. Make an empty file by Access.");
}

void MakeEmptyFile(const std::wstring& path) {
    if (IsAccessFile(path)) {
        MakeAccessFile(path);
        return;
    }
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    Require(file != INVALID_HANDLE_VALUE, L"'" + path + L"' cannot be written.");
    CloseHandle(file);
}

// A catalog with nothing in it: a new one on a server, where the login may make one, else the one that the connection
// names when it has none of the tables. Afterwards all that was made is dropped again.
class OwnCatalog {
public:
    // `memory` is a file that lists what was made, for a process that continues after another has crashed.
    OwnCatalog(const std::wstring& connection, std::wstring memory)
        : typed(connection), given(ConnectionFor(connection)), memoryPath(std::move(memory)) {
        Remember();
        const std::wstring path = FileOf(typed);
        if (madeFile.empty() && IsFile(typed) && GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
            MakeEmptyFile(path);
            madeFile = path;
            Keep();
        }
        Connection server;
        server.Open(FromWide(given));
        engine = server.Kind();
        own = given;
        if (!name.empty())
            own = CatalogOn(given, ToWide(name), L"", L"");
        else if (!hasTables && (IsFileBased() || !MakeCatalog(server)))
            RequireEmpty(server);
        Keep();
    }
    OwnCatalog(const OwnCatalog&) = delete;
    OwnCatalog& operator=(const OwnCatalog&) = delete;
    ~OwnCatalog() {
        try {
            Drop();
        } catch (const std::exception&) {
            // Said by the check that drops it; here the run was ended before.
        }
    }

    const std::wstring& Content() const { return own; }
    bool IsFileBased() const { return engine == Engine::SQLite || engine == Engine::Access; }
    // As a connector lists it.
    Text Name() const { return !name.empty() ? name : FromWide(IsFileBased() ? FileOf(typed) : CatalogOf(given)); }

    std::wstring Describe() const {
        const std::wstring known = ToWide(DialectOf(engine).name);
        if (!madeFile.empty()) return known + L"; a file of its own was made";
        if (!name.empty()) return known + L"; a catalog of its own was made: " + ToWide(name);
        return known + L"; the catalog that was given has none of the tables, and gets them" +
               (refusal.empty() ? L"" : L", since this login may make none: " + refusal);
    }
    // Whether texts outside the server's code page survive in literals.
    bool KeepsAllScripts() const { return engine != Engine::SQLServer; }

    void MakeTables() {
        Connection database;
        database.Open(FromWide(own));
        hasTables = true;
        Keep();
        MakeContent(database);
        MakeConnector(database, Name());
    }

    // Throws when something is left.
    void Drop() {
        if (isDropped) return;
        isDropped = true;
        DeleteFileW(memoryPath.c_str());
        if (!madeFile.empty()) {
            Require(DeleteFileW(madeFile.c_str()), L"'" + madeFile + L"' could not be deleted.");
            return;
        }
        Connection server;
        server.Open(FromWide(given));
        if (!name.empty()) {
            if (engine == Engine::SQLServer) // what other programs still have open
                server.Execute(u"ALTER DATABASE " + Quoted() + u" SET SINGLE_USER WITH ROLLBACK IMMEDIATE");
            server.Execute(u"DROP DATABASE " + Quoted());
            return;
        }
        if (!hasTables) return;
        for (const Text& table : TableNames())
            if (HasTable(server, table)) server.Execute(u"DROP TABLE " + table);
        RequireEmpty(server);
    }

private:
    void Keep() const {
        const std::string text = ToUtf8(name + u"\n" + FromWide(madeFile) + u"\n" + (hasTables ? u"1" : u"") + u"\n");
        const HANDLE file = CreateFileW(memoryPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD count = 0;
        if (file == INVALID_HANDLE_VALUE) return;
        WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
        CloseHandle(file);
    }
    void Remember() {
        const std::wstring text = ToWide(FromUtf8(ReadBytes(memoryPath)));
        const size_t first = text.find(L'\n');
        if (first == std::wstring::npos) return;
        const size_t second = text.find(L'\n', first + 1);
        name = FromWide(text.substr(0, first));
        madeFile = text.substr(first + 1, second - first - 1);
        hasTables = text.find(L'1', second) != std::wstring::npos;
    }

    Text Quoted() const {
        const Dialect& dialect = DialectOf(engine);
        return Text(1, dialect.openQuote) + name + dialect.closeQuote;
    }

    // False when the login may not; a statement of its own: no engine makes catalogs in a transaction.
    bool MakeCatalog(Connection& server) {
        name = u"dax_selftest_" + ToText(static_cast<long long>(GetCurrentProcessId())) + u"_" +
               ToText(static_cast<long long>(GetTickCount64() % 1'000'000));
        try {
            server.Execute(u"CREATE DATABASE " + Quoted());
        } catch (const Error& error) {
            refusal = ToWide(error.Description());
            name.clear();
            return false;
        }
        own = CatalogOn(given, ToWide(name), L"", L"");
        return true;
    }

    static void RequireEmpty(Connection& database) {
        for (const Text& table : TableNames())
            Require(!HasTable(database, table),
                    L"The catalog has a table " + ToWide(table) +
                        L". The self-test changes no tables that it has not made: give the connection of an empty "
                        L"catalog, or one by which a catalog can be made.");
    }

    const std::wstring typed, given, memoryPath;
    std::wstring own, madeFile, refusal;
    Text name; // of the catalog that was made
    Engine engine = Engine::Other;
    bool hasTables = false, isDropped = false;
};

} // namespace

std::vector<Check> DriverChecks(const Setting&) {
    std::vector<Check> checks{
        {L"SQLite", [] { return std::wstring(L"Built in."); }},
    };
    for (const Engine engine : {Engine::Access, Engine::SQLServer, Engine::PostgreSQL, Engine::MariaDB})
        checks.push_back({ToWide(DialectOf(engine).name), [engine] { return FindDriver(engine); }});
    return checks;
}

namespace {

// Checks as one, each with its time.
std::wstring RunAll(const std::vector<Check>& checks) {
    std::wstring summary;
    for (const Check& check : checks) {
        const ULONGLONG begin = GetTickCount64();
        try {
            check.run();
        } catch (const HostError& error) {
            throw HostError(error.Code(), check.name + L": " + error.Text());
        } catch (const Error& error) {
            throw HostError(error.Number(), check.name + L": " + ToWide(error.Description()));
        }
        summary +=
            (summary.empty() ? L"" : L"; ") + check.name + L" (" + std::to_wstring(GetTickCount64() - begin) + L" ms)";
    }
    return summary;
}

} // namespace

std::vector<Check> ConnectionChecks(const Setting& setting) {
    const std::wstring& typed = setting.options.connections.at(static_cast<size_t>(setting.options.connection));
    const std::wstring memory = setting.folder + L"\\made.txt";
    const auto kept = std::make_shared<std::unique_ptr<OwnCatalog>>();
    // Of the first check, or of a process that has crashed since.
    const auto catalog = [kept, typed, memory]() -> OwnCatalog& {
        if (!*kept && GetFileAttributesW(memory.c_str()) == INVALID_FILE_ATTRIBUTES)
            throw Skipped(L"There is no catalog to do it in.");
        if (!*kept) *kept = std::make_unique<OwnCatalog>(typed, memory);
        return **kept;
    };
    return {{L"Opened, with an empty catalog",
             [kept, typed, memory] {
                 auto made = std::make_unique<OwnCatalog>(typed, memory);
                 *kept = std::move(made);
                 return (*kept)->Describe();
             }},
            {L"Tables and rows are made",
             [catalog] {
                 catalog().MakeTables();
                 return std::to_wstring(TableNames().size()) + L" tables";
             }},
            {L"The start of an application",
             [catalog, &setting] {
                 const std::wstring& place = catalog().Content();
                 return RunAll(StartOn(setting, place, place, false));
             },
             180},
            {L"Edited, saved and loaded again",
             [catalog, &setting] {
                 const wchar_t* title = catalog().KeepsAllScripts()
                                            ? L"\u00DCn\u00EF \u2013 \u0416 \u8A9E \U0001F44D 'q'; --"
                                            : L"Erg\u00E4nzt: 'quoted'; --";
                 return RunAll(EditingOn(setting, catalog().Content(), catalog().IsFileBased(), title));
             },
             180},
            {L"All that was made is dropped", [catalog] {
                 catalog().Drop();
                 return std::wstring();
             }}};
}

} // namespace dax::workbench::selftest
