// A small course with locks in a SQLite file.
#pragma once

#include "support/TestDatabases.h"

#include "data/Schema.h"

namespace dax::test {

// g(a b) h(c) d: two groups, four lessons. Locks, all of session "s": ann edits a and reads b, bob edits c twice and
// reads his own guide of d; nobody knows the lesson "gone" that ann edits.
class Course : public TestDatabase {
public:
    Course() : TestDatabase(Engine::SQLite) {
        Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
        AddRow(u"g", u"", 1, 1, 0);
        AddRow(u"h", u"", 1, 2, 0);
        AddRow(u"d", u"", 1, 3, 1);
        AddRow(u"a", u"g", 2, 1, 1);
        AddRow(u"b", u"g", 2, 2, 1);
        AddRow(u"c", u"h", 2, 1, 1);
        AddLock(u"a", u"ann", 1, 1);
        AddLock(u"b", u"ann", 2, 2);
        AddLock(u"c", u"bob", 1, 3);
        AddLock(u"c", u"bob", 1, 4);
        AddLock(u"d", u"bob", 4, 5);
        AddLock(u"gone", u"ann", 1, 6);
    }
    void AddRow(const Text& id, const Text& parent, int level, int position, int type) const {
        Run({u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, "
             u"indentLevel, sortPosition, lessonType) VALUES ('" +
             id + u"', 'Title " + id + u"', '#" + id + u"', '', '" + parent + u"', " + ToText(level) + u", " +
             ToText(position) + u", " + ToText(type) + u")"});
    }
    void AddLock(const Text& lesson, const Text& user, int type, int hour) const {
        Run({u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
             u"lockType) VALUES ('" +
             lesson + u"', '" + user + u"', 'PC', '10.0.0.1', 's', '2026-03-01 0" + ToText(hour) + u":00:00', " +
             ToText(type) + u")"});
    }
    // The rows below a parent, in their order.
    Text Below(const Text& parent) const {
        return Ask(u"SELECT group_concat(lessonID, ' ') FROM (SELECT lessonID FROM velmoraLessons WHERE parentID = '" +
                   parent + u"' ORDER BY sortPosition)");
    }
    Text LocksLeft() const { return Ask(u"SELECT Count(*) FROM velmoraUserLocks"); }
};

} // namespace dax::test
