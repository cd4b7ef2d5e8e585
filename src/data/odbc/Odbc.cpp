#include "data/odbc/Odbc.h"

#include "base/Error.h"

#include <array>

namespace dax {

EnvironmentHandle OpenEnvironment() {
    EnvironmentHandle environment(nullptr);
    if (!environment ||
        !SQL_SUCCEEDED(SQLSetEnvAttr(environment.Get(), SQL_ATTR_ODBC_VERSION,
                                     reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_OV_ODBC3)), 0)))
        throw Error(ErrorNumbers::Unspecified, u"The ODBC driver manager does not start. On Linux install unixODBC "
                                               u"(Debian and Ubuntu: package libodbc2).");
    return environment;
}

std::vector<Text> InstalledDrivers(const EnvironmentHandle& environment) {
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

Text DriverOfDataSource(const EnvironmentHandle& environment, TextView dataSource) {
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

#ifdef _WIN32

bool ManagerIsUnix() {
    static const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return wine;
}

Text PathForDriver(const Text& path) {
    using UnixName = char*(__cdecl*)(const wchar_t*);
    if (!ManagerIsUnix() || path.empty() || path.front() == u'/') return path;
    const auto unixName = reinterpret_cast<UnixName>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (!unixName) return path;
    char* name = unixName(reinterpret_cast<const wchar_t*>(path.c_str()));
    if (!name) return path;
    Text result = FromUtf8(name);
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

#else

bool ManagerIsUnix() { return true; }

Text PathForDriver(const Text& path) { return path; }

#endif

} // namespace dax
