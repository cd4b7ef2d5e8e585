// A small course with everything that a hierarchy can hold, written row by row.
#pragma once

#include "data/Schema.h"
#include "support/TestDatabases.h"

namespace dax::test {

inline Text LessonRow(TextView id, TextView title, TextView identifier, TextView parent, int level, int position,
                      int type, TextView data = u"") {
    const auto quoted = [](TextView text) { return u"'" + Text(text) + u"'"; };
    return u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, "
           u"lessonType, lessonProperties, guideData, lessonData) VALUES (" +
           quoted(id) + u", " + quoted(title) + u", " + quoted(identifier) + u", " + quoted(parent) + u", " +
           ToText(level) + u", " + ToText(position) + u", " + ToText(type) + u", " +
           (type == 1 ? u"'Classification=\"internal\"\nStoryboardCount=3\nOdd name=\"a\tb\"'" : u"''") + u", '', " +
           quoted(data) + u")";
}

// Taken on the day of February 2020 that is the machine's second letter. No user: NULL.
inline Text LockRow(TextView lesson, TextView user, TextView machine, int type) {
    return u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, lockType) "
           u"VALUES ('" +
           Text(lesson) + u"', " + (user.empty() ? Text(u"NULL") : u"'" + Text(user) + u"'") + u", '" + Text(machine) +
           u"', '10.0.0.1', 's', '2020-02-0" + machine[1] + u" 13:00:05', " + ToText(type) + u")";
}

inline void MakeCourse(const TestDatabase& database, TextView firstLesson = u"") {
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, database.Kind());
    for (Text& row : std::vector<Text>{
             LessonRow(u"g1", u"Grundlagen 語", u"G-1", u"", 1, 1, 0),
             LessonRow(u"l1", u"O''Neil''s \"first\"", u"L-1", u"g1", 2, 1, 1, firstLesson),
             LessonRow(u"l2", u"Привет 😀", u"L-2", u"g1", 2, 2, 1),
             LessonRow(u"g2", u"", u"G-2", u"g1", 2, 3, 0),
             LessonRow(u"l3", u"Two\nlines", u"DUP", u"", 1, 2, 1, u"something else"),
             LessonRow(u"x1", u"Odd", u"DUP", u"", 1, 3, 7),
         }) {
        statements.push_back(std::move(row));
    }
    database.Run(statements);
}

} // namespace dax::test
