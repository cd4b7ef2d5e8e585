// What an application finds when it starts: a connector and a catalog that it lists, with a login of its own, both on
// one server or in two files. "anna" administers the catalog and may open a second one, which is only listed; "guest"
// may open none.
#pragma once

#include "CourseRows.h"

namespace dax::test {

class TypicalStart {
public:
    explicit TypicalStart(Engine engine) : connector(engine), login(connector), content(engine) {
        const Text pages = u"page\t1\ts1\npage\t2\ts2\npage\t1\ts3\n";
        MakeCourse(content, storyboards + pages);
        const Text locks = u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, "
                           u"lockDate, lockType) VALUES ";
        content.Run({locks + u"('l2', 'boris', 'm', '10.0.0.1', 's', '2020-02-03 13:00:05', 2)",
                     locks + u"('gone', 'anna', 'm', '10.0.0.2', 't', '2020-02-03 13:00:05', 1)",
                     locks + u"('l1', 'boris', 'm', '10.0.0.3', 'u', '2020-02-03 13:00:05', -2)"});
        std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Connector, engine);
        for (const Text& row :
             {Text(u"velmoraDBUsers (userID, username, superUser) VALUES (1, 'anna', 0)"),
              Text(u"velmoraDBUsers (userID, username, superUser) VALUES (2, 'guest', 0)"),
              u"velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES (1, '" +
                  content.Name() + u"', '" + login.name + u"', '" + Text(Login::password) +
                  u"', 'Kurs 語', 'the start')",
              Text(u"velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES (2, "
                   u"'second', "
                   u"'', '', 'Second', '')"),
              Text(u"velmoraDBUserRights (userID, dbID, rights) VALUES (1, 1, 1)"),
              Text(u"velmoraDBUserRights (userID, dbID, rights) VALUES (1, 2, 0)")}) {
            statements.push_back(u"INSERT INTO " + row);
        }
        connector.Run(statements);
        login.Permit(content);
    }

    const Text& Connector() const { return connector.ConnectionString(); }
    const Text& Catalog() const { return content.Name(); }

    const TestDatabase& Content() const { return content; }

    // The rows after a start that moved the first page of lesson L-1 down, cleared the locks that were left over, and
    // recorded the connection from this machine.
    void ExpectDone(const Text& machine) const {
        const Text expected = storyboards + u"page\t1\ts3\npage\t1\ts1\npage\t2\ts2\n";
        EXPECT_EQ(
            content.Ask(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = 'l1'").substr(0, expected.size()),
            expected); // which page is the current one may follow
        EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"1");
        EXPECT_EQ(content.Ask(u"SELECT username FROM velmoraUserLocks"), u"boris");
        EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"6");
        EXPECT_EQ(connector.Ask(u"SELECT lastCatalog FROM velmoraConnectionHistory WHERE username = 'anna'" +
                                (machine.empty() ? Text() : u" AND machineName = '" + machine + u"'")),
                  content.Name());
        EXPECT_EQ(connector.Ask(u"SELECT Count(*) FROM velmoraConnectionHistory"), u"1");
    }

private:
    // A server's user with rights on the rows of the catalog, and on nothing else.
    struct Login {
        static constexpr TextView password = u"p;w}d";
        const TestDatabase& server;
        Text name;

        explicit Login(const TestDatabase& database) : server(database), name(u"login_" + database.Name()) {
            if (server.Kind() == Engine::SQLite) name.clear();
        }
        void Permit(const TestDatabase& catalog) {
            if (server.Kind() == Engine::PostgreSQL) {
                catalog.Run({u"CREATE ROLE " + name + u" LOGIN PASSWORD '" + Text(password) + u"'",
                             u"GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA public TO " + name,
                             u"GRANT USAGE ON ALL SEQUENCES IN SCHEMA public TO " + name});
            } else if (server.Kind() == Engine::MariaDB) {
                catalog.Run({u"CREATE USER " + name + u" IDENTIFIED BY '" + Text(password) + u"'",
                             u"GRANT SELECT, INSERT, UPDATE, DELETE ON " + catalog.Name() + u".* TO " + name});
            }
            isMade = server.Kind() != Engine::SQLite;
        }
        ~Login() {
            if (isMade) server.Run({(server.Kind() == Engine::PostgreSQL ? u"DROP ROLE " : u"DROP USER ") + name});
        }
        bool isMade = false;
    };

    const Text storyboards = u"lesson\t1\n"
                             u"storyboard\ts1\ttitle\tINTRO\tWelcome\n"
                             u"storyboard\ts2\ttext\tQ-1\tWarum 語?\n"
                             u"storyboard\ts3\tquestion\tQ-2\tWhat is it?\n"
                             u"map\tMain\tdefault\n";
    TestDatabase connector;
    Login login; // dropped after the catalog, on which it has rights
    TestDatabase content;
};

} // namespace dax::test
