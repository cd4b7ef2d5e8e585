// dax locks: the real program on locks of every kind, on every engine.
#include "CourseRows.h"
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// The machines of the listed locks, in order.
std::string Machines(const std::string& json) {
    std::string machines;
    const std::string label = "\"machine\":\"";
    for (size_t at = 0; (at = json.find(label, at)) != std::string::npos;) {
        at += label.size();
        machines += json.substr(at, json.find('"', at) - at);
    }
    return machines;
}

// On the course of every test: three valid locks, one on a deleted lesson, a connection test.
struct Locks {
    explicit Locks(Engine engine) : database(engine) {
        MakeCourse(database);
        database.Run({LockRow(u"l1", u"anna", u"m3", 1), LockRow(u"l2", u"юлия", u"m1", 2),
                      LockRow(u"l3", u"o''neil", u"m5", 3), LockRow(u"gone", u"anna", u"m2", 1),
                      LockRow(u"l1", u"юлия", u"m4", -2)});
    }
    Outcome Run(std::vector<Text> words) const {
        words.insert(words.begin(), {u"locks", database.ConnectionString()});
        return RunDax(words);
    }
    const TestDatabase database;
};

TEST(LocksCommandTest, ListsWhatFitsAllFilters) {
    const Locks locks(Engine::SQLite);
    const struct {
        std::vector<Text> words;
        std::string machines;
    } cases[] = {
        {{u"--sort", u"machine"}, "m1m2m3m4m5"},
        {{u"--sort", u"age", u"--descending"}, "m5m4m3m2m1"},
        {{u"--user", u"anna", u"--sort", u"date"}, "m2m3"},
        {{u"--user", u"o'neil"}, "m5"},
        {{u"--lesson", u"L-1", u"--sort", u"machine"}, "m3m4"},
        {{u"--lesson", u"gone"}, "m2"},
        {{u"--group", u"G-1", u"--sort", u"machine"}, "m1m3m4"},
        {{u"--group", u"/", u"--invalid"}, "m4"},
        {{u"--invalid", u"--sort", u"machine"}, "m2m4"},
        {{u"--invalid", u"--user", u"юлия", u"--lesson", u"l1"}, "m4"},
        {{u"--lesson", u"G-2"}, ""},
    };
    for (const auto& [words, machines] : cases) {
        std::vector<Text> all = words;
        all.push_back(u"--json");
        const Outcome outcome = locks.Run(all);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(Machines(outcome.output), machines);
    }
    EXPECT_THAT(
        locks.Run({u"--user", u"anna", u"--lesson", u"l1", u"--json"}).output,
        AllOf(HasSubstr("{\"lessonID\":\"l1\",\"title\":\"O'Neil's \\\"first\\\"\",\"identifier\":\"L-1\",\"lockType\":"
                        "1,\"lock\":\"editing lesson\",\"lockDate\":\"2020-02-03T13:00:05\",\"age\":\""),
              HasSubstr("\"ip\":\"10.0.0.1\",\"sessionID\":\"s\",\"valid\":true}\n]}")));
    const Outcome table = locks.Run({u"--sort", u"user"});
    EXPECT_THAT(table.output, AllOf(StartsWith("Lesson "), HasSubstr("\n(deleted) "), HasSubstr(" editing guide "),
                                    EndsWith("\n\n5 locks, 2 invalid\n")));
    EXPECT_EQ(locks.Run({u"--user", u"nobody"}).output, "no locks\n");
    EXPECT_EQ(locks.Run({u"--lesson", u"nothing"}).exitCode, 1);
}

class LockDeletionOnEnginesTest : public ::testing::TestWithParam<Engine> {};

TEST_P(LockDeletionOnEnginesTest, StaysWithinTheRights) {
    DAX_NEEDS_ENGINE(GetParam());
    const Locks locks(GetParam());
    const TestDatabase& database = locks.database;
    const auto count = [&] { return database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"); };
    const Outcome own = locks.Run({u"--delete", u"--as", u"anna", u"--group", u"G-1", u"--yes"});
    EXPECT_EQ(own.exitCode, 1) << own.errors;
    EXPECT_THAT(own.output,
                AllOf(HasSubstr("\nПривет 😀, reading lesson by юлия: not deleted: it belongs to another user\n"),
                      EndsWith("\n1 of 3 locks deleted\n")));
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks WHERE username = 'anna'"), u"1");

    const Outcome others = locks.Run({u"--delete", u"--as", u"Anna", u"--yes", u"--json"});
    EXPECT_EQ(others.exitCode, 1);
    EXPECT_THAT(others.output, Not(HasSubstr("\"deleted\":true")));
    EXPECT_EQ(count(), u"4");

    database.Run({LockRow(u"l2", u"", u"m9", 1)});
    const Outcome all = locks.Run({u"--delete", u"--admin", u"--yes"});
    EXPECT_EQ(all.exitCode, 1);
    EXPECT_THAT(all.errors, HasSubstr("lack values"));
    EXPECT_THAT(all.output, AllOf(HasSubstr("the database did not find it"), EndsWith("\n4 of 5 locks deleted\n")));
    EXPECT_EQ(database.Ask(u"SELECT machineName FROM velmoraUserLocks"), u"m9");
}

INSTANTIATE_TEST_SUITE_P(Engines, LockDeletionOnEnginesTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST(LockDeletionTest, AsksFirst) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    database.Run({LockRow(u"l1", u"anna", u"m1", 1), LockRow(u"l2", u"юлия", u"m2", 1)});
    const struct {
        std::string answer;
        std::vector<Text> rights;
        std::string question;
        Text left;
    } cases[] = {
        {"", {u"--admin"}, "Delete 2 locks?", u"2"},
        {"no\n", {u"--admin"}, "Delete 2 locks?", u"2"},
        {"y\r\n", {u"--as", u"anna"}, "Delete 1 lock of 2, the rest being held by other users?", u"1"},
        {"y\n", {u"--admin"}, "Delete 1 lock?", u"0"},
    };
    for (const auto& [answer, rights, question, left] : cases) {
        std::vector<Text> words = {u"locks", database.ConnectionString(), u"--delete"};
        words.insert(words.end(), rights.begin(), rights.end());
        const Outcome outcome = RunDax(words, answer);
        EXPECT_EQ(outcome.exitCode, left == u"0" ? 0 : 1) << answer;
        EXPECT_THAT(outcome.errors, HasSubstr(question));
        EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), left) << answer;
    }
}

TEST(LockDeletionTest, SaysWhatSurvivesAndWhatFails) {
    TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    database.Run(
        {LockRow(u"l1", u"anna", u"m1", 1), LockRow(u"l2", u"anna", u"m2", 1),
         u"CREATE TRIGGER again AFTER DELETE ON velmoraUserLocks WHEN old.machineName = 'm1' BEGIN INSERT INTO "
         u"velmoraUserLocks VALUES (old.lessonID, old.username, old.machineName, old.machineIP, 'new', "
         u"'2030-01-01 00:00:00', old.lockType); END"});
    const std::vector<Text> words = {u"locks", database.ConnectionString(), u"--delete", u"--as", u"anna", u"--yes"};
    const Outcome taken = RunDax(words);
    EXPECT_EQ(taken.exitCode, 1);
    EXPECT_THAT(taken.output, AllOf(HasSubstr("by anna: not deleted: it was taken again in the meantime\n"),
                                    EndsWith("\n1 of 2 locks deleted\n")));

    database.Run({u"DROP TRIGGER again", LockRow(u"l2", u"anna", u"m2", 1),
                  u"CREATE TRIGGER no BEFORE DELETE ON velmoraUserLocks WHEN old.machineName = 'm2' BEGIN SELECT "
                  u"RAISE(ABORT, 'closed for today'); END"});
    const Outcome failed = RunDax(words);
    EXPECT_EQ(failed.exitCode, 3);
    EXPECT_THAT(failed.errors, AllOf(HasSubstr("closed for today"), EndsWith("\nNothing was deleted.\n")));
    EXPECT_EQ(database.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"2");
}

} // namespace
} // namespace dax::test
