// What a lock is: valid, invalid, deletable, part of a group; and how its type and age read. Pure functions; the
// present moment is an argument.
#pragma once

#include "base/KeyedCollection.h"
#include "locks/LockRecord.h"

#include <optional>

namespace dax::LockRules {

bool IsKnownLockType(int32_t lockType);

// A connection test older than ten minutes; no other lock ever expires. False for a missing date.
bool IsExpiredConnectionTest(const Value& lockType, const Value& lockDate, const DateTime& now);

// `group` may be null: then only the lesson itself matches. Throws Error when the collection fails.
bool IsGroupLock(const LockRow& row, const Text& lessonID, KeyedCollection* group);

// `sessionID` is the host's own: with `expectNoSessionIDRecords` the host says that it holds no locks, so a row
// that carries it was left over. Throws Error when the lock type is NULL or not a number.
bool IsInvalidLock(const LockRow& row, bool expectNoSessionIDRecords, const Text& sessionID, const DateTime& now);

// The lock as messages name it: its row, lesson, user, machine and date, as far as available.
Text LockName(const LockRow& row);

// A field that must be there. These throw Error, which names field and lock.
TextView RequiredText(const LockRow& row, const std::optional<TextView>& text, TextView field);
int32_t RequiredLockType(const LockRow& row);
DateTime RequiredLockDate(const LockRow& row);

// Exact and case-sensitive; validity is ignored: only an administrator deletes the locks of others.
bool IsDeletableLock(const LockRecord& record, bool isAdministrator, const Text& username);

Text LockTypeText(const Value& lockType);
Text LockAgeText(const Value& lockDate, const DateTime& now);

// Whole seconds by the calendar, fractions cut off; negative when `to` lies before `from`.
int64_t SecondsBetween(const DateTime& from, const DateTime& to);

// A date, or the text of one as engines without a date type keep it ("2026-02-28 13:05:09", fractions allowed).
std::optional<DateTime> ToDate(const Value& value);

} // namespace dax::LockRules
