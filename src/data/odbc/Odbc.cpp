#include "data/odbc/Odbc.h"

#include "base/Error.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace dax {

EnvironmentHandle OpenEnvironment() {
    EnvironmentHandle environment(nullptr);
    if (!environment ||
        !SQL_SUCCEEDED(SQLSetEnvAttr(environment.Get(), SQL_ATTR_ODBC_VERSION,
                                     reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_OV_ODBC3)), 0)))
        throw Error(u"The ODBC driver manager does not start. On Linux install unixODBC "
                    u"(Debian and Ubuntu: package libodbc2).");
    return environment;
}

std::vector<Text> InstalledDrivers() {
    const EnvironmentHandle environment = OpenEnvironment();
    std::vector<Text> drivers;
    std::array<SQLCHAR, 512> name;
    std::array<SQLCHAR, 4096> attributes;
    SQLSMALLINT nameLength = 0, attributesLength = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(SQLDrivers(environment.Get(), direction, name.data(), static_cast<SQLSMALLINT>(name.size()),
                                    &nameLength, attributes.data(), static_cast<SQLSMALLINT>(attributes.size()),
                                    &attributesLength))) {
        drivers.push_back(FromUtf8(reinterpret_cast<const char*>(name.data())));
        direction = SQL_FETCH_NEXT;
    }
    return drivers;
}

Text DriverOfDataSource(TextView dataSource) {
    const EnvironmentHandle environment = OpenEnvironment();
    std::array<SQLCHAR, 512> name, driver;
    SQLSMALLINT nameLength = 0, driverLength = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(SQLDataSources(environment.Get(), direction, name.data(),
                                        static_cast<SQLSMALLINT>(name.size()), &nameLength, driver.data(),
                                        static_cast<SQLSMALLINT>(driver.size()), &driverLength))) {
        if (EqualNoCase(FromUtf8(reinterpret_cast<const char*>(name.data())), dataSource))
            return FromUtf8(reinterpret_cast<const char*>(driver.data()));
        direction = SQL_FETCH_NEXT;
    }
    return {};
}

namespace {

// The value of a keyword in one section of a file as unixODBC reads it; nothing when the section is not there.
std::optional<Text> SettingInFile(const Text& path, TextView section, TextView keyword) {
    std::ifstream file{std::filesystem::path(path)};
    bool isInside = false, isFound = false;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r')) line.pop_back();
        const Text text(TrimBlanks(FromUtf8(line)));
        if (text.starts_with(u'[')) {
            if (isFound) break;
            isFound = isInside = EqualNoCase(TextView(text).substr(1, text.find(u']') - 1), section);
        }
        const size_t equals = text.find(u'=');
        if (isInside && equals != Text::npos && EqualNoCase(TrimBlanks(TextView(text).substr(0, equals)), keyword))
            return Text(TrimBlanks(TextView(text).substr(equals + 1)));
    }
    return isFound ? std::optional<Text>(Text()) : std::nullopt;
}

Text InEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? FromUtf8(value) : Text();
}

// The files of unixODBC: the user's, then the system's.
Text SettingInFiles(TextView dataSource, TextView keyword) {
    const Text users = InEnvironment("ODBCINI"), home = InEnvironment("HOME"), system = InEnvironment("ODBCSYSINI");
    for (const Text& path : {!users.empty() ? users
                             : home.empty() ? Text()
                                            : home + u"/.odbc.ini",
                             (system.empty() ? Text(u"/etc") : system) + u"/odbc.ini"})
        if (const auto value = path.empty() ? std::nullopt : SettingInFile(PathHere(path), dataSource, keyword))
            return *value;
    return {};
}

#ifdef _WIN32

Text SettingInRegistry(TextView dataSource, TextView keyword) {
    const std::wstring key = L"Software\\ODBC\\ODBC.INI\\" + std::wstring(dataSource.begin(), dataSource.end());
    const std::wstring name(keyword.begin(), keyword.end());
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        std::array<wchar_t, 4096> value{};
        DWORD size = sizeof value;
        if (RegGetValueW(root, key.c_str(), name.c_str(), RRF_RT_REG_SZ, nullptr, value.data(), &size) == ERROR_SUCCESS)
            return Text(reinterpret_cast<const char16_t*>(value.data()));
    }
    return {};
}

#endif

} // namespace

#ifdef _WIN32

bool ManagerIsUnix() {
    static const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return wine;
}

Text SettingOfDataSource(TextView dataSource, TextView keyword) {
    Text value = SettingInRegistry(dataSource, keyword);
    return value.empty() && ManagerIsUnix() ? SettingInFiles(dataSource, keyword) : value;
}

Text PathHere(const Text& path) {
    using DosName = wchar_t*(__cdecl*)(const char*);
    if (!ManagerIsUnix() || !path.starts_with(u'/') || path.starts_with(u"//")) return path;
    if (GetFileAttributesW(reinterpret_cast<const wchar_t*>(path.c_str())) != INVALID_FILE_ATTRIBUTES) return path;
    const auto dosName = reinterpret_cast<DosName>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
    if (!dosName) return path;
    wchar_t* const name = dosName(ToUtf8(path).c_str());
    if (!name) return path;
    Text result = reinterpret_cast<const char16_t*>(name);
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

#else

bool ManagerIsUnix() { return true; }

Text SettingOfDataSource(TextView dataSource, TextView keyword) { return SettingInFiles(dataSource, keyword); }

Text PathHere(const Text& path) { return path; }

#endif

} // namespace dax
