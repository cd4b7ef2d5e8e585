#include "locks/LockManager.h"

#include "base/modGeneric.h"
#include "controls/KeyCodes.h"
#include "locks/LockQueries.h"
#include "locks/LockRules.h"

#include <algorithm>
#include <optional>

namespace dax {

namespace {

// The columns' positions in the select list of the lock query.
enum LockColumns : size_t {
    ColumnLessonID,
    ColumnUsername,
    ColumnMachineName,
    ColumnMachineIP,
    ColumnLockDate,
    ColumnLockType,
    ColumnSessionID,
    ColumnLessonTitle,
    ColumnLessonIdentifier,
    ColumnLessonType,
};

// True for the text of a date that is written as we write dates, yyyy-mm-dd hh:mm:ss: it need not be kept.
bool IsInUsualForm(TextView date) {
    constexpr TextView form = u"0000-00-00 00:00:00";
    return std::ranges::equal(date, form, [](char16_t unit, char16_t mark) {
        return mark == u'0' ? unit >= u'0' && unit <= u'9' : unit == mark;
    });
}

LockRow ReadRow(const Recordset& recordset) {
    const auto text = [&](size_t column) { return recordset.FieldTextOrNull(column); };
    LockRow row{text(ColumnLessonID),
                text(ColumnUsername),
                text(ColumnMachineName),
                text(ColumnMachineIP),
                recordset.Field(ColumnLockDate),
                recordset.Field(ColumnLockType),
                text(ColumnSessionID),
                text(ColumnLessonTitle),
                text(ColumnLessonIdentifier),
                recordset.Field(ColumnLessonType)};
    const TextView stored = recordset.FieldText(ColumnLockDate);
    if (!std::holds_alternative<DateTime>(row.lockDate) || !IsInUsualForm(stored)) row.lockDateText = stored;
    return row;
}

// The window is notified of the rows once, at the end, also after an exception.
struct Filling {
    explicit Filling(std::shared_ptr<ListModel> filled) : list(std::move(filled)) { list->BeginFilling(); }
    ~Filling() { list->EndFilling(); }
    Filling(const Filling&) = delete;
    Filling& operator=(const Filling&) = delete;
    std::shared_ptr<ListModel> list;
};

// Also before a host is called in the middle of it, which may read the list.
struct FillingPause {
    explicit FillingPause(std::shared_ptr<ListModel> filled) : list(std::move(filled)) {
        if (list) list->EndFilling();
    }
    ~FillingPause() {
        if (list) list->BeginFilling();
    }
    FillingPause(const FillingPause&) = delete;
    FillingPause& operator=(const FillingPause&) = delete;
    std::shared_ptr<ListModel> list;
};

} // namespace

// The columns for the cells of a row, looked up once for all rows; -1 for a column that the list does not have.
struct LockManager::CellColumns {
    explicit CellColumns(const ListModel& list)
        : identifier(list.ColumnIndex(u"identifier")), type(list.ColumnIndex(u"locktype")),
          date(list.ColumnIndex(u"lockdate")), age(list.ColumnIndex(u"age")), user(list.ColumnIndex(u"user")),
          machine(list.ColumnIndex(u"machine")), ip(list.ColumnIndex(u"ip")) {}
    int identifier, type, date, age, user, machine, ip;
};

// One run of Refresh or DeleteSelected: runs its statements one by one and raises Error for each that fails.
class LockManager::Operation {
public:
    struct Aborted {};

    // `filled` is the list in the middle of whose filling the operation is; null for none.
    Operation(LockManager& manager, Text occasion, Text routine, std::shared_ptr<ListModel> filled = {})
        : manager(manager), occasion(std::move(occasion)), routine(std::move(routine)), filled(std::move(filled)),
          started(manager.filling) {}

    // False when it failed and the host ignored it. Throws Aborted when the host cancels the operation, has
    // released the manager, or has refilled the list from inside the event.
    template <typename Statement>
    bool Do(Statement&& statement) {
        for (;;) {
            std::optional<dax::Error> error;
            try {
                statement();
            } catch (...) {
                error = CurrentError();
            }
            RequireCurrent();
            if (!error) return true;
            const int32_t action = AskHost(*error);
            if (action == actIgnore) return false;
            if (action != actRetry) throw Aborted{}; // what is open then closes
        }
    }

private:
    int32_t AskHost(const dax::Error& error) {
        int32_t action = 0;
        {
            const FillingPause pause(filled);
            manager.Error.Raise(error.Number(), error.Description(), occasion, routine, action);
        }
        RequireCurrent();
        return action;
    }

    // A host's code may have run: in an event, or in its collection.
    void RequireCurrent() const {
        if (!started.IsCurrent()) throw Aborted{};
    }

    LockManager& manager;
    Text occasion, routine;
    std::shared_ptr<ListModel> filled;
    RevisionCheck started;
};

LockManager::LockManager(std::shared_ptr<ListModel> list, std::function<DateTime()> clock)
    : lvwLocks(std::move(list)), clock(std::move(clock)) {}

LockManager::~LockManager() = default;

const LockCounts& LockManager::Counts() const {
    if (countedRevision == lvwLocks->Revision() && countedAdministrator == isAdministrator &&
        countedUsername == username)
        return counts;
    counts = {};
    for (const ListItem& item : lvwLocks->Items()) {
        const LockRecord& record = RecordAt(item.tag);
        const int32_t isDeletable = LockRules::IsDeletableLock(record, isAdministrator, username) ? 1 : 0;
        const int32_t isSelected = item.isSelected ? 1 : 0;
        const int32_t isInvalid = record.invalid ? 1 : 0;
        ++counts.locks;
        counts.deletable += isDeletable;
        counts.selected += isSelected;
        counts.selectedDeletable += isSelected & isDeletable;
        counts.invalid += isInvalid;
        counts.selectedInvalid += isSelected & isInvalid;
    }
    countedRevision = lvwLocks->Revision();
    countedAdministrator = isAdministrator;
    countedUsername = username;
    return counts;
}

LockDeleteTypes LockManager::SelectedLockDeleteType() const {
    const LockCounts& current = Counts();
    if (current.selected == 0) return ldtNoDelete;
    return current.selected == current.selectedDeletable ? ldtCanDelete : ldtMixed;
}

Text LockManager::BuildLockQuery() const {
    return LockQueries::BuildLockQuery(lockDisplayType, username, lessonID, sortColumn, isDescending);
}

void LockManager::Refresh() {
    filling.Advance();
    if (connectionString.empty()) {
        lvwLocks->ClearItems();
        return;
    }
    now = clock();
    Operation operation(*this, u"updating the lock display", u"Refresh", lvwLocks);
    Recordset recordset;
    const auto group = groupIDCollection; // the host may set another one during a call
    if (group) group->BeginReading();
    try {
        const Filling whole(lvwLocks);
        recordset.SetCursorLocation(adUseClient);
        operation.Do([&] { recordset.Open(BuildLockQuery(), connectionString, adOpenKeyset, adLockReadOnly); });
        lvwLocks->ClearItems();
        records.clear();
        operation.Do([&] { records.reserve(static_cast<size_t>(std::max<int64_t>(0, recordset.RecordCount())) + 1); });
        const CellColumns columns(*lvwLocks);
        for (size_t index = 0;; ++index) {
            bool isAtEnd = true; // an ignored failure here ends the rows: nothing more can be read
            operation.Do([&] { isAtEnd = recordset.Eof(); });
            if (isAtEnd) break;
            LockRow row;
            operation.Do([&] { row = ReadRow(recordset); });
            row.number = index + 1;
            if (!operation.Do([&] { records.emplace_back(); })) break;
            FillRow(operation, row, index);
            bool isIncluded = true; // so that ignoring a failure shows the row
            operation.Do([&] { isIncluded = IncludeLock(row, group.get()); });
            if (isIncluded) ShowRow(operation, row, index, columns);
            operation.Do([&] { recordset.MoveNext(); });
        }
        operation.Do([&] { recordset.Close(); });
    } catch (const Operation::Aborted&) {
        return;
    }
    SelectionChanged.Raise(SelectedLockDeleteType());
}

// Each field is a statement of its own: ignoring a NULL user leaves the user empty and continues with the machine.
void LockManager::FillRow(Operation& operation, const LockRow& row, size_t index) {
    LockRecord& record = records[index];
    operation.Do([&] { record.lessonID = LockRules::RequiredText(row, row.lessonID, u"lessonID"); });
    operation.Do([&] { record.username = LockRules::RequiredText(row, row.username, u"username"); });
    operation.Do([&] { record.machineName = LockRules::RequiredText(row, row.machineName, u"machineName"); });
    operation.Do([&] { record.machineIP = LockRules::RequiredText(row, row.machineIP, u"machineIP"); });
    operation.Do([&] { record.sessionID = LockRules::RequiredText(row, row.sessionID, u"sessionID"); });
    operation.Do([&] {
        record.storedDate = row.lockDate;
        record.storedDateText = row.lockDateText;
        record.storedType = row.lockType;
    });
    operation.Do([&] { record.lockDate = LockRules::RequiredLockDate(row); });
    operation.Do([&] { record.lockType = LockRules::RequiredLockType(row); });
    operation.Do([&] { record.invalid = LockRules::IsInvalidLock(row, expectNoSessionIDRecords, sessionID, now); });
}

void LockManager::ShowRow(Operation& operation, const LockRow& row, size_t index, const CellColumns& columns) {
    using LockRules::RequiredText;
    std::optional<size_t> item;
    operation.Do([&] { item = lvwLocks->AddItem(row.lessonTitle.value_or(u"(deleted)")); });
    if (!item) return;
    lvwLocks->SetTag(*item, static_cast<int32_t>(index));
    if (records[index].invalid) lvwLocks->SetMark(*item, u"invalid");
    const auto setCell = [&](int column, const auto& text) {
        operation.Do([&] { lvwLocks->SetCell(*item, column, text()); });
    };
    if (showIdentifier) setCell(columns.identifier, [&] { return row.lessonIdentifier.value_or(TextView()); });
    setCell(columns.type, [&] { return LockRules::LockTypeText(row.lockType); });
    setCell(columns.date, [&] { return modGeneric::VariantToString(row.lockDate, u""); });
    setCell(columns.age, [&] { return LockRules::LockAgeText(row.lockDate, now); });
    setCell(columns.user, [&] { return RequiredText(row, row.username, u"username"); });
    setCell(columns.machine, [&] { return RequiredText(row, row.machineName, u"machineName"); });
    setCell(columns.ip, [&] { return RequiredText(row, row.machineIP, u"machineIP"); });
}

bool LockManager::IncludeLock(const LockRow& row, KeyedCollection* group) const {
    switch (lockDisplayType) {
    case ldtGroupLocks:
        return LockRules::IsGroupLock(row, lessonID, group);
    case ldtInvalidLocks:
        return LockRules::IsInvalidLock(row, expectNoSessionIDRecords, sessionID, now);
    default:
        return true;
    }
}

const LockRecord& LockManager::RecordAt(int32_t tag) const {
    if (tag < 0 || static_cast<size_t>(tag) >= records.size())
        throw dax::Error(ErrorNumbers::OutOfRange, u"Subscript out of range: a list item refers to no lock record.");
    return records[static_cast<size_t>(tag)];
}

void LockManager::RebuildDisplay(bool autosizeColumns) {
    lvwLocks->ClearItems();
    sortColumn.clear(); // the direction deliberately stays
    SetupColumns();
    const RevisionCheck before(filling);
    Refresh();
    if (autosizeColumns && before.Exists()) AutosizeColumns();
}

void LockManager::AutosizeColumns() { lvwLocks->AutosizeColumns(); }

void LockManager::DeleteSelected() {
    Operation operation(*this, u"deleting selected locks", u"DeleteSelected");
    Connection connection;
    bool wasDeleted = false;
    try {
        operation.Do([&] { connection.Open(connectionString); });
        operation.Do([&] { connection.BeginTrans(); });
        for (size_t index = 0; index < lvwLocks->Items().size(); ++index) {
            const ListItem& item = lvwLocks->Items()[index];
            if (!item.isSelected) continue;
            const int32_t tag = item.tag;
            bool isDeletable = false;
            operation.Do([&] { isDeletable = LockRules::IsDeletableLock(RecordAt(tag), isAdministrator, username); });
            if (!isDeletable) continue;
            operation.Do([&] { LockQueries::DeleteLockRecord(connection, RecordAt(tag)); });
            wasDeleted = true;
        }
        if (wasDeleted) operation.Do([&] { connection.CommitTrans(); });
        operation.Do([&] { connection.Close(); });
    } catch (const Operation::Aborted&) {
        return; // leaving closes the connection, which rolls back what was not committed
    }
    if (wasDeleted) Refresh();
}

void LockManager::ListClicked() { SelectionChanged.Raise(SelectedLockDeleteType()); }

void LockManager::KeyDown(int keyCode) {
    if (keyCode == f5Key) Refresh();
    if (keyCode != deleteKey) return;
    const LockDeleteTypes deletable = SelectedLockDeleteType();
    if (deletable != ldtNoDelete) DeleteRequest.Raise(deletable);
}

// "Lock Date" and "Lock Age" carry the same tag, so changing from one to the other only reverses the direction.
void LockManager::ColumnClicked(size_t column) {
    if (column >= lvwLocks->Columns().size()) return;
    const Text& tag = lvwLocks->Columns()[column].tag;
    // RebuildDisplay leaves no column and the direction, which the next one then keeps: deliberate.
    if (tag == sortColumn)
        isDescending = !isDescending;
    else if (!sortColumn.empty())
        isDescending = false;
    sortColumn = tag;
    Refresh();
}

void LockManager::SetupColumns() {
    std::vector<ListColumn> columns{{u"title", u"Title", u"velmoraLessons.lessonTitle"}};
    if (showIdentifier) columns.push_back({u"identifier", u"Identifier", u"velmoraLessons.lessonIdentifier"});
    columns.insert(columns.end(), {{u"locktype", u"Lock Type", u"velmoraUserLocks.lockType"},
                                   {u"lockdate", u"Lock Date", u"velmoraUserLocks.lockDate"},
                                   {u"age", u"Lock Age", u"velmoraUserLocks.lockDate"},
                                   {u"user", u"User", u"velmoraUserLocks.username"},
                                   {u"machine", u"Machine", u"velmoraUserLocks.machineName"},
                                   {u"ip", u"IP Address", u"velmoraUserLocks.machineIP"}});
    lvwLocks->SetColumns(std::move(columns));
}

} // namespace dax
