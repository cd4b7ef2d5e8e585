// The statements on the locks table.
#pragma once

#include "data/Connection.h"
#include "locks/LockRecord.h"

namespace dax::LockQueries {

// `sortColumn` is a column's full name, or empty for no order, when `isDescending` is ignored.
Text BuildLockQuery(LockDisplayTypes displayType, const Text& username, const Text& lessonID, const Text& sortColumn,
                    bool isDescending);

// All seven columns must match what was read, date and type in the form in which the row has them, so a lock that was
// taken since is not deleted. A lock that was already removed is no error.
void DeleteLockRecord(Connection& connection, const LockRecord& record);

// The same condition as text, for logs and support; nothing executes it.
Text BuildLockDeleteText(const LockRecord& record, bool isMDB);

} // namespace dax::LockQueries
