// The lock list on rows that change, with a host that does something of its own inside the events.
#include "fuzz/Driver.h"

#include "hierarchy/EditorFixture.h"
#include "locks/LockManager.h"
#include "locks/LockRules.h"

namespace dax::fuzz {

namespace {

constexpr const char16_t* users[] = {u"'ann'", u"'o''hara'", u"NULL", u"''", u"'\u00E9\U0001D11E'"};
constexpr const char16_t* dates[] = {u"'2026-03-01 11:00:00'", u"'2026-03-01'", u"NULL", u"'yesterday'", u"12"};
constexpr const char16_t* types[] = {u"1", u"5", u"-2", u"NULL", u"77", u"'x'"};
constexpr const char16_t* lessons[] = {u"l1", u"l2", u"kept", u"gone", u"g"};
constexpr const char16_t* names[] = {u"ann", u"o'hara", u""};
constexpr int keys[] = {46, 116, 13};

const test::TestDatabase& Locks() {
    static const test::TestDatabase database(Engine::SQLite);
    static const bool isMade = [] {
        test::CreateTables(database);
        std::vector<Text> statements;
        for (const Text id : {u"l1", u"l2", u"kept", u"g"})
            statements.push_back(test::RowStatement(id, id, u"", 1, 1, id == u"g" ? ltGroup : ltLesson));
        statements.push_back(u"CREATE TRIGGER refuse BEFORE DELETE ON velmoraUserLocks WHEN OLD.lessonID = 'kept' AND "
                             u"OLD.machineIP = 'x' BEGIN SELECT RAISE(ABORT, 'kept'); END");
        database.Run(statements);
        return true;
    }();
    (void)isMade;
    return database;
}

class LockDriver {
public:
    explicit LockDriver(Input input) : bytes(input), callsBack(bytes.Below(3) != 0) {
        manager->connectionString = Reachable();
        manager->username = u"ann";
        manager->SetupColumns();
        const auto callBack = [this] {
            if (callsBack && depth < 3 && bytes.Below(3) == 0) Step();
            if (callsBack && bytes.Below(40) == 39) manager.reset();
        };
        manager->SelectionChanged.Add([callBack](LockDeleteTypes) { callBack(); });
        manager->DeleteRequest.Add([callBack](LockDeleteTypes) { callBack(); });
        manager->Error.Add([this, callBack](int32_t number, const Text& text, const Text&, const Text&, int32_t& act) {
            Require(number != 0 && !text.empty(), "an error has a number and a text");
            static constexpr int32_t actions[] = {0, actIgnore, actIgnore, actIgnore, actRetry, actAbort};
            act = bytes.OneOf(actions);
            callBack();
        });
    }

    void Run() {
        while (!bytes.AtEnd() && manager) {
            if (bytes.Below(3) == 0) ChangeRows();
            Step();
            Check();
        }
        if (!manager) return;
        // Whatever came before: shown is what there is.
        callsBack = false;
        manager->Error.Add([](int32_t, const Text&, const Text&, const Text&, int32_t& act) { act = actIgnore; });
        manager->connectionString = Reachable();
        manager->lockDisplayType = ldtAllLocks;
        manager->RebuildDisplay();
        Check();
        Require(ToText(manager->LockCount()) == Locks().Ask(u"SELECT Count(*) FROM velmoraUserLocks"),
                "every lock is shown");
    }

private:
    // A lock that somebody else holds is not waited for.
    static Text Reachable() { return u"Driver=SQLite3;Timeout=1;Database=" + Locks().Name(); }

    void ChangeRows() {
        std::vector<Text> statements;
        if (bytes.Below(2) == 0) {
            statements.push_back(u"UPDATE velmoraUserLocks SET machineIP = ''");
            statements.push_back(u"DELETE FROM velmoraUserLocks");
        }
        for (auto rows = bytes.Below(4); rows > 0; --rows) {
            statements.push_back(
                u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
                u"lockType) VALUES ('" +
                Text(bytes.OneOf(lessons)) + u"', " + bytes.OneOf(users) + u", 'PC', " +
                (bytes.Below(2) ? u"'x'" : u"'10.0.0.1'") + u", 's', " + bytes.OneOf(dates) + u", " +
                bytes.OneOf(types) + u")");
        }
        Locks().Run(statements);
    }

    void Step() {
        if (!manager) return;
        ++depth;
        switch (bytes.Below(10)) {
        case 0:
        case 1:
            manager->Refresh();
            break;
        case 2:
            manager->RebuildDisplay(bytes.Below(2) == 0);
            break;
        case 3:
            manager->DeleteSelected();
            break;
        case 4:
        case 5:
            for (size_t item = 0; item < list->Items().size(); ++item) list->SetSelected(item, bytes.Below(2) == 0);
            manager->ListClicked();
            break;
        case 6:
            manager->ColumnClicked(bytes.Below(9));
            break;
        case 7:
            manager->KeyDown(bytes.OneOf(keys));
            break;
        case 8:
            manager->lockDisplayType = static_cast<LockDisplayTypes>(bytes.Below(6));
            manager->username = bytes.OneOf(names);
            manager->lessonID = bytes.OneOf(lessons);
            manager->isAdministrator = bytes.Below(2) == 0;
            break;
        default:
            manager->showIdentifier = bytes.Below(2) == 0;
            manager->connectionString = bytes.Below(4) ? Reachable() : bytes.Below(2) ? Text() : Text(u"none/such.db");
        }
        --depth;
    }

    void Check() const {
        if (!manager) return;
        LockCounts counted;
        for (const ListItem& item : list->Items()) {
            Require(item.tag >= 0 && static_cast<size_t>(item.tag) < manager->Records().size(), "a row has a record");
            const LockRecord& record = manager->Records()[static_cast<size_t>(item.tag)];
            const bool isDeletable = LockRules::IsDeletableLock(record, manager->isAdministrator, manager->username);
            ++counted.locks;
            counted.deletable += isDeletable;
            counted.selected += item.isSelected;
            counted.selectedDeletable += isDeletable && item.isSelected;
            counted.invalid += record.invalid;
            counted.selectedInvalid += record.invalid && item.isSelected;
        }
        Require(manager->Counts() == counted, "the locks are counted right");
    }

    Bytes bytes;
    bool callsBack;
    int depth = 0;
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    std::unique_ptr<LockManager> manager =
        std::make_unique<LockManager>(list, [] { return DateTime{2026, 3, 1, 12, 0, 0}; });
};

} // namespace

void DriveLocks(Input input) { LockDriver(input).Run(); }

} // namespace dax::fuzz
