#include "locks/LockRules.h"

#include "base/Dates.h"
#include "base/Error.h"
#include "base/modGeneric.h"

#include <array>
#include <chrono>

namespace dax::LockRules {

namespace {

constexpr int64_t Minute = 60, Hour = 60 * Minute, Day = 24 * Hour;
constexpr int64_t ConnectionTestLifetime = 10 * Minute;

int64_t SecondsSinceEpoch(const DateTime& date) {
    using namespace std::chrono;
    const year_month_day day{year{date.year}, month{static_cast<unsigned>(date.month)},
                             std::chrono::day{static_cast<unsigned>(date.day)}};
    return sys_days{day}.time_since_epoch().count() * Day + date.hour * Hour + date.minute * Minute + date.second;
}

void AppendPart(Text& text, int64_t number, TextView unit) {
    if (!text.empty()) text += u", ";
    AppendNumber(text, number);
    (text += u' ') += unit;
    if (number != 1) text += u's';
}

[[noreturn]] void RefuseNull(const LockRow& row, TextView field) {
    throw Error(ErrorNumbers::InvalidUseOfNull,
                u"Invalid use of Null: " + Text(field) + u" of " + LockName(row) + u".");
}

} // namespace

bool IsKnownLockType(int32_t lockType) {
    return lockType == lltConnectionTest || (lockType >= lltEditLesson && lockType <= lltClosed);
}

bool IsExpiredConnectionTest(const Value& lockType, const Value& lockDate, const DateTime& now) {
    if (modGeneric::VariantToLong(lockType, lltNone) != lltConnectionTest) return false;
    const auto date = ToDate(lockDate);
    return date && SecondsBetween(*date, now) > ConnectionTestLifetime;
}

bool IsGroupLock(const LockRow& row, const Text& lessonID, KeyedCollection* group) {
    return row.lessonID == lessonID || modGeneric::CollectionHasKey(group, Text(row.lessonID.value_or(TextView())));
}

bool IsInvalidLock(const LockRow& row, bool expectNoSessionIDRecords, const Text& sessionID, const DateTime& now) {
    if (!row.lessonTitle) return true; // the lock points at a deleted lesson
    const int32_t lockType = modGeneric::VariantToLong(row.lockType, lltNone);
    if (modGeneric::VariantToLong(row.lessonType, ltInvalid) != ltLesson && lockType != lltClosed) return true;
    if (!IsKnownLockType(RequiredLockType(row))) return true;
    if (IsExpiredConnectionTest(row.lockType, row.lockDate, now)) return true;
    return expectNoSessionIDRecords && !sessionID.empty() && row.sessionID == sessionID;
}

Text LockName(const LockRow& row) {
    Text name = u"the lock in row " + ToText(static_cast<long long>(row.number));
    const std::pair<TextView, const std::optional<TextView>&> parts[] = {
        {u" on lesson '", row.lessonID}, {u" of user '", row.username}, {u" at machine '", row.machineName}};
    for (const auto& [words, text] : parts)
        if (text) name.append(words).append(*text).append(u"'");
    if (!IsNull(row.lockDate)) name += u" since " + modGeneric::VariantToString(row.lockDate, u"");
    return name;
}

TextView RequiredText(const LockRow& row, const std::optional<TextView>& text, TextView field) {
    if (!text) RefuseNull(row, field);
    return *text;
}

int32_t RequiredLockType(const LockRow& row) {
    constexpr int32_t one = 0, another = 1; // no number is both defaults
    if (IsNull(row.lockType)) RefuseNull(row, u"lockType");
    const int32_t type = modGeneric::VariantToLong(row.lockType, one);
    if (type != one || modGeneric::VariantToLong(row.lockType, another) == one) return type;
    throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch: lockType of " + LockName(row) + u" is not a number.");
}

DateTime RequiredLockDate(const LockRow& row) {
    if (IsNull(row.lockDate)) RefuseNull(row, u"lockDate");
    if (const auto date = ToDate(row.lockDate)) return *date;
    throw Error(ErrorNumbers::TypeMismatch, u"Type mismatch: lockDate of " + LockName(row) + u" is not a date.");
}

bool IsDeletableLock(const LockRecord& record, bool isAdministrator, const Text& username) {
    return isAdministrator || record.username == username;
}

Text LockTypeText(const Value& lockType) {
    if (IsNull(lockType)) return {};
    switch (modGeneric::VariantToLong(lockType, lltNone)) {
    case lltConnectionTest:
        return u"connection test";
    case lltEditLesson:
        return u"editing lesson";
    case lltReadLesson:
        return u"reading lesson";
    case lltEditGuide:
        return u"editing guide";
    case lltReadGuide:
        return u"reading guide";
    case lltClosed:
        return u"closed";
    default:
        return u"(invalid lock type " + modGeneric::VariantToString(lockType, u"") + u")";
    }
}

Text LockAgeText(const Value& lockDate, const DateTime& now) {
    const auto date = ToDate(lockDate);
    if (!date) return {};
    const int64_t age = SecondsBetween(*date, now);
    const int64_t days = age >= Day ? age / Day : 0;
    const int64_t hours = age - days * Day >= Hour ? (age - days * Day) / Hour : 0;
    const int64_t rest = age - days * Day - hours * Hour;
    const int64_t minutes = rest >= Minute ? rest / Minute : 0;
    Text text;
    text.reserve(24);
    if (age >= Day) AppendPart(text, days, u"day");
    if (age >= Hour) AppendPart(text, hours, u"hour");
    if (age >= Minute && age < Day) AppendPart(text, minutes, u"minute");
    if (age < 5 * Minute) AppendPart(text, age % 60, u"second");
    return text;
}

int64_t SecondsBetween(const DateTime& from, const DateTime& to) {
    return SecondsSinceEpoch(to) - SecondsSinceEpoch(from);
}

std::optional<DateTime> ToDate(const Value& value) {
    if (const auto* date = std::get_if<DateTime>(&value)) return *date;
    const auto* text = std::get_if<Text>(&value);
    if (!text) return {};
    if (const auto date = ParseDate(*text)) return date;
    // Numbers in the order year, month, day, hour, minute, second, whatever is between them.
    std::array<int, 6> parts{};
    size_t count = 0;
    bool inNumber = false;
    for (const char16_t unit : *text) {
        const bool isDigit = unit >= u'0' && unit <= u'9';
        if (!isDigit) {
            // A fraction of the seconds, or the time zone, which the table does not have.
            if (count == parts.size() && TextView(u".,Zz+-").find(unit) != TextView::npos) break;
            inNumber = false;
            continue;
        }
        if (!inNumber && count++ == parts.size()) return {};
        inNumber = true;
        int& part = parts[count - 1];
        if (part > 9999) return {};
        part = part * 10 + (unit - u'0');
    }
    const DateTime date{parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]};
    const bool isDate = count >= 3 && date.month >= 1 && date.month <= 12 && date.day >= 1 && date.day <= 31 &&
                        date.hour < 24 && date.minute < 60 && date.second < 60;
    return isDate ? std::optional(date) : std::nullopt;
}

} // namespace dax::LockRules
