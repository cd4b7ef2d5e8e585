#include "LockList.h"

#include "Course.h"
#include "locks/LockRules.h"

#include <algorithm>
#include <unordered_set>

namespace dax::cli {

namespace {

// What makes a lock the same lock, joined by a unit that no name has.
Text Identity(const LockRecord& record) {
    Text identity;
    for (const Text& part : {record.lessonID, record.username, record.machineName, record.machineIP}) {
        identity += part + u'\x1F';
    }
    return identity + ToText(record.lockType);
}

// The same lock, taken at the same moment.
Text ExactIdentity(const LockRecord& record) {
    const DateTime& date = record.lockDate;
    Text identity = Identity(record) + u'\x1F' + record.sessionID;
    for (const int part : {date.year, date.month, date.day, date.hour, date.minute, date.second}) {
        identity += u'\x1F' + ToText(part);
    }
    return identity + u'\x1F' + ToText(date.fraction);
}

} // namespace

LockList::LockList(const Target& target, LockFilter newFilter) : filter(std::move(newFilter)), manager(list) {
    manager.connectionString = target.connection;
    manager.mdbMode = target.isFile;
    // The manager's own display types leave the rest to us.
    if (!filter.user.empty()) {
        manager.lockDisplayType = ldtUserLocks;
        manager.username = filter.user;
    } else if (!filter.lessonID.empty()) {
        manager.lockDisplayType = ldtLessonLocks;
        manager.lessonID = filter.lessonID;
    } else if (filter.onlyInvalid) {
        manager.lockDisplayType = ldtInvalidLocks;
    }
    manager.Error.AddPermanent(
        [this](int32_t number, const Text& description, const Text&, const Text& operation, int32_t& action) {
            if (number == ErrorNumbers::InvalidUseOfNull || number == ErrorNumbers::TypeMismatch) {
                ++oddValues;
                action = actIgnore;
                return;
            }
            failure.emplace(number, description);
            failedIn = operation;
            action = actAbort;
        });
    manager.SetupColumns();
}

bool LockList::Fits(const LockRecord& record) const {
    if (!filter.user.empty() && record.username != filter.user) return false;
    if (!filter.lessonID.empty() && record.lessonID != filter.lessonID) return false;
    if (filter.group && !filter.group->Contains(record.lessonID)) return false;
    return !filter.onlyInvalid || record.invalid;
}

void LockList::Read(const Text& sortKey, bool isDescending) {
    failure.reset();
    oddValues = 0;
    if (const int column = list->ColumnIndex(sortKey); column < 0) {
        manager.Refresh();
    } else {
        manager.ColumnClicked(static_cast<size_t>(column)); // which reads
        if (isDescending && !failure) {
            oddValues = 0;
            manager.ColumnClicked(static_cast<size_t>(column)); // the same column again turns the order round
        }
    }
    if (failure) throw Error(*failure);
    locks.clear();
    const auto cell = [this](size_t item, TextView key) {
        const int column = list->ColumnIndex(key);
        return column < 0 ? Text() : Text(list->Cell(item, static_cast<size_t>(column)));
    };
    for (size_t item = 0; item < list->Items().size(); ++item) {
        const LockRecord& record = manager.Records().at(static_cast<size_t>(list->Items()[item].tag));
        if (!Fits(record)) continue;
        locks.push_back({record, cell(item, u"title"), cell(item, u"identifier"), cell(item, u"locktype"),
                         cell(item, u"lockdate"), cell(item, u"age"), item, LockOutcome::None});
    }
}

size_t LockList::CountDeletable(const Text& user, bool isAdministrator) const {
    return static_cast<size_t>(std::count_if(locks.begin(), locks.end(), [&](const ListedLock& lock) {
        return LockRules::IsDeletableLock(lock.record, isAdministrator, user);
    }));
}

std::optional<Text> LockList::Delete(const Text& user, bool isAdministrator) {
    failure.reset();
    bool isAnyDeletable = false;
    for (ListedLock& lock : locks) {
        const bool isDeletable = LockRules::IsDeletableLock(lock.record, isAdministrator, user);
        isAnyDeletable = isAnyDeletable || isDeletable;
        lock.outcome = isDeletable ? LockOutcome::None : LockOutcome::Protected;
        list->SetSelected(lock.item, true);
    }
    if (!isAnyDeletable) return {};
    manager.username = user;
    manager.isAdministrator = isAdministrator;
    manager.lockDisplayType = ldtAllLocks; // of the list that is read afterwards
    const std::vector<LockRecord> before = manager.Records();
    manager.DeleteSelected();
    if (failure && failedIn != u"Refresh") throw Error(*failure);
    if (!failure) {
        SetOutcomes(before);
        return {};
    }
    for (ListedLock& lock : locks) {
        if (lock.outcome == LockOutcome::None) lock.outcome = LockOutcome::Deleted;
    }
    return failure->Description();
}

void LockList::SetOutcomes(const std::vector<LockRecord>& before) {
    std::unordered_set<Text> former, remaining, lockedAgain;
    for (const LockRecord& record : before) former.insert(ExactIdentity(record));
    for (const LockRecord& record : manager.Records()) {
        if (former.contains(ExactIdentity(record))) {
            remaining.insert(ExactIdentity(record));
        } else {
            lockedAgain.insert(Identity(record));
        }
    }
    for (ListedLock& lock : locks) {
        if (lock.outcome == LockOutcome::Protected) continue;
        lock.outcome = remaining.contains(ExactIdentity(lock.record)) ? LockOutcome::NotDeleted
                       : lockedAgain.contains(Identity(lock.record))  ? LockOutcome::LockedAgain
                                                                      : LockOutcome::Deleted;
    }
}

} // namespace dax::cli
