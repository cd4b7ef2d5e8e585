// A connector database of two catalogs and three users, in a SQLite file.
#pragma once

#include "support/TestDatabases.h"

#include "data/Schema.h"

namespace dax::test {

// "admin" is a super user, "anna" may write to the catalog "course" only, "nobody" has no rights.
class Connector : public TestDatabase {
public:
    Connector() : TestDatabase(Engine::SQLite) {
        Run(Schema::CreateStatements(Schema::Database::Connector, Engine::SQLite));
        Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'admin', 1)",
             u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (2, 'anna', 0)",
             u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (3, 'nobody', 0)",
             u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
             u"VALUES (1, 'course', 'login1', 'secret1', 'A course', 'the first')",
             u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
             u"VALUES (2, 'other', 'login2', 'secret2', 'Ünother', 'the second')",
             u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (2, 1, 0)"});
    }
};

} // namespace dax::test
