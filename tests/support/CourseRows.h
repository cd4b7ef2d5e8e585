// The tables of a course, statements that insert their rows, and a small course with everything that a hierarchy can
// hold.
#pragma once

#include "data/Schema.h"
#include "data/modDB.h"
#include "support/TestDatabases.h"

namespace dax::test {

inline void CreateTables(const TestDatabase& database, Schema::Database kind = Schema::Database::Content) {
    database.Run(Schema::CreateStatements(kind, database.Kind()));
}

inline Text LessonRow(const Text& id, const Text& title, const Text& identifier, const Text& parent, int level,
                      int position, int type, const Text& properties = {}, const Text& guide = u"guide",
                      const Text& data = u"data") {
    using modDB::QuoteSQLString;
    return u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, "
           u"lessonType, lessonProperties, guideData, lessonData) VALUES (" +
           QuoteSQLString(id) + u", " + QuoteSQLString(title) + u", " + QuoteSQLString(identifier) + u", " +
           QuoteSQLString(parent) + u", " + ToText(level) + u", " + ToText(position) + u", " + ToText(type) + u", " +
           QuoteSQLString(properties) + u", " + QuoteSQLString(guide) + u", " + QuoteSQLString(data) + u")";
}

// The user and the date as SQL.
inline Text LockStatement(const Text& lesson, const Text& user, int type, const Text& session = u"s",
                          const Text& date = u"'2026-03-01 11:00:00'", const Text& machine = u"PC") {
    return u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, lockType) "
           u"VALUES ('" +
           lesson + u"', " + user + u", '" + machine + u"', '10.0.0.1', '" + session + u"', " + date + u", " +
           ToText(type) + u")";
}

// Taken on the day of February 2020 that is the machine's second letter. No user: NULL.
inline Text LockRow(const Text& lesson, const Text& user, const Text& machine, int type) {
    return LockStatement(lesson, user.empty() ? Text(u"NULL") : modDB::QuoteSQLString(user), type, u"s",
                         Text(u"'2020-02-0") + machine[1] + u" 13:00:05'", machine);
}

inline void MakeCourse(const TestDatabase& database, const Text& firstLesson = {}) {
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, database.Kind());
    const Text properties = u"Classification=\"internal\"\nStoryboardCount=3\nOdd name=\"a\tb\"";
    for (Text& row : std::vector<Text>{
             LessonRow(u"g1", u"Grundlagen 語", u"G-1", u"", 1, 1, 0, u"", u"", u""),
             LessonRow(u"l1", u"O'Neil's \"first\"", u"L-1", u"g1", 2, 1, 1, properties, u"", firstLesson),
             LessonRow(u"l2", u"Привет 😀", u"L-2", u"g1", 2, 2, 1, properties, u"", u""),
             LessonRow(u"g2", u"", u"G-2", u"g1", 2, 3, 0, u"", u"", u""),
             LessonRow(u"l3", u"Two\nlines", u"DUP", u"", 1, 2, 1, properties, u"", u"something else"),
             LessonRow(u"x1", u"Odd", u"DUP", u"", 1, 3, 7, u"", u"", u""),
         }) {
        statements.push_back(std::move(row));
    }
    database.Run(statements);
}

} // namespace dax::test
