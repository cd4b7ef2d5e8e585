#include "StoredLesson.h"

#include "Console.h"
#include "Course.h"
#include "Interruption.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"

namespace dax::cli {

StoredLesson::StoredLesson(const Target& target, const Text& lessonName) : connectionString(target.connection) {
    Course course(target);
    const Node& node = course.Find(lessonName);
    if (HierarchyRows::TypeOf(node) != ltLesson) {
        throw RefusedError(u"'" + lessonName + u"' is not a lesson but a " + TypeName(HierarchyRows::TypeOf(node)) +
                           u". Only lessons have maps.");
    }
    lessonID = node.Key();
    Connection connection;
    connection.Open(connectionString);
    data = Read(connection);
}

Text StoredLesson::Read(Connection& connection) const {
    Recordset rows;
    rows.Open(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = " + modDB::QuoteSQLString(lessonID), connection);
    return rows.Eof() ? Text() : Text(rows.FieldText(0));
}

void StoredLesson::Replace(const Text& newData, bool isForced) {
    Connection connection;
    connection.Open(connectionString);
    InterruptScope saving(u"Nothing was saved.");
    connection.BeginTrans();
    if (!isForced) {
        Recordset locks;
        locks.Open(u"SELECT username FROM velmoraUserLocks WHERE lockType = " + ToText(lltEditLesson) +
                       u" AND lessonID = " + modDB::QuoteSQLString(lessonID),
                   connection);
        if (!locks.Eof()) {
            throw RefusedError(OneLine(locks.FieldText(0)) + u" is editing the lesson; " + Text(LockedNotice));
        }
        locks.Close();
    }
    if (Read(connection) != data)
        throw RefusedError(u"Somebody has just changed the lesson. Nothing was saved; try again.");
    dax::Command update(connection);
    update.SetCommandText(u"UPDATE velmoraLessons SET lessonData = ? WHERE lessonID = ?");
    update.AppendParameter(newData);
    update.AppendParameter(lessonID);
    update.Execute(adExecuteNoRecords);
    saving.Finish();
    connection.CommitTrans();
    data = newData;
}

} // namespace dax::cli
