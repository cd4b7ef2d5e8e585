#include "locks/LockManager.h"

#include "data/modDB.h"
#include "hierarchy/EditorFixture.h"

#include <gmock/gmock.h>

namespace dax {
namespace {

DateTime Noon() { return {2026, 3, 1, 12, 0, 0}; }

// On the embedded engine; the others, sorting and deleting are under the tests of the windows and of the command line.
class LockManagerTest : public ::testing::Test {
protected:
    LockManagerTest() {
        test::CreateTables(database);
        database.Run({test::RowStatement(u"l1", u"Birds", u"", 1, 1, ltLesson),
                      test::RowStatement(u"l2", u"Ants", u"", 1, 2, ltLesson),
                      test::RowStatement(u"g1", u"Animals", u"", 1, 3, ltGroup)});
        manager.connectionString = database.ConnectionString();
        manager.username = u"ann";
        manager.SetupColumns();
        manager.SelectionChanged.Add([this](LockDeleteTypes type) { selections.push_back(type); });
        manager.Error.Add(
            [this](int32_t, const Text& description, const Text& occasion, const Text& routine, int32_t& action) {
                errors.push_back(ToUtf8(routine + u": " + occasion));
                descriptions.push_back(description);
                action = answers.empty() ? 0 : answers.front();
                if (!answers.empty()) answers.erase(answers.begin());
            });
    }

    void AddLock(const Text& lessonID, const Text& user, int type, const Text& session,
                 const Text& date = u"2026/03/01 11:00:00") const {
        database.Run({u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
                      u"lockType) VALUES (" +
                      modDB::QuoteSQLString(lessonID) + u", " + user + u", 'PC', '10.0.0.1', " +
                      modDB::QuoteSQLString(session) + u", #" + date + u"#, " + ToText(type) + u")"});
    }

    Text LocksLeft() const { return database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"); }
    void Select(size_t item, bool on = true) const { list->SetSelected(item, on); }
    std::vector<std::string> Column(TextView key) const {
        std::vector<std::string> cells;
        for (size_t item = 0; item < list->Items().size(); ++item)
            cells.push_back(ToUtf8(list->Cell(item, static_cast<size_t>(list->ColumnIndex(key)))));
        return cells;
    }

    test::TestDatabase database{Engine::SQLite};
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager{list, Noon};
    std::vector<LockDeleteTypes> selections;
    std::vector<std::string> errors;
    std::vector<Text> descriptions;
    std::vector<int32_t> answers;
};

TEST_F(LockManagerTest, ListsFiltersAndCounts) {
    AddLock(u"l1", u"'ann'", lltEditLesson, u"s1");
    AddLock(u"l2", u"'o''hara'", lltReadLesson, u"s2", u"2026/03/01 11:59:18");
    AddLock(u"g1", u"'ann'", lltClosed, u"s1");
    AddLock(u"gone", u"'Ann'", lltEditGuide, u"s3"); // its lesson was deleted
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

    selections.clear();
    manager.connectionString.clear();
    manager.Refresh();
    EXPECT_EQ(manager.LockCount(), 0);
    EXPECT_TRUE(selections.empty()) << "without a database nothing is told";
    EXPECT_TRUE(errors.empty());
}

TEST_F(LockManagerTest, EachAnswerToANullUserEndsAsDocumented) {
    AddLock(u"l1", u"'ann'", lltEditLesson, u"s1");
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

TEST_F(LockManagerTest, AFailingDeleteIsRolledBackRetriedOrSkipped) {
    AddLock(u"l1", u"'ann'", lltEditLesson, u"s1");
    AddLock(u"l2", u"'ann'", lltEditLesson, u"s2");
    const std::vector<Text> refuse{u"CREATE TRIGGER refuse BEFORE DELETE ON velmoraUserLocks WHEN OLD.lessonID = 'l2'"
                                   u" BEGIN SELECT RAISE(ABORT, 'kept'); END"};
    const auto selectBoth = [this] {
        manager.ColumnClicked(1);
        for (size_t item = 0; item < list->Items().size(); ++item) Select(item);
    };
    database.Run(refuse);
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

    AddLock(u"l1", u"'ann'", lltEditLesson, u"s1");
    selectBoth();
    errors.clear();
    answers = {actRetry, actIgnore};
    manager.DeleteSelected();
    EXPECT_EQ(errors.size(), 2u) << "retried, then skipped";
    EXPECT_EQ(LocksLeft(), u"1");
    database.Run({u"DROP TRIGGER refuse"}); // no connection of the manager stands in the way
}

} // namespace
} // namespace dax
