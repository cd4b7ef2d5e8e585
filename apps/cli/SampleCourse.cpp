#include "SampleCourse.h"

#include "SampleLesson.h"
#include "SampleTexts.h"
#include "base/Enumerations.h"
#include "data/modDB.h"

#include <algorithm>
#include <chrono>
#include <iterator>

namespace dax::cli {

namespace {

using modDB::FormatSQLDate;
using modDB::QuoteSQLString;

constexpr size_t LessonsInGroup = 6, GroupsInGroup = 8;
// So many lessons have pages of their own; in a larger course the others are copies of the brief ones, so that it is
// made quickly.
constexpr size_t DifferentLessons = 500, BriefLesson = 5;
constexpr size_t LaterLesson = 120; // from here on titles may be rare: in courses larger than the usual one

TextView LessonTitle(size_t number) {
    for (const SupplementaryTitle& rare : SupplementaryTitles)
        if (number >= LaterLesson && number % std::size(LessonTitles) == rare.place) return rare.title;
    return Cycle(LessonTitles, number);
}

Text Identifier(uint64_t number) {
    Text identifier;
    for (const uint64_t half : {MixBits(number), MixBits(~number)}) {
        for (int shift = 60; shift >= 0; shift -= 4) identifier.push_back(u"0123456789abcdef"[(half >> shift) & 0xF]);
    }
    return identifier;
}

class CourseWriter {
public:
    CourseWriter(const DateTime& start, bool isAccessLike, const std::function<void(Text)>& receiver)
        : now(start), isMDB(isAccessLike), take(receiver) {}

    SampleCounts Write(size_t lessons) {
        // One lesson is at the top level, beside the groups.
        const size_t inGroups = lessons > 1 ? lessons - 1 : 0;
        const size_t topics = std::clamp<size_t>(inGroups / 20, 1, std::size(Topics));
        size_t position = 0;
        for (size_t i = 0; inGroups > 0 && i < topics; ++i) {
            const SampleTopic& topic = Topics[i];
            code = topic.code;
            AddGroup(Text(topic.title), {}, 1, ++position, Share(inGroups, topics, i));
        }
        code = u"TOP";
        if (lessons > 0) AddLesson({}, 1, ++position);
        AddLocks();
        AddTalk();
        for (int i = 0; i < 3; ++i) take(u"INSERT INTO velmoraAutonumbers (ignored) VALUES (-1)");
        take(u"INSERT INTO velmoraProjectProperties (propertyData) VALUES (" +
             QuoteSQLString(u"ProjectName=Sample course – образец – 見本\nOwner=anna\n") + u")");
        return counts;
    }

private:
    static size_t Share(size_t whole, size_t parts, size_t index) {
        return whole / parts + (index < whole % parts ? 1 : 0);
    }

    Text Date(long long secondsAgo) const { return FormatSQLDate(Before(now, secondsAgo), isMDB); }

    // As deep as the number of lessons needs, which is its logarithm.
    void AddGroup(const Text& title, const Text& parent, int depth, size_t position, size_t lessons) {
        const Text id = Identifier(++lastNumber);
        ++counts.groups;
        if (groupIDs.size() < 50) groupIDs.push_back(id);
        AddRow(id, title, code + u"-G" + Number(counts.groups), parent, depth, position, ltGroup);
        if (lessons <= LessonsInGroup) {
            for (size_t i = 1; i <= lessons; ++i) AddLesson(id, depth + 1, i);
            return;
        }
        const size_t groups = std::min(GroupsInGroup, (lessons + LessonsInGroup - 1) / LessonsInGroup);
        for (size_t i = 0; i < groups; ++i) {
            const Text name = Number(i + 1) + u". " + Text(Cycle(GroupTitles, i + static_cast<size_t>(depth)));
            AddGroup(name, id, depth + 1, i + 1, Share(lessons, groups, i));
        }
    }

    void AddLesson(const Text& parent, int depth, size_t position) {
        const Text id = Identifier(++lastNumber);
        const size_t number = ++counts.lessons;
        if (lessonIDs.size() < DifferentLessons) {
            lessonIDs.push_back(id);
            contents.push_back(MakeSampleLesson(number, code));
            if (contents.back().storyboards <= BriefLesson) briefContents.push_back(contents.back());
        }
        const SampleLesson& content = number <= contents.size() ? contents[number - 1] : Cycle(briefContents, number);
        const Text properties = SampleProperties(number, content.storyboards, now);
        AddRow(id, Text(LessonTitle(number)) + u" " + Number(number), code + u"-" + Number(number), parent, depth,
               position, ltLesson, properties, content.text);
        if (number % 5 == 0) AddMilestone(id, SampleAuthor(number), properties, content.text);
    }

    void AddRow(const Text& id, const Text& title, const Text& identifier, const Text& parent, int depth,
                size_t position, LessonTypes type, const Text& properties = {}, const Text& data = {}) {
        take(u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, "
             u"sortPosition, lessonType, lessonProperties, guideData, lessonData) VALUES (" +
             QuoteSQLString(id) + u", " + QuoteSQLString(title) + u", " + QuoteSQLString(identifier) + u", " +
             QuoteSQLString(parent) + u", " + ToText(depth) + u", " + Number(position) + u", " + ToText(type) + u", " +
             QuoteSQLString(properties) + u", '', " + QuoteSQLString(data) + u")");
    }

    void AddMilestone(const Text& lesson, TextView author, const Text& properties, const Text& data) {
        ++counts.milestones;
        take(u"INSERT INTO velmoraMilestones (milestoneID, lessonID, savedBy, savedDate, milestoneProperties, "
             u"lessonData, guideData) VALUES (" +
             QuoteSQLString(Identifier(++lastNumber)) + u", " + QuoteSQLString(lesson) + u", " +
             QuoteSQLString(author) + u", " + Date(static_cast<long long>(counts.milestones) * 7 * Hour) + u", " +
             QuoteSQLString(properties) + u", " + QuoteSQLString(data) + u", '')");
    }

    void AddLock(const Text& lesson, int type, long long age) {
        const size_t number = ++counts.locks;
        take(u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, lockDate, "
             u"lockType) VALUES (" +
             QuoteSQLString(lesson) + u", " + QuoteSQLString(Cycle(Authors, number)) + u", " +
             QuoteSQLString(Cycle(Machines, number)) + u", '192.168.10." + Number(number % 250 + 1) + u"', " +
             QuoteSQLString(Identifier(++lastNumber)) + u", " + Date(age) + u", " + ToText(type) + u")");
    }

    void AddLocks() {
        if (lessonIDs.empty()) return;
        const auto lesson = [&](size_t index) { return Cycle(lessonIDs, index); };
        AddLock(lesson(0), lltEditLesson, 5 * Minute);
        AddLock(lesson(1), lltReadLesson, 3 * Hour);
        AddLock(lesson(2), lltEditGuide, 2 * Day);
        AddLock(lesson(3), lltReadGuide, 40 * Day);
        AddLock(lesson(4), lltClosed, 400 * Day);
        AddLock(lesson(5), lltConnectionTest, Minute);             // still running
        AddLock(lesson(6), lltConnectionTest, 2 * Hour);           // left over
        AddLock(lesson(7), 99, Day);                               // of no known type
        AddLock(Identifier(~uint64_t(0)), lltEditLesson, 3 * Day); // of a lesson that was deleted
        if (!groupIDs.empty()) {
            AddLock(Cycle(groupIDs, 0), lltClosed, 10 * Day);
            AddLock(Cycle(groupIDs, 1), lltEditLesson, 10 * Day); // no group can be edited like that
        }
        for (size_t i = 0; i < lessonIDs.size(); i += 10) {
            AddLock(lesson(i + 8), static_cast<int>(i / 10 % 4) + lltEditLesson, static_cast<long long>(i) * Hour);
        }
    }

    void AddTalk() {
        take(u"INSERT INTO talkConfiguration (configurationID, configurationData, lastModified, revision) VALUES (" +
             QuoteSQLString(Identifier(++lastNumber)) + u", 'Enabled=1', " + Date(90 * Day) + u", 1)");
        for (size_t i = 0; i < lessonIDs.size(); i += 25) {
            const Text post = Identifier(++lastNumber);
            ++counts.posts;
            const long long age = static_cast<long long>(i + 1) * Hour;
            take(u"INSERT INTO talkPosts (postID, lessonID, sbid, postData, status, lastModified, revision) VALUES (" +
                 QuoteSQLString(post) + u", " + QuoteSQLString(lessonIDs[i]) + u", " +
                 QuoteSQLString(contents[i].firstSBID) +
                 u", 'Isn''t the second picture missing? 画像がありません', 0, " + Date(age) + u", 1)");
            take(u"INSERT INTO talkComments (commentID, postID, commentData, lastModified, revision) VALUES (" +
                 QuoteSQLString(Identifier(++lastNumber)) + u", " + QuoteSQLString(post) +
                 u", 'Спасибо, добавлю завтра 👍', " + Date(age / 2) + u", 1)");
        }
    }

    DateTime now;
    bool isMDB;
    const std::function<void(Text)>& take;
    SampleCounts counts;
    uint64_t lastNumber = 0;
    Text code;
    std::vector<Text> groupIDs, lessonIDs; // the first ones
    std::vector<SampleLesson> contents;    // of the lessons in `lessonIDs`
    std::vector<SampleLesson> briefContents;
};

} // namespace

DateTime Before(const DateTime& moment, long long secondsAgo) {
    using namespace std::chrono;
    const sys_days day = year(moment.year) / month(static_cast<unsigned>(moment.month)) /
                         std::chrono::day(static_cast<unsigned>(moment.day));
    const sys_seconds then =
        day + hours(moment.hour) + minutes(moment.minute) + seconds(moment.second) - seconds(secondsAgo);
    const auto thenDay = floor<days>(then);
    const year_month_day date(thenDay);
    const hh_mm_ss time(then - thenDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

SampleCounts WriteSampleCourse(size_t lessons, const DateTime& now, bool isMDB, const std::function<void(Text)>& take) {
    return CourseWriter(now, isMDB, take).Write(lessons);
}

} // namespace dax::cli
