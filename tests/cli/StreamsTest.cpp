// What goes in and out as bytes, and Ctrl+C: in a shell, as people use the program.
#ifndef _WIN32

#include "Program.h"

#include "support/TestDatabases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

namespace dax::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

size_t FilesIn(const TempFolder& folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

TEST(StreamsTest, OutputErrorsAreErrors) {
    const TempFolder folder;
    ASSERT_EQ(RunShell(folder.Path(), "$dax sample c.db && $dax sample a.db --connector").exitCode, 0);
    std::istringstream lines("help\n"
                             "validate c.db\n"
                             "tree c.db\n"
                             "tree c.db --json\n"
                             "lesson c.db SAF-2 --export -\n"
                             "info c.db\n"
                             "find c.db SAF-2\n"
                             "locks c.db --invalid --delete --admin --yes\n"
                             "map c.db SAF-2 --add A --json\n"
                             "edit c.db move SAF-2 down\n"
                             "pick a.db --user anna\n"
                             "create b.db\n"
                             "lesson c.db SAF-2 --export /dev/full\n");
    for (std::string words; std::getline(lines, words);) {
        for (const std::string target : {">/dev/full", ">&-"}) {
            if (words.ends_with("/dev/full") && target == ">&-") continue;
            const Outcome outcome =
                RunShell(folder.Path(), "$dax " + words + " " + target + "; code=$?; rm -f b.db d.db file; exit $code");
            EXPECT_EQ(outcome.exitCode, 3) << words << target;
            EXPECT_THAT(outcome.errors, HasSubstr("cannot be written: ")) << words;
        }
    }
    EXPECT_THAT(RunShell(folder.Path(), "$dax edit c.db move SAF-2 up >/dev/full").errors,
                HasSubstr("It was done all the same: Saved: 1 moved"));
    const Outcome closed = RunShell(
        folder.Path(), "$dax sample big.db --lessons 9000 >/dev/null 2>&1; for first in '' 'trap \"\" PIPE;'; do "
                       "bash -c \"$first $dax tree big.db --ids | head -n 1; exit \\${PIPESTATUS[0]}\"; echo $?; done");
    EXPECT_THAT(closed.output, ::testing::MatchesRegex("big.db[^\n]*\n141\nbig.db[^\n]*\n141\n"));
    EXPECT_THAT(closed.errors, IsEmpty());
}

TEST(StreamsTest, ReadsWhatIsTextAndRefusesTheRest) {
    const TempFolder folder;
    ASSERT_EQ(RunShell(folder.Path(), "$dax sample c.db && $dax lesson c.db SAF-2 --export kept").exitCode, 0);
    const std::string edit = "$dax edit c.db --file -";
    const struct {
        std::string script;
        int exitCode;
        std::string said;
    } cases[] = {
        {"$dax edit c.db update SAF-2 title $'Gr\\xf6\\xdfe'", 2, "Argument 6 is not valid UTF-8"},
        {"printf 'move SAF-2 down\\nupdate SAF-2 title Gr\\xf6\\xdfe\\n' | " + edit, 1, "not valid UTF-8 in line 2"},
        {"printf 'move SAF-2 down\\nupdate SAF-2 title Gr\\xf6\\xdfe\\n' > f; $dax edit c.db --file f", 1,
         "'f' is not valid UTF-8 in line 2"},
        {"printf 'move SAF-2 down\\0\\n' | " + edit, 1, "not valid UTF-8 in line 1"},
        {"printf '\\xff\\xfea\\0\\n\\0\\0\\xd8b\\0' | " + edit, 1, "not valid UTF-16 in line 2"},
        {"printf '\\xff\\xfea' | " + edit, 1, "not valid UTF-16 in line 1"},
        {"printf 'update SAF-2 title Größe\\n' | iconv -t UTF-16 | " + edit, 0, "Saved: 1 updated"},
        {"(printf '\\xfe\\xff'; printf 'update SAF-2 identifier Maß\\n' | iconv -t UTF-16BE) | " + edit, 0,
         "Saved: 1 updated"},
        {"$dax find c.db maß --exact", 0, " / Größe  [Maß]  {"},
        {"$dax edit c.db --file none", 1, "'none' cannot be read: No such file"},
        {"$dax edit c.db --file .", 1, "'.' is a folder"},
        {"$dax lesson c.db Maß --export kept", 1, "'kept' exists already"},
        {"$dax lesson c.db Maß --export kept --force", 0, "Written: kept"},
        {"$dax lesson c.db Maß --export - | cmp - kept && $dax lesson c.db Maß --import - < kept", 0, "Saved: "},
        {"printf 'lesson\\t1\\nmap\\t\\xf6\\n' | $dax lesson c.db Maß --import -", 1, "not valid UTF-8 in line 2"},
        {"nohup $dax edit c.db add lesson T id new-1 && $dax tree c.db new-1", 0, "Added: new-1"},
    };
    for (const auto& [script, exitCode, said] : cases) {
        const Outcome outcome = RunShell(folder.Path(), script);
        EXPECT_EQ(outcome.exitCode, exitCode) << script << outcome.errors;
        EXPECT_THAT(outcome.output + outcome.errors, HasSubstr(said)) << script;
    }
}

// Sends the signal as soon as the program has written a line that begins with the mark to its standard error, where
// --trace writes, and reads on: until then the program waits for the full pipe. The output is what it wrote from then
// on.
Outcome Interrupt(const TempFolder& folder, const std::string& words, const std::string& mark, int signal) {
    return RunShell(folder.Path(),
                    "set -m; p=$(mktemp -d); mkfifo $p/errors $p/input; exec 4<>$p/input; $dax " + words +
                        " 2>$p/errors <&4 & exec 3<$p/errors; while read -r line <&3; do [[ $line == '" + mark +
                        "'* ]] && break; done; kill -" + std::to_string(signal) + " $!; cat <&3; rm -r $p; wait $!");
}

TEST(StreamsTest, CtrlCLeavesEverythingAsItWas) {
    const TempFolder folder;
    for (const int signal : {SIGINT, SIGTERM}) {
        const Outcome made =
            Interrupt(folder, "--trace sample new.db --lessons 9000", "INSERT INTO velmoraLessons", signal);
        EXPECT_EQ(made.exitCode, 128 + signal);
        EXPECT_THAT(made.output, HasSubstr("\ndax sample: Interrupted. No file was made.\n"));
        EXPECT_EQ(FilesIn(folder), 0u);
    }
    ASSERT_EQ(RunShell(folder.Path(), "$dax sample c.db --lessons 9000 && $dax sample a.db").exitCode, 0);
    const auto asked = [&] {
        return RunShell(folder.Path(), "$dax tree c.db --json | md5sum; $dax tree a.db --json | md5sum").output;
    };
    const std::string before = asked();
    const Outcome saved = Interrupt(folder, "--trace edit c.db remove SAF-2", "UPDATE velmoraLessons", SIGINT);
    EXPECT_EQ(saved.exitCode, 130);
    EXPECT_THAT(saved.output, HasSubstr("\ndax edit: Interrupted. Nothing was saved.\n"));
    const Outcome replaced =
        Interrupt(folder, "--trace sample a.db --force --lessons 9000", "INSERT INTO velmoraLessons", SIGINT);
    EXPECT_EQ(replaced.exitCode, 130);
    EXPECT_THAT(replaced.output, HasSubstr("'a.db' is as it was."));
    // To a new file, to one with rows, and to one that becomes larger than the disk allows.
    for (const std::string to : {"new.db", "a.db --force"}) {
        const Outcome copied = Interrupt(folder, "--trace copy c.db " + to, "INSERT INTO velmoraLessons", SIGINT);
        EXPECT_EQ(copied.exitCode, 130);
        EXPECT_THAT(copied.output, HasSubstr("dax copy: Interrupted. Nothing was copied.\n"));
        const Outcome full = RunShell(folder.Path(), "trap '' XFSZ; ulimit -f 500; $dax copy c.db " + to);
        EXPECT_EQ(full.exitCode, 3);
        EXPECT_THAT(full.errors, HasSubstr("db': ")) << to;
        EXPECT_THAT(full.errors, HasSubstr(" Nothing was copied.")) << to;
    }
    EXPECT_EQ(asked(), before);
    EXPECT_EQ(FilesIn(folder), 2u);
    // Where nothing was begun, it ends at once.
    EXPECT_EQ(Interrupt(folder, "tree \"Driver={None}\" --password-prompt", "Password:", SIGINT).exitCode, 130);
}

} // namespace
} // namespace dax::test

#endif
