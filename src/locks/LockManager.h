// The list of user locks of one content database: filtered, sorted, counted, and deleted by those who may.
#pragma once

#include "base/KeyedCollection.h"
#include "controls/Event.h"
#include "controls/ListModel.h"
#include "controls/Reentrance.h"
#include "data/Recordset.h"
#include "locks/LockRecord.h"

#include <functional>
#include <memory>

namespace dax {

struct LockCounts {
    int32_t locks = 0, deletable = 0, selected = 0, selectedDeletable = 0, invalid = 0, selectedInvalid = 0;
    bool operator==(const LockCounts&) const = default;
};

// A host's reply to the Error event; the values are those of a message box.
enum ErrorActions : int32_t { actAbort = 3, actRetry = 4, actIgnore = 5 };

// Properties are plain fields: setting one touches neither the database nor the list before Refresh or
// RebuildDisplay. The host may do anything inside an event, also release the manager.
class LockManager {
public:
    explicit LockManager(std::shared_ptr<ListModel> list, std::function<DateTime()> clock = dax::Now);
    ~LockManager();
    LockManager(const LockManager&) = delete;
    LockManager& operator=(const LockManager&) = delete;

    Text connectionString; // empty: no database
    bool mdbMode = true;
    Text username;
    bool isAdministrator = false;
    Text sessionID;
    Text lessonID;
    std::shared_ptr<KeyedCollection> groupIDCollection; // the group of ldtGroupLocks; queried for each row
    LockDisplayTypes lockDisplayType = ldtAllLocks;
    bool showIdentifier = true; // takes effect when the columns are rebuilt
    bool expectNoSessionIDRecords = true;

    // All counts of the displayed locks, in one pass over them after a change.
    const LockCounts& Counts() const;
    int32_t LockCount() const { return Counts().locks; }
    int32_t DeletableLockCount() const { return Counts().deletable; }
    int32_t SelectedLockCount() const { return Counts().selected; }
    int32_t SelectedDeletableLockCount() const { return Counts().selectedDeletable; }
    int32_t InvalidLockCount() const { return Counts().invalid; }
    int32_t ValidLockCount() const { return Counts().locks - Counts().invalid; }
    int32_t SelectedInvalidLockCount() const { return Counts().selectedInvalid; }
    int32_t SelectedValidLockCount() const { return Counts().selected - Counts().selectedInvalid; }
    // ldtNoDelete only when nothing is selected; a selection of which nothing is deletable is deliberately ldtMixed,
    // since hosts enable their delete command on anything but ldtNoDelete.
    LockDeleteTypes SelectedLockDeleteType() const;

    void Refresh();
    void RebuildDisplay(bool autosizeColumns = true);
    void AutosizeColumns();
    // Deletes every selected deletable lock in one transaction and refreshes; without one nothing happens.
    void DeleteSelected();

    // What the user does in the list.
    void ListClicked();
    void KeyDown(int keyCode);
    void ColumnClicked(size_t column);

    void SetupColumns(); // at first placement and at every load from a saved form
    const Text& SortColumn() const { return sortColumn; }
    bool IsDescending() const { return isDescending; }

    // One per row of the last query, shown or not; the tag of a list item is its index here.
    const std::vector<LockRecord>& Records() const { return records; }
    Text BuildLockQuery() const;

    Event<LockDeleteTypes> SelectionChanged;
    Event<LockDeleteTypes> DeleteRequest; // the host decides and calls DeleteSelected
    // Number, description, the context, the operation, and the host's reply (an ErrorActions value).
    Event<int32_t, const Text&, const Text&, const Text&, int32_t&> Error;

private:
    class Operation;
    struct CellColumns;

    void FillRow(Operation& operation, const LockRow& row, size_t index);
    void ShowRow(Operation& operation, const LockRow& row, size_t index, const CellColumns& columns);
    bool IncludeLock(const LockRow& row, KeyedCollection* group) const;
    const LockRecord& RecordAt(int32_t tag) const;

    std::shared_ptr<ListModel> lvwLocks;
    std::function<DateTime()> clock;
    DateTime now; // the moment of the running refresh, so that all its rows are judged alike
    std::vector<LockRecord> records;
    Text sortColumn;
    bool isDescending = false;
    Revision filling; // of the list

    mutable LockCounts counts;
    mutable uint64_t countedRevision = 0;
    mutable Text countedUsername;
    mutable bool countedAdministrator = false;
};

} // namespace dax
