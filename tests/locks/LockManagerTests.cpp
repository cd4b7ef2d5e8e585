#include "locks/LockManager.h"

#include "data/Schema.h"
#include "data/modDB.h"
#include "support/TestDatabases.h"

#include <gmock/gmock.h>

namespace dax {
namespace {

using test::EngineTest;

const DateTime Now{2026, 3, 1, 12, 0, 0};

Text Quote(const Text& text) { return modDB::QuoteSQLString(text); }

class LockManagerTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        database->Run(Schema::CreateStatements(Schema::Database::Content, GetParam()));
        AddLesson(u"l1", u"Birds", ltLesson);
        AddLesson(u"l2", u"Ants", ltLesson);
        AddLesson(u"g1", u"Animals", ltGroup);
        manager.connectionString = database->ConnectionString();
        manager.username = u"ann";
        manager.SetupColumns();
        manager.SelectionChanged.Add([this](LockDeleteTypes type) { selections.push_back(type); });
        manager.Error.Add(
            [this](int32_t, const Text& description, const Text& occasion, const Text& routine, int32_t& action) {
                errors.push_back(ToUtf8(routine + u": " + occasion));
                descriptions.push_back(description);
                if (onError) onError();
                action = answers.empty() ? 0 : answers.front();
                if (!answers.empty()) answers.erase(answers.begin());
            });
    }

    void AddLesson(const Text& id, const Text& title, int type) const {
        database->Run({u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel,"
                       u" sortPosition, lessonType, lessonProperties, guideData, lessonData) VALUES (" +
                       Quote(id) + u", " + Quote(title) + u", " + Quote(u"#" + id) + u", '', 1, 1, " + ToText(type) +
                       u", '', '', '')"});
    }

    void AddLock(const Text& lessonID, const Text& user, int type, const Text& session,
                 const DateTime& date = {2026, 3, 1, 11, 0, 0}) const {
        database->Run({u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID,"
                       u" lockDate, lockType) VALUES (" +
                       Quote(lessonID) + u", " + (user == u"NULL" ? user : Quote(user)) + u", 'PC', '10.0.0.1', " +
                       Quote(session) + u", " + modDB::FormatSQLDate(date, GetParam() == Engine::SQLite) + u", " +
                       ToText(type) + u")"});
    }

    Text LocksLeft() const { return database->Ask(u"SELECT Count(*) FROM velmoraUserLocks"); }
    void Select(size_t item, bool on = true) const { list->SetSelected(item, on); }
    std::vector<std::string> Column(TextView key) const {
        std::vector<std::string> cells;
        for (size_t item = 0; item < list->Items().size(); ++item)
            cells.push_back(ToUtf8(list->Cell(item, static_cast<size_t>(list->ColumnIndex(key)))));
        return cells;
    }

    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager{list, [] { return Now; }};
    std::vector<LockDeleteTypes> selections;
    std::vector<std::string> errors;
    std::vector<Text> descriptions;
    std::vector<int32_t> answers;
    std::function<void()> onError;
};

TEST_P(LockManagerTest, ListsFiltersAndCounts) {
    AddLock(u"l1", u"ann", lltEditLesson, u"s1");
    AddLock(u"l2", u"o'hara", lltReadLesson, u"s2", {2026, 3, 1, 11, 59, 18});
    AddLock(u"g1", u"ann", lltClosed, u"s1");
    AddLock(u"gone", u"Ann", lltEditGuide, u"s3"); // its lesson was deleted
    manager.Refresh();
    EXPECT_THAT(Column(u"title"), ::testing::UnorderedElementsAre("Birds", "Ants", "Animals", "(deleted)"));
    EXPECT_THAT(Column(u"age"), ::testing::UnorderedElementsAre("1 hour, 0 minutes", "42 seconds", "1 hour, 0 minutes",
                                                                "1 hour, 0 minutes"));
    EXPECT_EQ(manager.LockCount(), 4);
    EXPECT_EQ(manager.DeletableLockCount(), 2);
    EXPECT_EQ(manager.InvalidLockCount(), 1);
    EXPECT_EQ(manager.ValidLockCount(), 3);
    EXPECT_EQ(selections, std::vector{ldtNoDelete});

    manager.lockDisplayType = ldtInvalidLocks;
    manager.Refresh();
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("(deleted)"));
    EXPECT_EQ(manager.Records().size(), 4u) << "rows that are not shown keep their records";
    Select(0);
    EXPECT_EQ(manager.SelectedInvalidLockCount(), 1);
    EXPECT_EQ(manager.SelectedValidLockCount(), 0);
    EXPECT_EQ(manager.SelectedLockDeleteType(), ldtMixed) << "others' locks, and none deletable: mixed by design";
    manager.isAdministrator = true;
    EXPECT_EQ(manager.SelectedLockDeleteType(), ldtCanDelete);
    manager.isAdministrator = false;

    manager.lockDisplayType = ldtUserLocks;
    manager.username = u"o'hara";
    manager.Refresh();
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Ants"));
    manager.lockDisplayType = ldtGroupLocks;
    manager.lessonID = u"g1";
    manager.Refresh();
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Animals")) << "without a collection only the group itself";
    auto group = std::make_shared<IDCollection>();
    group->Add(u"l1");
    manager.groupIDCollection = group;
    manager.Refresh();
    EXPECT_THAT(Column(u"title"), ::testing::UnorderedElementsAre("Animals", "Birds"));

    selections.clear();
    manager.connectionString.clear();
    manager.Refresh();
    EXPECT_EQ(manager.LockCount(), 0);
    EXPECT_TRUE(selections.empty()) << "without a database nothing is told";
    EXPECT_TRUE(errors.empty());
}

TEST_P(LockManagerTest, HeadersSortAndColumnsFollowTheIdentifier) {
    AddLock(u"l1", u"bob", lltEditLesson, u"s1", {2026, 3, 1, 10, 0, 0});
    AddLock(u"l2", u"ann", lltEditLesson, u"s2", {2026, 3, 1, 11, 0, 0});
    const auto click = [this](TextView key) { manager.ColumnClicked(static_cast<size_t>(list->ColumnIndex(key))); };
    click(u"title");
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Ants", "Birds"));
    click(u"title");
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Birds", "Ants"));
    click(u"age");
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Birds", "Ants")) << "the oldest first";
    click(u"lockdate");
    EXPECT_THAT(Column(u"title"), ::testing::ElementsAre("Ants", "Birds"))
        << "the same column: only the direction turns";

    manager.showIdentifier = false;
    manager.Refresh();
    EXPECT_THAT(Column(u"identifier"), ::testing::Each("")) << "the column stays until the display is rebuilt";
    EXPECT_EQ(Column(u"user").front(), "ann");
    manager.RebuildDisplay(false);
    EXPECT_EQ(list->ColumnIndex(u"identifier"), -1);
    EXPECT_EQ(manager.SortColumn(), u"");
    EXPECT_TRUE(manager.IsDescending()) << "the direction deliberately stays";
    EXPECT_EQ(Column(u"ip").front(), "10.0.0.1");
}

TEST_P(LockManagerTest, DeletesOnlyWhatMayBeDeletedAndWasNotTakenAnew) {
    AddLock(u"l1", u"ann", lltEditLesson, u"s1", {2026, 2, 28, 23, 59, 59});
    AddLock(u"l2", u"ann", lltEditLesson, u"s1", {2026, 3, 1, 0, 0, 0});
    AddLock(u"l2", u"bob", lltReadLesson, u"s2");
    AddLock(u"l1", u"ann", lltReadGuide, u"");
    manager.ColumnClicked(0);
    for (size_t item = 0; item < 4; ++item) Select(item);
    EXPECT_EQ(manager.SelectedDeletableLockCount(), 3);
    EXPECT_EQ(manager.SelectedLockDeleteType(), ldtMixed);
    database->Run({u"UPDATE velmoraUserLocks SET sessionID = 'anew' WHERE lessonID = 'l2' AND username = 'ann'"});
    manager.DeleteSelected();
    EXPECT_EQ(LocksLeft(), u"2") << "bob's, and the one taken anew since the list was read";
    EXPECT_EQ(manager.LockCount(), 2);
    EXPECT_EQ(manager.SelectedLockCount(), 0);
    EXPECT_TRUE(errors.empty());

    selections.clear();
    for (size_t item = 0; item < 2; ++item)
        Select(item, manager.Records()[static_cast<size_t>(list->Items()[item].tag)].username == u"bob");
    std::vector<LockDeleteTypes> requests;
    manager.DeleteRequest.Add([&](LockDeleteTypes type) { requests.push_back(type); });
    manager.KeyDown(46);
    EXPECT_EQ(requests, std::vector{ldtMixed});
    manager.DeleteSelected();
    EXPECT_EQ(LocksLeft(), u"2");
    EXPECT_TRUE(selections.empty()) << "nothing was deletable: no refresh";
    Select(0, false), Select(1, false);
    manager.KeyDown(46);
    EXPECT_EQ(requests.size(), 1u);
}

TEST_P(LockManagerTest, EachAnswerToANullUserEndsAsDocumented) {
    AddLock(u"l1", u"ann", lltEditLesson, u"s1");
    AddLock(u"l2", u"NULL", lltEditLesson, u"s2");
    manager.ColumnClicked(static_cast<size_t>(list->ColumnIndex(u"lockdate")));
    for (const int32_t action : {0, int32_t{actAbort}, 77}) {
        errors.clear();
        selections.clear();
        answers = {action};
        manager.Refresh();
        EXPECT_EQ(errors, std::vector<std::string>{"Refresh: updating the lock display"}) << action;
        EXPECT_TRUE(selections.empty());
        EXPECT_LE(manager.LockCount(), 1) << "the rows before the failure stay";
    }
    // Ignored twice: filling the record, and filling the cell.
    errors.clear();
    answers = {actIgnore, actIgnore};
    manager.Refresh();
    EXPECT_EQ(errors.size(), 2u);
    EXPECT_THAT(Column(u"user"), ::testing::UnorderedElementsAre("ann", ""));
    EXPECT_THAT(Column(u"machine"), ::testing::Each("PC")) << "it goes on with the next statement";

    // The host repairs the row and asks to try again: the row in memory is still the old one.
    errors.clear();
    answers = {actRetry, actRetry, actAbort};
    manager.Refresh();
    EXPECT_EQ(errors.size(), 3u) << "the same statement, once more each time";
}

class LockManagerFaultTest : public LockManagerTest {}; // the fault is a trigger written for one engine

TEST_P(LockManagerFaultTest, AFailingDeleteIsRolledBackRetriedOrSkipped) {
    AddLock(u"l1", u"ann", lltEditLesson, u"s1");
    AddLock(u"l2", u"ann", lltEditLesson, u"s2");
    const std::vector<Text> refuse{u"CREATE TRIGGER refuse BEFORE DELETE ON velmoraUserLocks WHEN OLD.lessonID = 'l2'"
                                   u" BEGIN SELECT RAISE(ABORT, 'kept'); END"};
    const auto selectBoth = [this] {
        manager.ColumnClicked(1);
        for (size_t item = 0; item < list->Items().size(); ++item) Select(item);
    };
    database->Run(refuse);
    for (const int32_t action : {0, int32_t{actAbort}, 99}) {
        selectBoth();
        answers = {action};
        errors.clear();
        manager.DeleteSelected();
        ASSERT_EQ(errors, std::vector<std::string>{"DeleteSelected: deleting selected locks"});
        EXPECT_THAT(ToUtf8(descriptions.back()), ::testing::HasSubstr("kept"));
        EXPECT_EQ(LocksLeft(), u"2") << "all or nothing";
    }
    selectBoth();
    answers = {actIgnore};
    manager.DeleteSelected();
    EXPECT_EQ(LocksLeft(), u"1") << "the refused one is skipped, the other deleted";

    AddLock(u"l1", u"ann", lltEditLesson, u"s1");
    selectBoth();
    errors.clear();
    answers = {actRetry, actIgnore};
    manager.DeleteSelected();
    EXPECT_EQ(errors.size(), 2u) << "retried, then skipped";
    EXPECT_EQ(LocksLeft(), u"1");
    database->Run({u"DROP TRIGGER refuse"}); // no connection of the manager stands in the way
}

TEST_P(LockManagerTest, TheHostMayDoAnythingInsideTheErrorEvent) {
    AddLock(u"l1", u"NULL", lltEditLesson, u"s1");
    onError = [this] {
        onError = nullptr;
        database->Run({u"UPDATE velmoraUserLocks SET username = 'ann'"});
        manager.Refresh();
    };
    answers = {actIgnore};
    manager.Refresh();
    EXPECT_THAT(Column(u"user"), ::testing::ElementsAre("ann")) << "the inner refresh stands, the outer one is left";
    EXPECT_EQ(selections.size(), 1u);

    manager.connectionString = u"Driver=SQLite3;Database=" + test::TempFolder().File(u"missing.db");
    answers = {actIgnore, actIgnore, actIgnore};
    manager.Refresh();
    EXPECT_EQ(manager.LockCount(), 0) << "ignoring everything ends, too";
    auto released = std::make_unique<LockManager>(list, [] { return Now; });
    released->connectionString = manager.connectionString;
    released->Error.Add([&](int32_t, const Text&, const Text&, const Text&, int32_t& action) {
        action = actRetry;
        released.reset();
    });
    released->Refresh();
    EXPECT_FALSE(released);
}

INSTANTIATE_TEST_SUITE_P(Engines, LockManagerTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);
INSTANTIATE_TEST_SUITE_P(Engines, LockManagerFaultTest, ::testing::Values(Engine::SQLite), test::EngineName);

} // namespace
} // namespace dax
