// Building statement texts and testing connections; all other modules write their SQL with it.
#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

namespace dax::modDB {

Text QuoteSQLString(TextView text);
// 'yyyy/mm/dd h:mm:ss', between number signs for an Access file and apostrophes otherwise; 24-hour time, which
// every engine accepts whatever the user's locale.
Text FormatSQLDate(const DateTime& date, bool isMDB);
Text FormatErrorNumber(int32_t number);

// Opens and closes a connection, under the connection-test convention (data/Guarded.h).
bool TestOpenConnection(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept;

// Opens `statement` as a structure probe, cancels and closes it; throws when a table or column is missing.
void Probe(Connection& connection, const Text& statement);

// Clean-up for error paths: closes what is open, every error ignored; rolls the transaction back first if requested.
void CloseConnectionObjects(Recordset* recordset, Connection* connection, bool rollBack) noexcept;

} // namespace dax::modDB
