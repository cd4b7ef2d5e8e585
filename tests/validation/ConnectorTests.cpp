// Connector checks and the catalog picker against real databases.
#include "EngineDatabases.h"

#include "data/Recordset.h"
#include "data/modDB.h"
#include "validation/ConnectorValidation.h"
#include "validation/DatabaseValidator.h"
#include "validation/SQLDBPicker.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

class ConnectorOnEveryEngine : public OnEveryEngine {};
DAX_ON_EVERY_ENGINE(ConnectorOnEveryEngine);

void AddUser(const EngineDatabase& connector, int id, const Text& name, int superUser) {
    connector.Run(u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (" + ToText(id) + u", " +
                  modDB::QuoteSQLString(name) + u", " + ToText(superUser) + u")");
}

void AddCatalog(const EngineDatabase& connector, int id, const Text& catalog, const Text& title) {
    connector.Run(u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
                  u"VALUES (" +
                  ToText(id) + u", " + modDB::QuoteSQLString(catalog) + u", 'login" + ToText(id) + u"', 'secret" +
                  ToText(id) + u"', " + modDB::QuoteSQLString(title) + u", 'about " + ToText(id) + u"')");
}

void AddRights(const EngineDatabase& connector, int user, int catalog, int rights) {
    connector.Run(u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (" + ToText(user) + u", " +
                  ToText(catalog) + u", " + ToText(rights) + u")");
}

// What the picker told, one line for each event.
class Listener {
public:
    explicit Listener(SQLDBPicker& picker) {
        picker.CatalogChanged.Add(
            [this](const Text& catalog, const Text& login, const Text& password, const Text& title, const Text& about) {
                heard.push_back(ToUtf8(catalog + u"|" + login + u"|" + password + u"|" + title + u"|" + about));
            });
    }
    std::vector<std::string> Take() { return std::exchange(heard, {}); }

private:
    std::vector<std::string> heard;
};

const std::string nothingChosen = "||||";

} // namespace

TEST_P(ConnectorOnEveryEngine, WhoMayOpenSomething) {
    const EngineDatabase connector(GetParam(), Schema::Database::Connector);
    DatabaseValidator validator;
    const auto expect = [&](const Text& user, ValidationErrorTypes type, const Text& title, const Text& message,
                            const Text& server = u"server") {
        SCOPED_TRACE(ToUtf8(user));
        const bool isValid = validator.ValidateCommonConnection(connector.ConnectionString(), server, u"catalog", user);
        EXPECT_EQ(isValid, type == veNone);
        EXPECT_EQ(validator.ErrorType(), type);
        EXPECT_EQ(validator.ErrorNumber(), 0);
        EXPECT_EQ(validator.Display().picture, StatusPicture::Information);
        EXPECT_EQ(validator.Display().statusTitle, title);
        EXPECT_TRUE(validator.Display().statusMessage.starts_with(message));
    };
    expect(u"anna", veNoCommonUsersExist, u"connector database uninitialized",
           u"The SQL connector database has no user records.  If you are the administrator, use the Velmora "
           u"Connector Management Tool to initialize the database.  If you are not the administrator, have "
           u"the administrator perform this function.");
    AddUser(connector, 1, u"super", 7);
    expect(u"super", veNone, u"", u"connector validated on "); // needs no listed catalog
    AddUser(connector, 2, u"without", 0);
    AddUser(connector, 3, u"O'Neil", 0);
    AddCatalog(connector, 10, u"courses", u"Courses");
    AddRights(connector, 3, 10, 0);
    expect(u"O'Neil", veNone, u"", u"connector validated on "); // rights 0 is a row all the same
    for (const Text user : {u"without", u"nobody", u""})
        expect(user, veNoDBListedForUser, u"no databases available",
               u"You do not have access rights to any database listed in the SQL connector.  Contact your "
               u"administrator for more information.");
    expect(u"super", veNoCommonConnectionDetails, u"no connector specified",
           u"There is no data source or catalog defined for the connector.  Please enter connection "
           u"information and try again.  Check with your administrator for details.",
           u"");
}

TEST_P(ConnectorOnEveryEngine, EachMissingTableAndColumnIsFound) {
    const EngineDatabase connector(GetParam(), Schema::Database::Connector);
    AddUser(connector, 1, u"super", 1);
    DatabaseValidator validator;
    const auto validate = [&](const Text& connectionString) {
        return validator.ValidateCommonConnection(connectionString, u"s", u"c", u"super");
    };
    connector.WithoutEach([&](const Schema::Table&, const Text& what) {
        EXPECT_FALSE(validate(connector.ConnectionString()));
        EXPECT_EQ(validator.ErrorType(), veInvalidDBStructure) << ToUtf8(what);
        EXPECT_EQ(validator.Display().statusTitle, u"invalid connector database structure");
    });
    EXPECT_TRUE(validate(connector.ConnectionString()));
    EXPECT_FALSE(ConnectorHasUsers(u"no connection string") || UserHasListedDatabase(u"no connection string", u"x"));
    EXPECT_FALSE(validate(u"no connection string"));
    EXPECT_EQ(validator.ErrorType(), veCantOpenConnection);
    EXPECT_TRUE(validator.Display().statusMessage.starts_with(
        u"Velmora was unable to open a database connection to the common connector.\n\nCheck with your administrator"));
}

TEST_P(ConnectorOnEveryEngine, ThePickerListsWhatTheUserMayOpen) {
    const EngineDatabase connector(GetParam(), Schema::Database::Connector);
    AddUser(connector, 1, u"super", 1);
    AddUser(connector, 2, u"O'Neil", 0);
    AddUser(connector, 3, u"without", 0);
    AddCatalog(connector, 10, u"alpha", u"Same title");
    AddCatalog(connector, 11, u"beta", u"Beta \U0001F600");
    AddCatalog(connector, 12, u"gamma", u"Same title");
    AddCatalog(connector, 13, u"delta", u"Delta");
    AddRights(connector, 2, 11, 1);
    AddRights(connector, 2, 12, 2);
    AddRights(connector, 2, 13, 3);

    const auto list = std::make_shared<MemoryComboBox>();
    SQLDBPicker picker(list);
    Listener listener(picker);
    const auto load = [&](const Text& user, const Text& catalog) {
        return picker.LoadPicker(connector.ConnectionString(), user, catalog);
    };
    EXPECT_TRUE(load(u"super", u"beta"));
    EXPECT_EQ(list->ListCount(), 4);
    EXPECT_THAT(listener.Take(), testing::ElementsAre(ToUtf8(u"beta|login11|secret11|Beta \U0001F600|about 11")));
    EXPECT_TRUE(picker.IsSuperuser() && picker.IsAdmin() && !picker.IsReadOnly());

    // By title: of two with one title the first in the list, whichever was asked for.
    EXPECT_TRUE(load(u"super", u"gamma"));
    EXPECT_EQ(picker.Title(), u"Same title");
    EXPECT_EQ(list->ListIndex(), modGeneric::FindComboIndex(*list, u"Same title"));
    for (const Text unlisted : {u"BETA", u"nothing", u""}) {
        EXPECT_TRUE(load(u"super", unlisted));
        EXPECT_EQ(list->ListIndex(), 0) << ToUtf8(unlisted);
    }
    listener.Take();

    EXPECT_TRUE(load(u"O'Neil", u"gamma"));
    EXPECT_EQ(list->ListCount(), 3);
    EXPECT_TRUE(!picker.IsSuperuser() && !picker.IsAdmin() && picker.IsReadOnly());
    list->SetListIndex(modGeneric::FindComboIndex(*list, u"Delta"));
    EXPECT_TRUE(!picker.IsAdmin() && !picker.IsReadOnly());
    list->SetListIndex(-1);
    EXPECT_THAT(listener.Take(), testing::ElementsAre("gamma|login12|secret12|Same title|about 12",
                                                      "delta|login13|secret13|Delta|about 13", nothingChosen));

    EXPECT_TRUE(load(u"without", u"beta"));
    EXPECT_EQ(list->ListCount(), 0);
    EXPECT_FALSE(load(u"nobody", u"beta"));
    EXPECT_EQ(picker.Username(), u"nobody");
    EXPECT_THAT(listener.Take(), testing::ElementsAre(nothingChosen, nothingChosen));

    EXPECT_FALSE(picker.LoadPicker(u"", u"super", u"beta"));
    EXPECT_EQ(picker.Username(), u"");
    EXPECT_TRUE(load(u"super", u"beta"));
    listener.Take();
    connector.Run(u"ALTER TABLE velmoraDBList RENAME TO gone");
    EXPECT_THROW(load(u"super", u"beta"), Error);
    EXPECT_EQ(list->ListCount(), 0);
    EXPECT_EQ(picker.DBCatalog() + picker.ConnectionString() + picker.Username(), u"");
    EXPECT_FALSE(picker.IsSuperuser());
    EXPECT_THAT(listener.Take(), testing::ElementsAre());
    connector.Run(u"ALTER TABLE gone RENAME TO velmoraDBList");
    EXPECT_TRUE(load(u"super", u"beta"));
    EXPECT_EQ(listener.Take().size(), 1u) << "the loading flag must not stay set after an error";
}

TEST_P(ConnectorOnEveryEngine, TheHistoryHasOneRowForEachUserAndMachine) {
    const EngineDatabase connector(GetParam(), Schema::Database::Connector);
    AddUser(connector, 1, u"super", 1);
    SQLDBPicker picker(std::make_shared<MemoryComboBox>());
    picker.LoadPicker(connector.ConnectionString(), u"super", u"");
    picker.UpdateConnectionHistory(u"PC1", u"10.0.0.1", u"os", u"1.0");
    EXPECT_EQ(connector.Count(u"velmoraConnectionHistory"), u"0") << "no catalog is selected";
    AddCatalog(connector, 10, u"alpha", u"Alpha");
    picker.LoadPicker(connector.ConnectionString(), u"super", u"");
    picker.Clock = [] { return DateTime{2024, 5, 6, 17, 8, 9}; };
    for (const Text machine : {u"PC1", u"PC2", u"PC1"}) picker.UpdateConnectionHistory(machine, u"ip", u"os", u"2.0");
    EXPECT_EQ(connector.Count(u"velmoraConnectionHistory"), u"2");
    Recordset row;
    row.Open(u"SELECT lastConnect FROM velmoraConnectionHistory WHERE machineName = 'PC1' AND machineIP = 'ip' AND "
             u"osVersion = 'os' AND appVersion = '2.0' AND lastCatalog = 'alpha'",
             connector.ConnectionString());
    ASSERT_FALSE(row.Eof());
    EXPECT_EQ(row.Field(0), Value(DateTime{2024, 5, 6, 17, 8, 9}));
    row.Close();
    // The machine name enters the statement as it is.
    EXPECT_THROW(picker.UpdateConnectionHistory(u"O'Neil's", u"ip", u"os", u"2.0"), Error);
}

} // namespace dax::test
