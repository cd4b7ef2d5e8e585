#include "locks/LockQueries.h"
#include "locks/LockRules.h"

#include "base/Error.h"

#include <gtest/gtest.h>

#include <tuple>

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
        {0, u"0 seconds"},           {1, u"1 second"},
        {61, u"1 minute, 1 second"}, {300, u"5 minutes"},
        {3599, u"59 minutes"},       {3600, u"1 hour, 0 minutes"},
        {90000, u"1 day, 1 hour"},   {86400 * 366, u"366 days, 0 hours"},
        {-10, u"-10 seconds"},       {-75, u"-15 seconds"},
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
    const Value closed = int64_t{lltClosed}, test = int64_t{lltConnectionTest}, lesson = int64_t{ltLesson},
                group = int64_t{ltGroup}, edit = int64_t{lltEditLesson}, recent = Before(100);
    const struct {
        const char* what;
        Value title, lessonType, lockType, date, session;
        bool isInvalid;
    } cases[] = {
        {"an ordinary one", Text(), lesson, edit, recent, Text(u"s1"), false},
        {"the lesson is gone", {}, lesson, closed, recent, Text(u"s1"), true},
        {"a group can only be closed", Text(), group, edit, recent, Text(u"s1"), true},
        {"a closed group", Text(), group, closed, recent, Text(u"s1"), false},
        {"no such type", Text(), lesson, int64_t{-1}, recent, Text(u"s1"), true},
        {"no such type", Text(), lesson, int64_t{6}, recent, Text(u"s1"), true},
        {"a connection test", Text(), lesson, test, Before(600), Text(u"s1"), false},
        {"an expired connection test", Text(), lesson, test, Before(601), Text(u"s1"), true},
        {"a test without a date never expires", Text(), lesson, test, {}, Text(u"s1"), false},
        {"a real lock never expires", Text(), lesson, edit, Before(86400 * 365), Text(u"s1"), false},
        {"left over from the host's own session", Text(), lesson, edit, recent, Text(u"mine"), true},
    };
    for (const auto& [what, title, lessonType, lockType, date, session, isInvalid] : cases) {
        LockRow row = ValidRow();
        std::tie(row.lessonTitle, row.lessonType, row.lockType, row.lockDate, row.sessionID) =
            std::tie(title, lessonType, lockType, date, session);
        EXPECT_EQ(LockRules::IsInvalidLock(row, true, u"mine", Now), isInvalid) << what;
    }
    LockRow row = ValidRow();
    row.sessionID = Text(u"mine");
    EXPECT_FALSE(LockRules::IsInvalidLock(row, false, u"mine", Now)) << "the host expects locks of its own";
    row.sessionID = Text();
    EXPECT_FALSE(LockRules::IsInvalidLock(row, true, u"", Now)) << "an empty session identifier matches nothing";
    row.lockType = {};
    EXPECT_THROW(LockRules::IsInvalidLock(row, true, u"", Now), Error);
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
