// A small course with locks, and a connector database that lists it; both in SQLite files.
#pragma once

#include "support/CourseRows.h"

namespace dax::test {

// g(a b) h(c) d: two groups, four lessons, of which b and c have no identifier. Locks, all of session "s": ann edits a
// and reads b, bob edits c twice and reads his own guide of d; the lesson "gone" that ann edits does not exist.
class Course : public TestDatabase {
public:
    Course() : TestDatabase(Engine::SQLite) {
        CreateTables(*this);
        const auto row = [](const Text& id, const Text& parent, int level, int position, int type) {
            return LessonRow(id, u"Title " + id, u"#" + id, parent, level, position, type, u"", u"", u"");
        };
        Run({row(u"g", u"", 1, 1, 0), row(u"h", u"", 1, 2, 0), row(u"d", u"", 1, 3, 1), row(u"a", u"g", 2, 1, 1),
             row(u"b", u"g", 2, 2, 1), row(u"c", u"h", 2, 1, 1),
             u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID IN ('b', 'c')"});
        Run({LockRow(u"a", u"ann", u"P1", 1), LockRow(u"b", u"ann", u"P2", 2), LockRow(u"c", u"bob", u"P3", 1),
             LockRow(u"c", u"bob", u"P4", 1), LockRow(u"d", u"bob", u"P5", 4), LockRow(u"gone", u"ann", u"P6", 1)});
    }
};

// "admin" is a super user, "anna" may write to the catalog "course" only, "nobody" has no rights.
class Connector : public TestDatabase {
public:
    Connector() : TestDatabase(Engine::SQLite) {
        CreateTables(*this, Schema::Database::Connector);
        Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'admin', 1), (2, 'anna', 0), "
             u"(3, 'nobody', 0)",
             u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES "
             u"(1, 'course', 'login1', 'secret1', 'A course', 'the first'), "
             u"(2, 'other', 'login2', 'secret2', 'Ünother', 'the second')",
             u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (2, 1, 0)"});
    }
};

} // namespace dax::test
