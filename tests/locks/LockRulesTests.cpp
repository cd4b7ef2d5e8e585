#include "locks/LockQueries.h"
#include "locks/LockRules.h"

#include "data/Error.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

const DateTime Now{2026, 3, 1, 0, 0, 30};

DateTime Before(int64_t seconds) {
    DateTime date = Now;
    // Walks back day by day, so that the test does not share the rule's own calendar.
    static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t ofDay = date.hour * 3600 + date.minute * 60 + date.second - seconds;
    while (ofDay < 0) {
        ofDay += 86400;
        if (--date.day == 0) {
            if (--date.month == 0) date.month = 12, --date.year;
            date.day = lengths[date.month - 1] + (date.month == 2 && date.year % 4 == 0 ? 1 : 0);
        }
    }
    while (ofDay >= 86400) ofDay -= 86400, ++date.day;
    date.hour = static_cast<int>(ofDay / 3600);
    date.minute = static_cast<int>(ofDay / 60 % 60);
    date.second = static_cast<int>(ofDay % 60);
    return date;
}

LockRow ValidRow() {
    return {Text(u"l1"), Text(u"ann"),   Text(u"PC"), Text(u"10.0.0.1"), Before(100), int64_t{lltEditLesson},
            Text(u"s1"), Text(u"Title"), Text(u"T1"), int64_t{ltLesson}};
}

TEST(LockRules, AgesReadAsAPersonSaysThem) {
    const struct {
        int64_t seconds;
        Text text;
    } cases[] = {
        {0, u"0 seconds"},
        {1, u"1 second"},
        {59, u"59 seconds"},
        {60, u"1 minute, 0 seconds"},
        {61, u"1 minute, 1 second"},
        {299, u"4 minutes, 59 seconds"},
        {300, u"5 minutes"},
        {3599, u"59 minutes"},
        {3600, u"1 hour, 0 minutes"},
        {86399, u"23 hours, 59 minutes"},
        {86400, u"1 day, 0 hours"},
        {90000, u"1 day, 1 hour"},
        {86400 * 366, u"366 days, 0 hours"},
        {-1, u"-1 seconds"},
        {-10, u"-10 seconds"},
        {-75, u"-15 seconds"},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(ToUtf8(LockRules::LockAgeText(Before(seconds), Now)), ToUtf8(text)) << seconds;
    }
    EXPECT_EQ(LockRules::LockAgeText({}, Now), u"");
    EXPECT_EQ(LockRules::LockAgeText(Text(u"no date"), Now), u"");
    DateTime withFraction = Before(2);
    withFraction.fraction = 999'000'000;
    EXPECT_EQ(LockRules::LockAgeText(withFraction, Now), u"2 seconds") << "seconds of the calendar, not elapsed ones";
}

TEST(LockRules, TypesHaveNames) {
    const std::pair<int64_t, Text> cases[] = {
        {-2, u"connection test"},        {1, u"editing lesson"},        {2, u"reading lesson"},
        {3, u"editing guide"},           {4, u"reading guide"},         {5, u"closed"},
        {-1, u"(invalid lock type -1)"}, {0, u"(invalid lock type 0)"}, {6, u"(invalid lock type 6)"},
    };
    for (const auto& [type, text] : cases) {
        EXPECT_EQ(LockRules::LockTypeText(type), text);
        EXPECT_EQ(LockRules::IsKnownLockType(static_cast<int32_t>(type)), text[0] != u'(') << type;
    }
    EXPECT_EQ(LockRules::LockTypeText({}), u"");
}

TEST(LockRules, EachReasonMakesALockInvalid) {
    const auto isInvalid = [](const LockRow& row, bool expectNone = true, const Text& session = u"mine") {
        return LockRules::IsInvalidLock(row, expectNone, session, Now);
    };
    EXPECT_FALSE(isInvalid(ValidRow()));

    LockRow row = ValidRow();
    row.lessonTitle = {};
    row.lockType = int64_t{lltClosed};
    EXPECT_TRUE(isInvalid(row)) << "the lesson is gone";

    row = ValidRow();
    row.lessonType = int64_t{ltGroup};
    EXPECT_TRUE(isInvalid(row)) << "a group can only be closed";
    row.lockType = int64_t{lltClosed};
    EXPECT_FALSE(isInvalid(row));

    for (const int64_t type : {-1, 0, 6}) {
        row = ValidRow();
        row.lockType = type;
        EXPECT_TRUE(isInvalid(row)) << type;
    }

    row = ValidRow();
    row.lockType = int64_t{lltConnectionTest};
    row.lockDate = Before(600);
    EXPECT_FALSE(isInvalid(row));
    row.lockDate = Before(601);
    EXPECT_TRUE(isInvalid(row)) << "an expired connection test";
    row.lockDate = {};
    EXPECT_FALSE(isInvalid(row)) << "a test without a date never expires";
    row = ValidRow();
    row.lockDate = Before(86400 * 365);
    EXPECT_FALSE(isInvalid(row)) << "a real lock never expires";

    row = ValidRow();
    row.sessionID = Text(u"mine");
    EXPECT_TRUE(isInvalid(row)) << "left over from the host's own session";
    EXPECT_FALSE(isInvalid(row, false));
    row.sessionID = Text();
    EXPECT_FALSE(isInvalid(row, true, u"")) << "an empty session identifier matches nothing";

    row = ValidRow();
    row.lockType = {};
    EXPECT_THROW(isInvalid(row), Error);
}

TEST(LockRules, GroupsAndOwners) {
    LockRow row = ValidRow();
    IDCollection group;
    EXPECT_TRUE(LockRules::IsGroupLock(row, u"l1", nullptr));
    EXPECT_FALSE(LockRules::IsGroupLock(row, u"other", nullptr));
    EXPECT_FALSE(LockRules::IsGroupLock(row, u"other", &group));
    group.Add(u"l1");
    EXPECT_TRUE(LockRules::IsGroupLock(row, u"other", &group));

    LockRecord record;
    record.username = u"Ann";
    record.invalid = true;
    EXPECT_TRUE(LockRules::IsDeletableLock(record, false, u"Ann"));
    EXPECT_FALSE(LockRules::IsDeletableLock(record, false, u"ann")) << "names match exactly";
    EXPECT_TRUE(LockRules::IsDeletableLock(record, true, u""));
}

TEST(LockRules, DatesComeAsTextToo) {
    EXPECT_EQ(LockRules::ToDate(Text(u"2026-02-28 13:05:09")), (DateTime{2026, 2, 28, 13, 5, 9}));
    EXPECT_EQ(LockRules::ToDate(Text(u"2026/02/28 13:05:09.250")), (DateTime{2026, 2, 28, 13, 5, 9}));
    EXPECT_EQ(LockRules::ToDate(Text(u"2026-02-28")), (DateTime{2026, 2, 28}));
    for (const Text text :
         {u"", u"yesterday", u"2026-13-01", u"2026-02-28 25:00:00", u"1 2 3 4 5 6 7", u"99999999999999999999-01-01"})
        EXPECT_FALSE(LockRules::ToDate(text)) << ToUtf8(text);
}

TEST(LockQueries, TextsAreTheAgreedOnes) {
    const auto query = [](LockDisplayTypes type, const Text& user, const Text& lesson, const Text& sort, bool down) {
        const Text text = LockQueries::BuildLockQuery(type, user, lesson, sort, down);
        const Text base = LockQueries::BuildLockQuery(ldtAllLocks, u"", u"", u"", false);
        EXPECT_TRUE(text.starts_with(base));
        return ToUtf8(text.substr(base.size()));
    };
    EXPECT_EQ(query(ldtUserLocks, u"o'hara", u"l", u"", true), " WHERE (velmoraUserLocks.username = 'o''hara')");
    EXPECT_EQ(query(ldtLessonLocks, u"u", u"l'1", u"velmoraUserLocks.lockDate", true),
              " WHERE (velmoraUserLocks.lessonID = 'l''1') ORDER BY velmoraUserLocks.lockDate DESC");
    EXPECT_EQ(query(ldtUserLocks, u"", u"l", u"velmoraUserLocks.username", false),
              " ORDER BY velmoraUserLocks.username");
    for (const auto type : {ldtAllLocks, ldtGroupLocks, ldtInvalidLocks})
        EXPECT_EQ(query(type, u"u", u"l", u"", false), "");

    const LockRecord record{u"l'1", u"ann", u"PC", u"", u"s", {2026, 2, 28, 13, 5, 9}, -2, false};
    EXPECT_EQ(ToUtf8(LockQueries::BuildLockDeleteText(record, true)),
              "DELETE FROM velmoraUserLocks WHERE  (lessonID = 'l''1') AND (username = 'ann') AND (machineName = 'PC')"
              " AND (machineIP = '') AND (lockDate = #2026/02/28 13:05:09#) AND (lockType = -2) AND (sessionID = 's')");
}

} // namespace
} // namespace dax
