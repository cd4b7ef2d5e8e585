// The only file that includes the ODBC headers: those (which need <windows.h> on Windows), handles that free
// themselves, text types.
#pragma once

#include "base/Text.h"

#include <utility>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

// The narrow functions stay reachable under their own names.
#define SQL_NOUNICODEMAP

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

namespace dax {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));

inline SQLWCHAR* Wide(char16_t* text) { return reinterpret_cast<SQLWCHAR*>(text); }
inline SQLWCHAR* Wide(const char16_t* text) { return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text)); }
inline SQLCHAR* Narrow(const char* text) { return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text)); }

// An environment, connection or statement handle, freed by the destructor. Empty when it could not be allocated.
template <SQLSMALLINT Kind>
class OdbcHandle {
public:
    OdbcHandle() = default;
    explicit OdbcHandle(SQLHANDLE parent) {
        if (!SQL_SUCCEEDED(SQLAllocHandle(Kind, parent, &handle))) handle = nullptr;
    }
    OdbcHandle(OdbcHandle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    OdbcHandle& operator=(OdbcHandle&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~OdbcHandle() {
        if (handle != nullptr) SQLFreeHandle(Kind, handle);
    }
    SQLHANDLE Get() const { return handle; }
    explicit operator bool() const { return handle != nullptr; }

private:
    SQLHANDLE handle = nullptr;
};

using EnvironmentHandle = OdbcHandle<SQL_HANDLE_ENV>;
using ConnectionHandle = OdbcHandle<SQL_HANDLE_DBC>;
using StatementHandle = OdbcHandle<SQL_HANDLE_STMT>;

// An environment of ODBC 3; throws Error when there is no usable driver manager.
EnvironmentHandle OpenEnvironment();

// What is set up on this machine; none where there is no driver manager.
std::vector<Text> InstalledDrivers();
// The driver of a data source; empty when there is no such source.
Text DriverOfDataSource(TextView dataSource);
// A setting of a data source: the user's first, then the system's; empty when it is not set.
Text SettingOfDataSource(TextView dataSource, TextView keyword);

// True on Linux and under Wine, whose odbc32 forwards to the machine's unixODBC.
bool ManagerIsUnix();
// A path as this program opens it: under Wine a Unix path becomes a Windows one, unless Windows finds the file by it.
Text PathHere(const Text& path);

} // namespace dax
