#include "locks/LockQueries.h"
#include "locks/LockRules.h"

#include "base/Error.h"

#include <gtest/gtest.h>

#include <tuple>

namespace dax {
namespace {

const DateTime Now{2026, 3, 1, 0, 0, 30};

TEST(LockRules, AgesAreWrittenForPeople) {
    const std::pair<DateTime, Text> cases[] = {
        {{2026, 3, 1, 0, 0, 30}, u"0 seconds"},
        {{2026, 3, 1, 0, 0, 29}, u"1 second"},
        {{2026, 2, 28, 23, 59, 30}, u"1 minute, 0 seconds"},
        {{2026, 2, 28, 23, 55, 30}, u"5 minutes"},
        {{2026, 2, 28, 23, 0, 31}, u"59 minutes"},
        {{2026, 2, 28, 23, 0, 30}, u"1 hour, 0 minutes"},
        {{2026, 2, 28, 0, 0, 30}, u"1 day, 0 hours"},
        {{2026, 2, 27, 23, 0, 30}, u"1 day, 1 hour"},
        {{2025, 2, 28, 0, 0, 30}, u"366 days, 0 hours"},
        {{2026, 3, 1, 0, 0, 40}, u"-10 seconds"},
        {{2026, 3, 1, 0, 1, 45}, u"-15 seconds"},
        {{2026, 3, 1, 0, 0, 28, 999'000'000}, u"2 seconds"}, // of the calendar, not elapsed ones
    };
    for (const auto& [date, text] : cases) EXPECT_EQ(ToUtf8(LockRules::LockAgeText(date, Now)), ToUtf8(text));
    EXPECT_EQ(LockRules::LockAgeText({}, Now), u"");
    EXPECT_EQ(LockRules::LockAgeText(Text(u"no date"), Now), u"");
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
                group = int64_t{ltGroup}, edit = int64_t{lltEditLesson}, recent = DateTime{2026, 2, 28, 23, 58, 50};
    const struct {
        const char* what;
        std::optional<TextView> title;
        Value lessonType, lockType, date;
        TextView session;
        bool isInvalid;
    } cases[] = {
        {"an ordinary one", u"", lesson, edit, recent, u"s1", false},
        {"the lesson is gone", {}, lesson, closed, recent, u"s1", true},
        {"a group can only be closed", u"", group, edit, recent, u"s1", true},
        {"a closed group", u"", group, closed, recent, u"s1", false},
        {"no such type", u"", lesson, int64_t{6}, recent, u"s1", true},
        {"a connection test", u"", lesson, test, DateTime{2026, 2, 28, 23, 50, 30}, u"s1", false},
        {"an expired connection test", u"", lesson, test, DateTime{2026, 2, 28, 23, 50, 29}, u"s1", true},
        {"a test without a date never expires", u"", lesson, test, {}, u"s1", false},
        {"a real lock never expires", u"", lesson, edit, DateTime{2025, 3, 1}, u"s1", false},
        {"left over from the host's own session", u"", lesson, edit, recent, u"mine", true},
    };
    for (const auto& [what, title, lessonType, lockType, date, session, isInvalid] : cases) {
        LockRow row;
        std::tie(row.lessonTitle, row.lessonType, row.lockType, row.lockDate, row.sessionID) =
            std::tie(title, lessonType, lockType, date, session);
        EXPECT_EQ(LockRules::IsInvalidLock(row, true, u"mine", Now), isInvalid) << what;
        EXPECT_EQ(LockRules::IsInvalidLock(row, false, u"mine", Now), isInvalid && session != u"mine") << what;
        row.sessionID = u"";
        EXPECT_EQ(LockRules::IsInvalidLock(row, true, u"", Now), isInvalid && session != u"mine") << what;
        for (const Value& odd : {Value(), Value(Text(u"one"))}) {
            row.lockType = odd;
            if (title && lessonType == lesson) {
                EXPECT_THROW(LockRules::IsInvalidLock(row, true, u"", Now), Error) << what;
            }
        }
    }
}

TEST(LockRules, DatesComeAsTextToo) {
    for (const Text text : {u"2026/02/28 13:05:09", u"2026-02-28T13:05:09Z", u"2026-02-28 13:05:09+02:00",
                            u"2026/2/28 1:05:09 PM", u"2026.02.28 13.05.09"})
        EXPECT_EQ(LockRules::ToDate(text), (DateTime{2026, 2, 28, 13, 5, 9})) << ToUtf8(text);
    EXPECT_EQ(LockRules::ToDate(Text(u"2026.12.31 23.59.59")), (DateTime{2026, 12, 31, 23, 59, 59}));
    for (const Text text : {u"2026.01.01 0.0", u"2026.01.01"})
        EXPECT_EQ(LockRules::ToDate(text), (DateTime{2026, 1, 1}));
    for (const Text text :
         {u"", u"yesterday", u"2026-13-01", u"2026-02-28 25:00:00", u"1 2 3 4 5 6 7", u"99999999999999999999-01-01",
          u"2026.02.28 24.00.00", u"2026.02.28 23.60.00", u"2026.02.28 23.00.60", u"2026.00.10", u"2026.13.01",
          u"2026.01.00", u"2026.01.32", u"2026.01"})
        EXPECT_FALSE(LockRules::ToDate(text)) << ToUtf8(text);
}

TEST(LockQueries, TextsAreTheDocumentedOnes) {
    const auto query = [](LockDisplayTypes type, const Text& user, const Text& lesson, const Text& sort, bool down) {
        const Text text = LockQueries::BuildLockQuery(type, user, lesson, sort, down);
        const Text base =
            u"SELECT velmoraUserLocks.lessonID, velmoraUserLocks.username, velmoraUserLocks.machineName,      "
            u"velmoraUserLocks.machineIP, velmoraUserlocks.lockDate, velmoraUserLocks.lockType,      "
            u"velmoraUserLocks.sessionID,      velmoraLessons.lessonTitle, velmoraLessons.lessonIdentifier, "
            u"velmoraLessons.lessonType  FROM velmoraUserLocks      LEFT OUTER JOIN velmoraLessons ON "
            u"velmoraUserLocks.lessonID = velmoraLessons.lessonID ";
        EXPECT_TRUE(text.starts_with(base)) << ToUtf8(text);
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
