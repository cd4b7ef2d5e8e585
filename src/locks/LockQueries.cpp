#include "locks/LockQueries.h"

#include "data/Command.h"
#include "data/modDB.h"

namespace dax::LockQueries {

using modDB::QuoteSQLString;

Text BuildLockQuery(LockDisplayTypes displayType, const Text& username, const Text& lessonID, const Text& sortColumn,
                    bool isDescending) {
    // "velmoraUserlocks.lockDate" with its small l is deliberate: databases match table names without regard to case.
    Text query = u"SELECT velmoraUserLocks.lessonID, velmoraUserLocks.username, velmoraUserLocks.machineName, "
                 u"     velmoraUserLocks.machineIP, velmoraUserlocks.lockDate, velmoraUserLocks.lockType, "
                 u"     velmoraUserLocks.sessionID, "
                 u"     velmoraLessons.lessonTitle, velmoraLessons.lessonIdentifier, velmoraLessons.lessonType "
                 u" FROM velmoraUserLocks "
                 u"     LEFT OUTER JOIN velmoraLessons ON velmoraUserLocks.lessonID = velmoraLessons.lessonID ";
    if (displayType == ldtUserLocks && !username.empty())
        query += u" WHERE (velmoraUserLocks.username = " + QuoteSQLString(username) + u")";
    if (displayType == ldtLessonLocks && !lessonID.empty())
        query += u" WHERE (velmoraUserLocks.lessonID = " + QuoteSQLString(lessonID) + u")";
    if (!sortColumn.empty()) {
        query += u" ORDER BY " + sortColumn;
        if (isDescending) query += u" DESC";
    }
    return query;
}

void DeleteLockRecord(Connection& connection, const LockRecord& record) {
    Command command(connection);
    command.SetCommandText(u"DELETE FROM velmoraUserLocks WHERE (lessonID = ?)"
                           u" AND (username = ?)"
                           u" AND (machineName = ?)"
                           u" AND (machineIP = ?)"
                           u" AND (lockDate = ?)"
                           u" AND (lockType = ?)"
                           u" AND (sessionID = ?)");
    command.AppendParameter(record.lessonID);
    command.AppendParameter(record.username);
    command.AppendParameter(record.machineName);
    command.AppendParameter(record.machineIP);
    command.AppendStoredDate(record.storedDate, record.storedDateText);
    command.AppendParameter(record.storedType);
    command.AppendParameter(record.sessionID);
    command.Execute(adExecuteNoRecords);
}

Text BuildLockDeleteText(const LockRecord& record, bool isMDB) {
    return u"DELETE FROM velmoraUserLocks WHERE "
           u" (lessonID = " +
           QuoteSQLString(record.lessonID) +
           u")"
           u" AND (username = " +
           QuoteSQLString(record.username) +
           u")"
           u" AND (machineName = " +
           QuoteSQLString(record.machineName) +
           u")"
           u" AND (machineIP = " +
           QuoteSQLString(record.machineIP) +
           u")"
           u" AND (lockDate = " +
           modDB::FormatSQLDate(record.lockDate, isMDB) +
           u")"
           u" AND (lockType = " +
           ToText(record.lockType) +
           u")"
           u" AND (sessionID = " +
           QuoteSQLString(record.sessionID) + u")";
}

} // namespace dax::LockQueries
