#include "validation/ContentValidation.h"

#include "base/Enumerations.h"
#include "content/Utility.h"
#include "data/modDB.h"
#include "validation/Probes.h"

namespace dax {

using modDB::QuoteSQLString;

namespace {

// The fragments are joined without change; the table name "velmoraUserlocks" is spelled so in these statements alone.
constexpr TextView contentProbes[] = {
    u"SELECT TOP 1 nextNumber, ignored FROM velmoraAutonumbers",
    u"SELECT TOP 1 lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition,"
    u" lessonType, lessonProperties, guideData, lessonData"
    u" FROM velmoraLessons",
    u"SELECT TOP 1 milestoneID, lessonID, savedBy, savedDate, milestoneProperties, lessonData, guideData"
    u" FROM velmoraMilestones",
    u"SELECT TOP 1 propertyData FROM velmoraProjectProperties",
    u"SELECT TOP 1 lessonID, username, machineName, machineIP, sessionID, lockDate, lockType"
    u" FROM velmoraUserlocks",
};

constexpr TextView talkProbes[] = {
    u"SELECT TOP 1 configurationID, configurationData, lastModified, revision"
    u" FROM talkConfiguration",
    u"SELECT TOP 1 postID, lessonID, sbid, postData, status, lastModified, revision"
    u" FROM talkPosts",
    u"SELECT TOP 1 commentID, postID, commentData, lastModified, revision"
    u" FROM talkComments",
};

const Text comma = u", ";

void InsertLesson(Connection& connection, const Text& lessonID) {
    const Text nothing = QuoteSQLString(u"");
    connection.Execute(
        u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition,"
        u" lessonType, lessonProperties, guideData, lessonData) "
        u" VALUES (" +
        QuoteSQLString(lessonID) + comma + QuoteSQLString(u"validator") + comma + QuoteSQLString(u"validator") + comma +
        nothing + comma + u"-1, " + u"-1, " + u"-1, " + nothing + comma + nothing + comma + nothing + u")");
}

void InsertMilestone(Connection& connection, const Text& lessonID, const Text& date) {
    const Text nothing = QuoteSQLString(u"");
    connection.Execute(u"INSERT INTO velmoraMilestones (milestoneID, lessonID, savedBy, savedDate,"
                       u" milestoneProperties, lessonData, guideData)"
                       u" VALUES (" +
                       QuoteSQLString(Utility::NewIdentifier()) + comma + QuoteSQLString(lessonID) + comma +
                       QuoteSQLString(u"validator") + comma + date + comma + nothing + comma + nothing + comma +
                       nothing + u")");
}

void InsertUserLock(Connection& connection, const Text& lessonID, const Text& date) {
    connection.Execute(u"INSERT INTO velmoraUserlocks (lessonID, username, machineName, machineIP, sessionID,"
                       u" lockDate, lockType)"
                       u" VALUES (" +
                       QuoteSQLString(lessonID) + comma + QuoteSQLString(u"validator") + comma +
                       QuoteSQLString(u"validator") + comma + QuoteSQLString(u"0.0.0.0") + comma +
                       QuoteSQLString(Utility::NewIdentifier()) + comma + date + comma + ToText(lltConnectionTest) +
                       u")");
}

void DrawAutonumber(Connection& connection) {
    Recordset recordset;
    recordset.Open(u"velmoraAutonumbers", connection, adOpenDynamic, adLockOptimistic, adCmdTable);
    recordset.AddNew();
    recordset.SetField(u"ignored", int64_t{-1});
    recordset.Update();
    recordset.Close();
}

} // namespace

bool ProbeContentTables(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept {
    return Guarded(errorNumber, errorDescription, [&] { ProbeAll(connectionString, contentProbes); });
}

bool TestContentWrite(const Text& connectionString, int32_t& errorNumber, Text& errorDescription, bool isMDB) noexcept {
    return Guarded(errorNumber, errorDescription, [&] {
        const Text lessonID = Utility::NewIdentifier();
        Connection connection;
        try {
            connection.Open(connectionString);
            connection.BeginTrans();
            const Text date = modDB::FormatSQLDate(Now(), isMDB);
            InsertLesson(connection, lessonID);
            InsertMilestone(connection, lessonID, date);
            connection.Execute(u"INSERT INTO velmoraProjectProperties (propertyData)"
                               u" VALUES (" +
                               QuoteSQLString(u"") + u")");
            InsertUserLock(connection, lessonID, date);
            DrawAutonumber(connection);
            connection.RollbackTrans();
            connection.Close();
        } catch (...) {
            modDB::CloseConnectionObjects(nullptr, &connection, true);
            throw;
        }
    });
}

bool ProbeTalkTables(const Text& connectionString) noexcept {
    int32_t number = 0;
    Text description;
    return Guarded(number, description, [&] { ProbeAll(connectionString, talkProbes); });
}

} // namespace dax
