// The catalog picker on real databases.
#include "base/modGeneric.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "support/CourseRows.h"
#include "validation/SQLDBPicker.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

using testing::ElementsAre;

const std::string nothingChosen = "||||";

// A connector with four catalogs, and a picker with a log of its events, one line for each.
class Picker : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        CreateTables(*database, Schema::Database::Connector);
        database->Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'super', 1), (2, "
                       u"'O''Neil', 0), (3, 'without', NULL)",
                       u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
                       u"VALUES (10, 'alpha', 'login10', 'secret10', 'Same title', 'about 10'), (11, 'beta', "
                       u"'login11', 'secret11', 'Beta \U0001F600', 'about 11'), (12, 'gamma', 'login12', 'secret12', "
                       u"'Same title', 'about 12'), (13, 'delta', 'login13', 'secret13', 'Delta', 'about 13')",
                       u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (2, 11, 1), (2, 12, 2), (2, 13, "
                       u"NULL)"});
        picker.CatalogChanged.AddPermanent(
            [this](const Text& catalog, const Text& login, const Text& password, const Text& title, const Text& about) {
                received.push_back(ToUtf8(catalog + u"|" + login + u"|" + password + u"|" + title + u"|" + about));
            });
    }
    bool Load(const Text& user, const Text& catalog) {
        return picker.LoadPicker(database->ConnectionString(), user, catalog);
    }
    std::vector<std::string> Take() { return std::exchange(received, {}); }

    const std::shared_ptr<ComboBox> list = std::make_shared<ComboBox>();
    SQLDBPicker picker{list};
    std::vector<std::string> received;
};
INSTANTIATE_TEST_SUITE_P(Engines, Picker, testing::ValuesIn(AllEngines()), EngineName);

} // namespace

TEST_P(Picker, ListsWhatTheUserMayOpen) {
    EXPECT_TRUE(Load(u"super", u"beta"));
    EXPECT_EQ(list->ListCount(), 4);
    EXPECT_THAT(Take(), ElementsAre(ToUtf8(u"beta|login11|secret11|Beta \U0001F600|about 11")));
    EXPECT_TRUE(picker.IsSuperuser() && picker.IsAdmin() && !picker.IsReadOnly());
    // By title: of two with one title the first in the list, whichever was requested.
    EXPECT_TRUE(Load(u"super", u"gamma"));
    EXPECT_EQ(picker.Title(), u"Same title");
    EXPECT_EQ(list->ListIndex(), modGeneric::FindComboIndex(*list, u"Same title"));
    for (const Text unlisted : {u"BETA", u"nothing", u""}) {
        EXPECT_TRUE(Load(u"super", unlisted));
        EXPECT_EQ(list->ListIndex(), 0) << ToUtf8(unlisted);
    }
    Take();

    EXPECT_TRUE(Load(u"O'Neil", u"gamma"));
    EXPECT_EQ(list->ListCount(), 3);
    EXPECT_TRUE(!picker.IsSuperuser() && !picker.IsAdmin() && picker.IsReadOnly());
    list->SetListIndex(modGeneric::FindComboIndex(*list, u"Delta"));
    EXPECT_TRUE(!picker.IsAdmin() && !picker.IsReadOnly());
    list->SetListIndex(-1);
    EXPECT_THAT(Take(), ElementsAre("gamma|login12|secret12|Same title|about 12",
                                    "delta|login13|secret13|Delta|about 13", nothingChosen));
    EXPECT_TRUE(Load(u"without", u"beta"));
    EXPECT_EQ(list->ListCount(), 0);
    EXPECT_FALSE(Load(u"nobody", u"beta"));
    EXPECT_EQ(picker.Username(), u"nobody");
    EXPECT_THAT(Take(), ElementsAre(nothingChosen, nothingChosen));

    EXPECT_FALSE(picker.LoadPicker(u"", u"super", u"beta"));
    EXPECT_EQ(picker.Username(), u"");
    EXPECT_TRUE(Load(u"super", u"beta"));
    Take();
    database->Run({u"ALTER TABLE velmoraDBList RENAME TO gone"});
    EXPECT_THROW(Load(u"super", u"beta"), Error);
    EXPECT_EQ(list->ListCount(), 0);
    EXPECT_EQ(picker.DBCatalog() + picker.ConnectionString() + picker.Username() + picker.DefaultCatalog(), u"");
    EXPECT_FALSE(picker.IsSuperuser());
    EXPECT_THAT(Take(), ElementsAre());
    database->Run({u"ALTER TABLE gone RENAME TO velmoraDBList"});
    EXPECT_TRUE(Load(u"super", u"beta"));
    EXPECT_EQ(Take().size(), 1u) << "the loading flag must not stay set after an error";
}

TEST_P(Picker, RecordsOneRowForEachUserAndMachine) {
    const auto rows = [&] { return database->Query(u"SELECT Count(*) FROM velmoraConnectionHistory"); };
    picker.Clock = [] { return DateTime{2024, 5, 6, 17, 8, 9}; };
    Load(u"without", u"");
    picker.UpdateConnectionHistory(u"PC1", u"10.0.0.1", u"os", u"1.0");
    EXPECT_EQ(rows(), u"0") << "no catalog is selected";
    Load(u"super", u"beta");
    for (const Text machine : {u"PC1", u"PC2", u"PC1"}) picker.UpdateConnectionHistory(machine, u"ip", u"os", u"2.0");
    EXPECT_EQ(rows(), u"2");
    Recordset row;
    row.Open(u"SELECT lastConnect FROM velmoraConnectionHistory WHERE machineName = 'PC1' AND machineIP = 'ip' AND "
             u"osVersion = 'os' AND appVersion = '2.0' AND lastCatalog = 'beta'",
             database->ConnectionString());
    ASSERT_FALSE(row.Eof());
    EXPECT_EQ(row.Field(0), Value(DateTime{2024, 5, 6, 17, 8, 9}));
    row.Close();
    // The machine name enters the statement as it is.
    EXPECT_THROW(picker.UpdateConnectionHistory(u"O'Neil's", u"ip", u"os", u"2.0"), Error);
}

} // namespace dax::test
