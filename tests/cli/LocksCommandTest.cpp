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
class LocksCommandTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        MakeCourse(*database);
        database->Run({LockRow(u"l1", u"anna", u"m3", 1), LockRow(u"l2", u"юлия", u"m1", 2),
                       LockRow(u"l3", u"o''neil", u"m5", 3), LockRow(u"gone", u"anna", u"m2", 1),
                       LockRow(u"l1", u"юлия", u"m4", -2)});
    }
    Outcome Run(const std::string& words, const std::string& input = {}) const {
        return RunOn(database->ConnectionString(), "locks " + words, input);
    }
    Text Count() const { return database->Ask(u"SELECT Count(*) FROM velmoraUserLocks"); }
};
INSTANTIATE_TEST_SUITE_P(Engines, LocksCommandTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST_P(LocksCommandTest, ListsWhatFitsAllFilters) {
    const std::pair<const char*, const char*> cases[] = {
        {"--sort machine", "m1m2m3m4m5"},
        {"--sort age --descending", "m5m4m3m2m1"},
        {"--user anna --sort date", "m2m3"},
        {"--user o'neil", "m5"},
        {"--lesson L-1 --sort machine", "m3m4"},
        {"--lesson gone", "m2"},
        {"--group G-1 --sort machine", "m1m3m4"},
        {"--group / --invalid", "m4"},
        {"--invalid --user юлия --lesson l1", "m4"},
        {"--lesson G-2", ""},
    };
    for (const auto& [words, machines] : cases) {
        const Outcome outcome = Run(std::string(words) + " --json");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(Machines(outcome.output), machines) << words;
    }
    ExpectSaid(database->ConnectionString(),
               {{"locks --user anna --lesson l1 --json", 0,
                 "{\"lessonID\":\"l1\",\"title\":\"O'Neil's \\\"first\\\"\",\"identifier\":\"L-1\",\"lockType\":"
                 "1,\"lock\":\"editing lesson\",\"lockDate\":\"2020-02-03T13:00:05\",\"age\":\""},
                {"locks --sort user", 0, "\n(deleted) "},
                {"locks --sort user", 0, " editing guide "},
                {"locks --sort user", 0, "\n\n5 locks, 2 invalid\n"},
                {"locks --user nobody", 0, "no locks\n"},
                {"locks --lesson nothing", 1, ""}});
}

TEST_P(LocksCommandTest, DeletesWithinTheRights) {
    EXPECT_THAT(Run("--delete --as anna --group G-1", "no\n").errors,
                HasSubstr("Delete 1 lock of 3, the rest being held by other users?"));
    EXPECT_EQ(Run("--delete --admin", "").exitCode, 1) << "without an answer";
    EXPECT_EQ(Count(), u"5");
    const Outcome own = Run("--delete --as anna --group G-1", "y\r\n");
    EXPECT_EQ(own.exitCode, 1) << own.errors;
    EXPECT_THAT(own.output,
                AllOf(HasSubstr("\nПривет 😀, reading lesson by юлия: not deleted: it belongs to another user\n"),
                      EndsWith("\n1 of 3 locks deleted\n")));
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM velmoraUserLocks WHERE username = 'anna'"), u"1");
    EXPECT_THAT(Run("--delete --as Anna --yes --json").output, Not(HasSubstr("\"deleted\":true")));
    EXPECT_EQ(Count(), u"4");

    database->Run({LockRow(u"l2", u"", u"m9", 1)});
    const Outcome all = Run("--delete --admin --yes");
    EXPECT_EQ(all.exitCode, 1);
    EXPECT_THAT(all.errors, HasSubstr("lack values"));
    EXPECT_THAT(all.output, AllOf(HasSubstr("the database did not find it"), EndsWith("\n4 of 5 locks deleted\n")));
    EXPECT_EQ(database->Ask(u"SELECT machineName FROM velmoraUserLocks"), u"m9");
}

TEST(LockDeletionTest, SaysWhatWasTakenAgain) {
    const TestDatabase database(Engine::SQLite);
    MakeCourse(database);
    database.Run(
        {LockRow(u"l1", u"anna", u"m1", 1), LockRow(u"l2", u"anna", u"m2", 1),
         u"CREATE TRIGGER again AFTER DELETE ON velmoraUserLocks WHEN old.machineName = 'm1' BEGIN INSERT INTO "
         u"velmoraUserLocks VALUES (old.lessonID, old.username, old.machineName, old.machineIP, 'new', "
         u"'2030-01-01 00:00:00', old.lockType); END"});
    ExpectSaid(database.ConnectionString(),
               {{"locks --delete --as anna --yes", 1,
                 "by anna: not deleted: it was taken again in the meantime\n1 of 2 locks deleted\n"}});
}

} // namespace
} // namespace dax::test
