// A process that is killed in the middle of the write test leaves no row behind.
#ifndef _WIN32

#include "EngineDatabases.h"

#include "validation/ContentValidation.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace dax::test {

namespace {

class KilledOnEveryEngine : public OnEveryEngine {};
DAX_ON_EVERY_ENGINE(KilledOnEveryEngine);

} // namespace

TEST_P(KilledOnEveryEngine, BetweenAnyTwoOfItsRows) {
    const EngineDatabase database(GetParam(), Schema::Database::Content);
    const auto before = database.Counts();
    for (int survivedInserts = 0; survivedInserts < 5; ++survivedInserts) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int inserts = 0;
            SetStatementObserver([&inserts, survivedInserts](TextView statement) {
                if (statement.starts_with(u"INSERT") && inserts++ == survivedInserts) raise(SIGKILL);
            });
            int32_t number = 0;
            Text description;
            TestContentWrite(database.ConnectionString(), number, description, false);
            _exit(1); // not killed: the row that should have been the last was not sent
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "after " << survivedInserts << " rows";
        EXPECT_EQ(database.Counts(), before) << "after " << survivedInserts << " rows";
    }
    int32_t number = 0;
    Text description;
    EXPECT_TRUE(TestContentWrite(database.ConnectionString(), number, description, false)) << ToUtf8(description);
}

} // namespace dax::test

#endif
