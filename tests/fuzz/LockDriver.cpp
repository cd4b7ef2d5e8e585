// The lock list on rows that change, with a host that does something of its own inside the events.
#include "fuzz/Driver.h"

#include "hierarchy/EditorFixture.h"
#include "locks/LockManager.h"
#include "locks/LockRules.h"

namespace dax::fuzz {

namespace {

constexpr const char16_t* users[] = {u"'ann'", u"'o''hara'", u"NULL", u"''", u"'\u00E9\U0001D11E'"};
constexpr const char16_t* dates[] = {u"'2026-03-01 11:00:00'", u"'2026-03-01'", u"NULL", u"'yesterday'", u"12"};
constexpr int types[] = {1, 5, -2, 77, 78, 79}; // the last two become none and a word
constexpr const char16_t* lessons[] = {u"l1", u"l2", u"kept", u"gone", u"g"};
constexpr const char16_t* names[] = {u"ann", u"o'hara", u""};
constexpr int keys[] = {46, 116, 13};

// With a lock that cannot be deleted.
struct LockedCourse : test::EmptyCourse {
    LockedCourse() {
        for (const Text id : {u"l1", u"l2", u"kept", u"g"})
            Run({test::RowStatement(id, id, u"", 1, 1, id == u"g" ? ltGroup : ltLesson)});
        Run({u"CREATE TRIGGER refuse BEFORE DELETE ON velmoraUserLocks WHEN OLD.lessonID = 'kept' AND "
             u"OLD.sessionID = 'kept' BEGIN SELECT RAISE(ABORT, 'kept'); END"});
    }
};

class LockDriver : public ControlDriver<LockManager> {
public:
    LockDriver(Input input, const test::TestDatabase& course, const std::shared_ptr<ListModel>& shown)
        : ControlDriver(input, std::make_shared<LockManager>(shown, [] { return DateTime{2026, 3, 1, 12, 0, 0}; })),
          database(course), list(shown) {
        control->connectionString = Reachable();
        control->username = u"ann";
        control->SetupColumns();
        CallBackIn(control->SelectionChanged, control->DeleteRequest);
        control->Error.AddPermanent([this](int32_t number, const Text& text, const Text&, const Text&, int32_t& act) {
            Require(number != 0 && !text.empty(), "an error has a number and a text");
            static constexpr int32_t actions[] = {0, actIgnore, actIgnore, actIgnore, actRetry, actAbort};
            act = bytes.OneOf(actions);
            CallBack();
        });
    }

private:
    // Does not wait for a lock that somebody else holds.
    Text Reachable() const { return u"Driver=SQLite3;Timeout=1;Database=" + database.Name(); }

    void ChangeRows() {
        std::vector<Text> statements;
        if (bytes.Below(2) == 0)
            statements = {u"UPDATE velmoraUserLocks SET sessionID = ''", u"DELETE FROM velmoraUserLocks"};
        for (auto rows = bytes.Below(4); rows > 0; --rows)
            statements.push_back(test::LockStatement(bytes.OneOf(lessons), bytes.OneOf(users), bytes.OneOf(types),
                                                     bytes.Below(2) ? u"kept" : u"s", bytes.OneOf(dates)));
        statements.push_back(u"UPDATE velmoraUserLocks SET lockType = CASE lockType WHEN 78 THEN NULL ELSE 'x' END "
                             u"WHERE lockType >= 78");
        database.Run(statements);
    }

    void Round() override {
        if (bytes.Below(3) == 0) ChangeRows();
        Step();
        Check();
    }

    // Whatever came before: shown is what there is.
    void Finish() override {
        callsBack = false;
        control->Error.AddPermanent(
            [](int32_t, const Text&, const Text&, const Text&, int32_t& act) { act = actIgnore; });
        control->connectionString = Reachable();
        control->lockDisplayType = ldtAllLocks;
        control->RebuildDisplay();
        Check();
        RequireEqual(ToText(control->LockCount()), database.Query(u"SELECT Count(*) FROM velmoraUserLocks"),
                     "the list");
    }

    void Do() override {
        switch (bytes.Below(8)) {
        case 0:
            return control->Refresh();
        case 1:
            return control->RebuildDisplay(bytes.Below(2) == 0);
        case 2:
            return control->DeleteSelected();
        case 3:
            for (size_t item = 0; item < list->Items().size(); ++item) list->SetSelected(item, bytes.Below(2) == 0);
            return control->ListClicked();
        case 4:
            return control->ColumnClicked(bytes.Below(9));
        case 5:
            return control->KeyDown(bytes.OneOf(keys));
        case 6:
            control->lockDisplayType = static_cast<LockDisplayTypes>(bytes.Below(6));
            control->username = bytes.OneOf(names);
            control->lessonID = bytes.OneOf(lessons);
            control->isAdministrator = bytes.Below(2) == 0;
            return;
        default:
            control->showIdentifier = bytes.Below(2) == 0;
            control->connectionString = bytes.Below(4) ? Reachable() : bytes.Below(2) ? Text() : Text(u"none/such.db");
        }
    }

    void Check() const {
        if (!control) return;
        LockCounts counted;
        for (const ListItem& item : list->Items()) {
            const LockRecord& record = control->Records().at(static_cast<size_t>(item.tag));
            const bool isDeletable = LockRules::IsDeletableLock(record, control->isAdministrator, control->username);
            ++counted.locks;
            counted.deletable += isDeletable;
            counted.selected += item.isSelected;
            counted.selectedDeletable += isDeletable && item.isSelected;
            counted.invalid += record.invalid;
            counted.selectedInvalid += record.invalid && item.isSelected;
        }
        Require(control->Counts() == counted, "the locks are counted right");
    }

    const test::TestDatabase& database;
    std::shared_ptr<ListModel> list;
};

} // namespace

void DriveLocks(Input input) {
    static const LockedCourse course;
    LockDriver(input, course, std::make_shared<ListModel>()).Run();
}

} // namespace dax::fuzz
