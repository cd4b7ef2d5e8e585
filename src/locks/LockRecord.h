// One lock that a user holds, as the lock list keeps it.
#pragma once

#include "base/Enumerations.h"
#include "base/Value.h"

namespace dax {

struct LockRecord {
    Text lessonID;
    Text username;
    Text machineName;
    Text machineIP;
    Text sessionID;
    DateTime lockDate;
    int32_t lockType = lltNone;
    bool invalid = false; // as the rules judged the row when it was read
};

// One row of the lock query, as the database gave it. The last three are NULL when the lesson is gone.
struct LockRow {
    Value lessonID, username, machineName, machineIP, lockDate, lockType, sessionID;
    Value lessonTitle, lessonIdentifier, lessonType;
};

} // namespace dax
