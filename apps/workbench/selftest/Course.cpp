#include "selftest/Course.h"

#include "com/Variant.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "selftest/Checks.h"

namespace dax::workbench::selftest {

namespace {

void Insert(Connection& database, const Text& table, const Text& columns, const std::vector<Value>& values) {
    Text marks;
    for (size_t i = 0; i < values.size(); ++i) marks += i ? u", ?" : u"?";
    Command command(database);
    command.SetCommandText(u"INSERT INTO " + table + u" (" + columns + u") VALUES (" + marks + u")");
    for (const Value& value : values) command.AppendParameter(value);
    command.Execute();
}

// Five pages in two maps.
Text LessonData(const Text& id) {
    return u"lesson\t1\nstoryboard\t" + id + u"a\ttitle\tP-1\tWelcome\nstoryboard\t" + id +
           u"b\tvideo\tP-2\t\u5B9F\u6F14\u30D3\u30C7\u30AA\nstoryboard\t" + id +
           u"c\tquestion\tP-3\t\u00C9coutez l'entretien\nstoryboard\t" + id +
           u"d\tsummary\tP-4\tWhat you have learned\nstoryboard\t" + id +
           u"e\texercise\tP-5\tTake a test\nmap\tMain\tdefault\npage\t1\t" + id + u"a\npage\t1\t" + id +
           u"b\npage\t1\t" + id + u"c\nmap\tMore\npage\t1\t" + id + u"d\npage\t2\t" + id + u"e\ncurrent\t" + id +
           u"a\n";
}

void InsertLock(Connection& database, const Text& lesson, const Text& user, int type) {
    Insert(database, u"velmoraUserLocks", u"lessonID, username, machineName, machineIP, sessionID, lockDate, lockType",
           {lesson, user, Text(u"desk"), Text(u"192.168.10.5"), Text(u"session of " + user),
            DateTime{2020, 2, 3, 13, 0, 5}, int64_t{type}});
}

void InTransaction(Connection& database, Schema::Database kind, const std::function<void()>& insertRows) {
    database.BeginTrans();
    database.ExecuteAll(Schema::CreateStatements(kind, database.Kind()));
    insertRows();
    database.CommitTrans();
}

} // namespace

const std::vector<Entry>& Entries() {
    static const std::vector<Entry> entries = {
        {u"g1", u"Safety at work", u"SAF", u"", 1, 1, false},
        {u"l1", u"O'Neil's \"golden\" rules", u"SAF-1", u"g1", 2, 1, true},
        {u"l2", u"Feuer und Rauch \u2013 \u00DCbung", u"SAF-2", u"g1", 2, 2, true},
        {u"g2", u"\u041F\u0435\u0440\u0432\u0430\u044F \u043F\u043E\u043C\u043E\u0449\u044C", u"AID", u"g1", 2, 3,
         false},
        {u"l3", u"\u041A\u043E\u0436\u0430 \u0438 \u0433\u043B\u0430\u0437\u0430", u"AID-1", u"g2", 3, 1, true},
        {u"l4", u"\u5FDC\u6025\u624B\u5F53\u306E\u57FA\u672C", u"AID-2", u"g2", 3, 2, true},
        {u"g3", u"Languages \u2013 \u8A00\u8A9E \u2013 \u05E9\u05E4\u05D5\u05EA", u"LNG", u"", 1, 2, false},
        {u"l5", u"\u062A\u062D\u064A\u0627\u062A \u0648\u062A\u0639\u0627\u0631\u0641", u"LNG-1", u"g3", 2, 1, true},
        {u"l6", u"Ordering a meal \U0001F35C", u"LNG-2", u"g3", 2, 2, true},
        {u"l7", u"Welcome", u"TOP-1", u"", 1, 3, true},
    };
    return entries;
}

void MakeContent(Connection& database) {
    InTransaction(database, Schema::Database::Content, [&] {
        for (const Entry& entry : Entries())
            Insert(database, u"velmoraLessons",
                   u"lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType, "
                   u"lessonProperties, guideData, lessonData",
                   {Text(entry.id), Text(entry.title), Text(entry.identifier), Text(entry.parent), int64_t{entry.level},
                    int64_t{entry.position}, int64_t{entry.isLesson},
                    Text(entry.isLesson ? u"Classification=\"internal\"\nStoryboardCount=5" : u""), Text(),
                    entry.isLesson ? LessonData(entry.id) : Text()});
        InsertLock(database, u"l2", u"boris", 2);
        InsertLock(database, u"l1", u"anna", 1);
        InsertLock(database, u"gone", u"anna", 1); // of a lesson that was deleted
        InsertLock(database, u"l3", u"boris", -2); // a test of the connection that was left over
    });
}

void MakeConnector(Connection& database, const Text& catalog) {
    InTransaction(database, Schema::Database::Connector, [&] {
        Insert(database, u"velmoraDBUsers", u"userID, username, superUser", {int64_t{1}, Text(u"anna"), int64_t{0}});
        Insert(database, u"velmoraDBList", u"dbID, dbCatalogName, username, password, dbTitle, dbDescription",
               {int64_t{1}, catalog, Text(), Text(), Text(u"Kurs \u8A9E"), Text(u"The course of the self-test")});
        Insert(database, u"velmoraDBList", u"dbID, dbCatalogName, username, password, dbTitle, dbDescription",
               {int64_t{2}, Text(u"second"), Text(), Text(), Text(u"Second"), Text(u"Only listed")});
        Insert(database, u"velmoraDBUserRights", u"userID, dbID, rights", {int64_t{1}, int64_t{1}, int64_t{1}});
        Insert(database, u"velmoraDBUserRights", u"userID, dbID, rights", {int64_t{1}, int64_t{2}, int64_t{0}});
    });
}

std::vector<Text> TableNames() {
    std::vector<Text> names;
    for (const auto kind : {Schema::Database::Content, Schema::Database::Connector})
        for (const Schema::Table& table : Schema::Tables(kind)) names.emplace_back(table.name);
    return names;
}

bool HasTable(Connection& database, const Text& table) {
    try {
        Recordset rows;
        rows.Open(u"SELECT Count(*) AS found FROM " + table, database);
        return true;
    } catch (const Error&) {
        return false;
    }
}

CourseFiles MakeCourseFiles(const std::wstring& folder, const std::wstring& name) {
    const CourseFiles files{folder + L'\\' + name + L"-connector.db", folder + L'\\' + name + L".db"};
    for (const std::wstring& path : {files.connector, files.content}) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        Require(file != INVALID_HANDLE_VALUE, path + L" cannot be written.");
        CloseHandle(file);
        Connection database;
        database.Open(FromWide(path));
        if (path == files.content)
            MakeContent(database);
        else
            MakeConnector(database, FromWide(name));
    }
    return files;
}

std::wstring AskDatabase(const std::wstring& connection, const std::wstring& query) {
    Recordset rows;
    rows.Open(FromWide(query), FromWide(connection));
    if (rows.Eof()) return {};
    return ToWide(rows.FieldText(0));
}

void RunStatement(const std::wstring& connection, const std::wstring& statement) {
    Connection database;
    database.Open(FromWide(connection));
    database.Execute(FromWide(statement));
}

} // namespace dax::workbench::selftest
