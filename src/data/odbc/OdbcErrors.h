// From ODBC's diagnostics to the one exception, with the numbers of ErrorNumbers.h.
#pragma once

#include "base/Error.h"
#include "data/Dialect.h"
#include "data/odbc/Odbc.h"

namespace dax {

struct Diagnostic {
    Text state; // five characters, empty when the driver reported nothing
    SQLINTEGER native = 0;
    Text message; // without the bracketed names of the layers it came through
};

// The first record that is not a warning.
Diagnostic ReadDiagnostic(SQLSMALLINT kind, SQLHANDLE handle, const Dialect& dialect);
int32_t NumberOf(const Diagnostic& diagnostic, Engine engine);
// True when the manager found no such driver or could not load it.
bool DriverIsMissing(const Diagnostic& diagnostic);

// The driver's message, after what the user can do where the message does not say it.
[[noreturn]] void ThrowDiagnostic(const Diagnostic& diagnostic, Engine engine);
[[noreturn]] void ThrowOdbcError(SQLSMALLINT kind, SQLHANDLE handle, const Dialect& dialect);

// Why a connection could not be opened. Hosts distinguish three cases: the login was refused, a time-out, and
// everything else, an unknown catalog included, whatever the engine calls it.
[[noreturn]] void ThrowOpenError(SQLHDBC connection, const Dialect& dialect);

// Throws unless the call succeeded; "no data" is a success (a DELETE that found no row).
inline void CheckOdbc(SQLRETURN result, SQLSMALLINT kind, SQLHANDLE handle, const Dialect& dialect) {
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) ThrowOdbcError(kind, handle, dialect);
}

} // namespace dax
