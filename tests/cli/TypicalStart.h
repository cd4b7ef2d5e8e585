// What an application finds when it starts: a connector and a catalog that it lists, with a login of its own, both on
// one server or in two files. "anna" administers the catalog and may open a second one, which is only listed; "guest"
// may open none.
#pragma once

#include "support/CourseRows.h"

namespace dax::test {

class TypicalStart {
public:
    explicit TypicalStart(Engine engine)
        : connector(engine), content(std::make_unique<TestDatabase>(engine)),
          login(engine == Engine::SQLite ? Text() : u"login_" + connector.Name()) {
        MakeCourse(*content, storyboards + u"page\t1\ts1\npage\t2\ts2\npage\t1\ts3\n");
        content->Run({LockRow(u"l2", u"boris", u"m3", 2), LockRow(u"gone", u"anna", u"m3", 1),
                      LockRow(u"l1", u"boris", u"m3", -2)});
        // The login has rights on the rows of the catalog, and on nothing else.
        const Text rights = u"GRANT SELECT, INSERT, UPDATE, DELETE ON ";
        if (engine == Engine::PostgreSQL) {
            content->Run({u"CREATE ROLE " + login + u" LOGIN PASSWORD 'p;w}d'",
                          rights + u"ALL TABLES IN SCHEMA public TO " + login,
                          u"GRANT USAGE ON ALL SEQUENCES IN SCHEMA public TO " + login});
        } else if (engine == Engine::MariaDB) {
            content->Run(
                {u"CREATE USER " + login + u" IDENTIFIED BY 'p;w}d'", rights + content->Name() + u".* TO " + login});
        }
        std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Connector, engine);
        const Text list = u"DBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES (";
        for (const Text& row :
             {Text(u"DBUsers (userID, username, superUser) VALUES (1, 'anna', 0)"),
              Text(u"DBUsers (userID, username, superUser) VALUES (2, 'guest', 0)"),
              list + u"1, '" + content->Name() + u"', '" + login + u"', 'p;w}d', 'Kurs 語', 'the start')",
              list + u"2, 'second', '', '', 'Second', '')",
              Text(u"DBUserRights (userID, dbID, rights) VALUES (1, 1, 1)"),
              Text(u"DBUserRights (userID, dbID, rights) VALUES (1, 2, 0)")})
            statements.push_back(u"INSERT INTO velmora" + row);
        connector.Run(statements);
    }
    ~TypicalStart() {
        content.reset(); // before the login, which has rights on it
        const Text drop = connector.Kind() == Engine::PostgreSQL ? u"DROP ROLE " : u"DROP USER ";
        if (!login.empty()) connector.Run({drop + login});
    }
    TypicalStart(const TypicalStart&) = delete;
    TypicalStart& operator=(const TypicalStart&) = delete;

    const Text& Connector() const { return connector.ConnectionString(); }
    const Text& Catalog() const { return content->Name(); }
    const TestDatabase& Content() const { return *content; }

    // The rows after a start that moved the first page of lesson L-1 down, cleared the locks that were left over, and
    // recorded the connection from this machine.
    void ExpectDone(const Text& machine) const {
        const Text expected = storyboards + u"page\t1\ts3\npage\t1\ts1\npage\t2\ts2\n";
        EXPECT_EQ(
            content->Query(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'").substr(0, expected.size()),
            expected); // which page is the current one may follow
        EXPECT_EQ(content->Query(u"SELECT Count(*) FROM velmoraUserLocks"), u"1");
        EXPECT_EQ(content->Query(u"SELECT username FROM velmoraUserLocks"), u"boris");
        EXPECT_EQ(content->Query(u"SELECT Count(*) FROM velmoraLessons"), u"6");
        EXPECT_EQ(connector.Query(u"SELECT lastCatalog FROM velmoraConnectionHistory WHERE username = 'anna'" +
                                  (machine.empty() ? Text() : u" AND machineName = '" + machine + u"'")),
                  content->Name());
        EXPECT_EQ(connector.Query(u"SELECT Count(*) FROM velmoraConnectionHistory"), u"1");
    }

private:
    const Text storyboards = u"lesson\t1\n"
                             u"storyboard\ts1\ttitle\tINTRO\tWelcome\n"
                             u"storyboard\ts2\ttext\tQ-1\tWarum 語?\n"
                             u"storyboard\ts3\tquestion\tQ-2\tWhat is it?\n"
                             u"map\tMain\tdefault\n";
    TestDatabase connector;
    std::unique_ptr<TestDatabase> content;
    const Text login;
};

} // namespace dax::test
