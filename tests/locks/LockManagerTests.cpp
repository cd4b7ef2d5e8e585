#include "locks/LockManager.h"

#include "hierarchy/EditorFixture.h"
#include "locks/LockQueries.h"
#include "support/SentStatements.h"

#include <gmock/gmock.h>

namespace dax {
namespace {

using ::testing::AllOf, ::testing::Contains, ::testing::Each, ::testing::ElementsAre, ::testing::HasSubstr,
    ::testing::StartsWith;

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
        manager.SelectionChanged.AddPermanent([this](LockDeleteTypes type) { selections.push_back(type); });
        manager.Error.AddPermanent([this](int32_t number, const Text& description, const Text& occasion,
                                          const Text& routine, int32_t& action) {
            errors.push_back(ToUtf8(routine + u", " + occasion + u", " + ToText(number) + u": " + description));
            EXPECT_EQ(action, 0);
            if (answers.empty()) return;
            action = answers.front();
            answers.erase(answers.begin());
        });
    }

    void AddLock(const Text& lessonID, const Text& user, int type, const Text& session,
                 const Text& date = u"#2026/03/01 11:00:00#") const {
        database.Run({test::LockStatement(lessonID, user, type, session, date)});
    }

    Text LocksLeft() const { return database.Query(u"SELECT Count(*) FROM velmoraUserLocks"); }
    void Select(size_t item, bool on = true) const { list->SetSelected(item, on); }
    // The cells of a column from the top, with bars between them.
    std::string Column(TextView key) const {
        Text cells;
        for (size_t item = 0; item < list->Items().size(); ++item)
            cells.append(item ? u"|" : u"").append(list->Cell(item, static_cast<size_t>(list->ColumnIndex(key))));
        return ToUtf8(cells);
    }

    // A group of one lesson that fails on request.
    struct Group : KeyedCollection {
        bool HasKey(const Text& key) override {
            ++calls;
            if (act) std::exchange(act, {})();
            return key == u"l2";
        }
        std::function<void()> act;
        int calls = 0;
    };

    test::TestDatabase database{Engine::SQLite};
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager{list, Noon};
    std::vector<LockDeleteTypes> selections, requests;
    std::vector<std::string> errors;
    std::vector<int32_t> answers;
};

TEST_F(LockManagerTest, RebuildingFitsTheColumnsWhenAskedTo) {
    struct Window : ListModelListener {
        void ColumnsChanged() override {}
        void ItemsChanged() override {}
        void AutosizeColumns() override { ++fitted; }
        int fitted = 0;
    } window;
    list->SetListener(&window);
    for (const auto& [isAsked, fitted] : {std::pair(false, 0), {true, 1}, {false, 1}}) {
        manager.RebuildDisplay(isAsked);
        EXPECT_EQ(window.fitted, fitted);
    }
    list->SetListener(nullptr);
}

TEST_F(LockManagerTest, ListsFiltersAndCounts) {
    AddLock(u"l1", u"'ann'", lltEditLesson, u"s1");
    AddLock(u"l2", u"'o''hara'", lltReadLesson, u"s2", u"#2026/03/01 11:59:18#");
    AddLock(u"g1", u"'ann'", lltClosed, u"s1");
    AddLock(u"gone", u"'Ann'", lltEditGuide, u"s3"); // its lesson was deleted
    manager.Refresh();
    EXPECT_EQ(Column(u"title"), "Birds|Ants|Animals|(deleted)");
    EXPECT_EQ(Column(u"age"), "1 hour, 0 minutes|42 seconds|1 hour, 0 minutes|1 hour, 0 minutes");
    EXPECT_EQ(Column(u"locktype"), "editing lesson|reading lesson|closed|editing guide");
    EXPECT_THAT(Column(u"lockdate"), HasSubstr("11:59:18"));
    EXPECT_EQ(Column(u"ip"), "10.0.0.1|10.0.0.1|10.0.0.1|10.0.0.1");
    const LockRecord& first = manager.Records().at(0);
    EXPECT_TRUE(first.lockDate == (DateTime{2026, 3, 1, 11, 0, 0}) && first.lockType == lltEditLesson);
    EXPECT_EQ(selections, std::vector{ldtNoDelete});
    const auto counts = [this] {
        return std::vector{manager.LockCount(), manager.DeletableLockCount(), manager.ValidLockCount(),
                           manager.SelectedValidLockCount(), manager.SelectedInvalidLockCount()};
    };
    EXPECT_THAT(counts(), ElementsAre(4, 2, 3, 0, 0));
    for (const size_t item : {0, 1, 2}) Select(item);
    EXPECT_THAT(counts(), ElementsAre(4, 2, 3, 3, 0));
    manager.username = u"Ann";
    EXPECT_EQ(manager.DeletableLockCount(), 1);
    manager.username.clear();
    EXPECT_EQ(manager.DeletableLockCount(), 0);

    manager.username = u"ann";
    manager.lockDisplayType = ldtInvalidLocks;
    manager.Refresh();
    EXPECT_EQ(Column(u"title"), "(deleted)");
    EXPECT_EQ(list->Items()[0].mark, u"invalid");
    Select(0);
    EXPECT_THAT(counts(), ElementsAre(1, 0, 0, 0, 1));
    EXPECT_EQ(manager.SelectedLockDeleteType(), ldtMixed) << "others' locks, and none deletable: mixed by design";
    manager.isAdministrator = true;
    EXPECT_EQ(manager.SelectedLockDeleteType(), ldtCanDelete);
    selections.clear();
    manager.connectionString.clear();
    manager.Refresh();
    EXPECT_EQ(manager.LockCount(), 0);
    EXPECT_TRUE(selections.empty() && errors.empty()) << "without a database nothing is reported";
}

TEST_F(LockManagerTest, ColumnsSortAndAreRebuilt) {
    AddLock(u"l1", u"'bob'", lltEditLesson, u"s1");
    AddLock(u"l2", u"'ann'", lltReadLesson, u"s2", u"#2026/03/01 11:59:18#");
    const auto click = [&](TextView column) {
        manager.ColumnClicked(static_cast<size_t>(list->ColumnIndex(column)));
        return Column(u"user");
    };
    const std::string up = "ann|bob", down = "bob|ann";
    EXPECT_EQ(click(u"user"), up);
    EXPECT_EQ(click(u"user"), down);
    EXPECT_EQ(click(u"lockdate"), down) << "another column begins upwards";
    EXPECT_EQ(click(u"age"), up) << "the same column of the table";
    manager.ColumnClicked(list->Columns().size());
    EXPECT_EQ(Column(u"user"), up) << "no column";
    for (const bool shows : {true, false}) {
        manager.showIdentifier = shows;
        manager.RebuildDisplay(true);
        EXPECT_EQ(list->Columns().size(), shows ? 8u : 7u);
        EXPECT_EQ(Column(u"user"), down) << "unsorted";
        EXPECT_EQ(list->Columns()[1].caption, shows ? u"Identifier" : u"Lock Type");
        EXPECT_EQ(list->Cell(0, 1), shows ? u"id l1" : u"editing lesson");
    }
    EXPECT_EQ(click(u"user"), down) << "the direction stays";
    Select(1);
    manager.ListClicked();
    EXPECT_EQ(selections.back(), ldtCanDelete);
    manager.DeleteRequest.AddPermanent([&](LockDeleteTypes type) { requests.push_back(type); });
    manager.KeyDown(45);
    EXPECT_TRUE(requests.empty());
    manager.KeyDown(46);
    Select(1, false);
    manager.KeyDown(46);
    EXPECT_EQ(requests, std::vector{ldtCanDelete});
    EXPECT_EQ(LocksLeft(), u"2");
    manager.connectionString = u"none/such.db";
    manager.RebuildDisplay(false);
    EXPECT_EQ(manager.LockCount(), 0) << "nothing stays of the display before";
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
        ASSERT_EQ(errors.size(), 1u) << action;
        for (const char* part :
             {"Refresh, updating the lock display, ", "Invalid use of Null: username", "row 2", "'l2'", "'PC'"})
            EXPECT_THAT(errors[0], HasSubstr(part));
        EXPECT_TRUE(selections.empty());
        EXPECT_LE(manager.LockCount(), 1) << "the rows before the failure stay";
    }
    // Ignored twice: filling the record, and filling the cell.
    errors.clear();
    answers = {actIgnore, actIgnore};
    manager.Refresh();
    EXPECT_EQ(errors.size(), 2u);
    EXPECT_EQ(Column(u"user"), "ann|");
    EXPECT_EQ(Column(u"machine"), "PC|PC") << "it goes on with the next statement";
}

TEST_F(LockManagerTest, TheGroupIsQueriedRowByRowAndItsErrorsAreTrapped) {
    const auto group = std::make_shared<Group>();
    manager.groupIDCollection = group;
    manager.lessonID = u"l1";
    for (const Text lesson : {u"l1", u"l2", u"g1"}) AddLock(lesson, u"'ann'", lltClosed, u"s1");
    manager.Refresh();
    EXPECT_EQ(group->calls, 0) << "of no interest to the other display types";
    manager.lockDisplayType = ldtGroupLocks;
    const auto fails = [] { throw Error(5, u"not now"); };
    const auto lacksMemory = [] { throw std::bad_alloc(); };
    const struct {
        std::function<void()> act;
        int32_t answer;
        const char* error; // null for none
        int calls;
        const char* titles;
    } cases[] = {
        {{}, 0, nullptr, 2, "Birds|Ants"},
        {fails, 0, ", 5: not now", 1, "Birds"},
        {fails, actRetry, ", 5: ", 3, "Birds|Ants"},
        {fails, actIgnore, ", 5: ", 2, "Birds|Ants"},
        {lacksMemory, actRetry, ", 7: ", 3, "Birds|Ants"},
        {[this] { manager.Refresh(); }, 0, nullptr, 3, "Birds|Ants"}, // a host that does more than reply
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        group->act = each.act;
        group->calls = 0;
        errors.clear();
        answers = {each.answer};
        manager.Refresh();
        EXPECT_EQ(errors.size(), each.error ? 1u : 0u);
        EXPECT_THAT(errors, Each(HasSubstr(each.error ? each.error : "")));
        EXPECT_EQ(group->calls, each.calls);
        EXPECT_EQ(Column(u"title"), each.titles);
    }
    manager.KeyDown(116);
    EXPECT_EQ(manager.LockCount(), 2);
    manager.ColumnClicked(0);
    EXPECT_EQ(Column(u"title"), "Ants|Birds");
}

// As other programs write dates.
TEST_F(LockManagerTest, WhatIsListedCanBeDeletedInWhateverFormItIsStored) {
    for (const Text date :
         {u"'2026-03-01 11:00:00'", u"'2026-03-01 11:00:00.000'", u"'2026/03/01 9:05:07'", u"'2026-03-01T11:00:00'",
          u"'2026-03-01'", u"'2026-03-01 11:00:00.1234567'", u"'2026-03-01T11:00:00Z'", u"'2026/3/1 1:00:00 PM'"}) {
        AddLock(u"l1", u"'ann'", lltEditLesson, u"s1", date);
        AddLock(u"l1", u"'ann'", lltEditLesson, u"s1", u"'2026-03-02 11:00:00.000'");
        manager.Refresh();
        ASSERT_EQ(manager.LockCount(), 2) << ToUtf8(date);
        Select(0);
        manager.DeleteSelected();
        EXPECT_EQ(LocksLeft(), u"1") << ToUtf8(date);
        EXPECT_EQ(database.Query(u"SELECT lockDate FROM velmoraUserLocks").substr(0, 10), u"2026-03-02");
        database.Run({u"DELETE FROM velmoraUserLocks"});
    }
    database.Run({u"DROP TABLE velmoraUserLocks",
                  u"CREATE TABLE velmoraUserLocks (lessonID TEXT, username TEXT, machineName TEXT, machineIP TEXT, "
                  u"sessionID TEXT, lockDate TEXT, lockType TEXT)",
                  u"INSERT INTO velmoraUserLocks VALUES ('l1', 'ann', 'PC', '', 's1', '2026/03/01 9:05:07', ' 1')"});
    manager.Refresh();
    EXPECT_EQ(Column(u"locktype"), "editing lesson");
    Select(0);
    const test::SentStatements sent;
    manager.DeleteSelected();
    EXPECT_THAT(sent.Texts(),
                Contains("DELETE FROM velmoraUserLocks WHERE (lessonID = ?) AND (username = ?) AND (machineName = ?) "
                         "AND (machineIP = ?) AND (lockDate = ?) AND (lockType = ?) AND (sessionID = ?)"));
    EXPECT_EQ(LocksLeft(), u"0");
    EXPECT_TRUE(errors.empty());
}

TEST_F(LockManagerTest, AFailingDeleteIsRolledBackRetriedOrSkipped) {
    const std::pair<std::vector<int32_t>, Text> cases[] = {
        {{0}, u"2"},         {{actAbort}, u"2"},
        {{99}, u"2"},                                       // all or nothing
        {{actIgnore}, u"1"}, {{actRetry, actIgnore}, u"1"}, // the refused one is skipped, the other deleted
    };
    for (const auto& [given, left] : cases) {
        SCOPED_TRACE(::testing::PrintToString(given));
        for (const Text lesson : {u"l1", u"l2"}) AddLock(lesson, u"'ann'", lltEditLesson, u"s1");
        database.Run({u"CREATE TRIGGER refuse BEFORE DELETE ON velmoraUserLocks WHEN OLD.lessonID = 'l2'"
                      u" BEGIN SELECT RAISE(ABORT, 'kept'); END"});
        manager.ColumnClicked(1);
        for (size_t item = 0; item < list->Items().size(); ++item) Select(item);
        answers = given;
        errors.clear();
        manager.DeleteSelected();
        EXPECT_EQ(errors.size(), given.size());
        EXPECT_THAT(errors, Each(AllOf(StartsWith("DeleteSelected, deleting selected locks, "), HasSubstr("kept"))));
        EXPECT_EQ(LocksLeft(), left);
        // No connection of the manager is still open.
        database.Run({u"DROP TRIGGER refuse", u"DELETE FROM velmoraUserLocks"});
    }
}

} // namespace
} // namespace dax
