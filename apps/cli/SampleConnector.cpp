#include "SampleCourse.h"
#include "data/modDB.h"

namespace dax::cli {

namespace {

using modDB::QuoteSQLString;

struct User {
    TextView name;
    bool isSuper;
};
constexpr User SampleUsers[] = {
    {u"admin", true}, {u"anna", false}, {u"j.o'neil", false}, {u"юлия", false}, {u"guest", false}};

struct Catalog {
    TextView name, title, description;
};
constexpr Catalog SampleCatalogs[] = {
    {u"velmora_safety", u"Safety at work", u"What everybody has to know before the first day"},
    {u"velmora_languages", u"Sprachen – языки – 言語", u"Courses in eleven languages"},
    {u"velmora_archive", u"Archive (O'Neil's)", u"Courses that are no longer taught"},
};

struct Right {
    int user, catalog, rights; // users and catalogs from 1; rights: 1 administrator, 2 read only, else read and write
};
constexpr Right SampleRights[] = {{2, 1, 1}, {2, 2, 0}, {2, 3, 2}, {3, 3, 3}, {3, 1, 2}, {4, 2, 0}};

} // namespace

SampleConnectorCounts WriteSampleConnector(const DateTime& now, bool isMDB, const Text& login, const Text& password,
                                           const std::function<void(Text)>& take) {
    SampleConnectorCounts counts;
    for (const User& user : SampleUsers) {
        take(u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (" +
             ToText(static_cast<long long>(++counts.users)) + u", " + QuoteSQLString(user.name) + u", " +
             (user.isSuper ? u"1" : u"0") + u")");
    }
    for (const Catalog& catalog : SampleCatalogs) {
        take(u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES (" +
             ToText(static_cast<long long>(++counts.catalogs)) + u", " + QuoteSQLString(catalog.name) + u", " +
             QuoteSQLString(login) + u", " + QuoteSQLString(password) + u", " + QuoteSQLString(catalog.title) + u", " +
             QuoteSQLString(catalog.description) + u")");
    }
    for (const Right& right : SampleRights) {
        take(u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (" + ToText(right.user) + u", " +
             ToText(right.catalog) + u", " + ToText(right.rights) + u")");
    }
    take(u"INSERT INTO velmoraConnectionHistory (username, machineName, machineIP, osVersion, appVersion, "
         u"lastConnect, lastCatalog) VALUES ('anna', 'STUDIO-01', '192.168.10.5', 'Windows 10.0', '3.3', " +
         modDB::FormatSQLDate(Before(now, Day), isMDB) + u", 'velmora_safety')");
    return counts;
}

} // namespace dax::cli
