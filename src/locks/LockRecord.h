// One lock that a user holds, as the lock list keeps it.
#pragma once

#include "base/Enumerations.h"
#include "base/Value.h"

#include <cstddef>
#include <optional>

namespace dax {

struct LockRecord {
    Text lessonID;
    Text username;
    Text machineName;
    Text machineIP;
    Text sessionID;
    DateTime lockDate;
    int32_t lockType = lltNone;
    bool invalid = false; // by the lock rules, when the row was read

    // Date and type as the row has them, which may be in another form: what deletes the lock compares with these.
    Value storedDate{}, storedType{};
    Text storedDateText{};
};

// One row of the lock query, as the database gave it: NULL is nothing, as the last three are when the lesson was
// deleted. The texts belong to the recordset and are valid until its next row.
struct LockRow {
    std::optional<TextView> lessonID, username, machineName, machineIP;
    Value lockDate, lockType;
    std::optional<TextView> sessionID, lessonTitle, lessonIdentifier;
    Value lessonType;
    TextView lockDateText{}; // the date as the database keeps it, where that is a text in another form than ours
    size_t number = 0;       // of the row, from 1
};

} // namespace dax
