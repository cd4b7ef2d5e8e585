// Input and output as bytes, and Ctrl+C: in a shell, as people use the program.
#ifndef _WIN32

#include "Program.h"

#include "support/TestDatabases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::HasSubstr;

void ExpectOutputIn(const TempFolder& folder, const std::vector<ExpectedOutput>& scripts) {
    for (const auto& [script, exitCode, part, input] : scripts) {
        const Outcome outcome = RunShell(folder.Path(), script);
        EXPECT_EQ(outcome.exitCode, exitCode) << script << outcome.errors;
        EXPECT_THAT(outcome.output + outcome.errors, HasSubstr(part)) << script;
    }
}

TEST(StreamsTest, BytesThatCannotBeReadOrWrittenAreErrors) {
    const TempFolder folder;
    ASSERT_EQ(RunShell(folder.Path(), "$dax sample c.db && $dax lesson c.db SAF-2 --export kept").exitCode, 0);
    const std::string edit = "$dax edit c.db --file -";
    ExpectOutputIn(
        folder,
        {
            {"$dax help >&-", 3, "cannot be written: "},
            {"$dax tree c.db --json >&-", 3, "cannot be written: "},
            {"$dax locks c.db --invalid --delete --admin --yes >/dev/full", 3, "cannot be written: "},
            {"$dax lesson c.db SAF-2 --export - >/dev/full", 3, "cannot be written: "},
            {"$dax lesson c.db SAF-2 --export /dev/full", 3, "cannot be written: "},
            {"$dax edit c.db move SAF-2 up >/dev/full", 3, "The change was made: Saved: 1 moved"},
            {"$dax edit c.db update SAF-2 title $'Gr\\xf6\\xdfe'", 2, "Argument 6 is not valid UTF-8"},
            {"printf 'move SAF-2 down\\nupdate SAF-2 title Gr\\xf6\\xdfe\\n' | " + edit, 1,
             "not valid UTF-8 in line 2"},
            {"printf 'move SAF-2 down\\0\\n' > f; $dax edit c.db --file f", 1, "'f' is not valid UTF-8 in line 1"},
            {"printf '\\xff\\xfea\\0\\n\\0\\0\\xd8b\\0' | " + edit, 1, "not valid UTF-16 in line 2"},
            {"printf '\\xff\\xfea' | " + edit, 1, "not valid UTF-16 in line 1"},
            {"printf 'update SAF-2 title Größe\\n' | iconv -t UTF-16 | " + edit, 0, "Saved: 1 updated"},
            {"(printf '\\xfe\\xff'; printf 'update SAF-2 identifier Maß\\n' | iconv -t UTF-16BE) | " + edit, 0,
             "Saved: 1 updated"},
            {"$dax find c.db maß --exact", 0, " / Größe  [Maß]  {"},
            {"$dax edit c.db --file none", 1, "'none' cannot be read: No such file"},
            {"$dax edit c.db --file .", 1, "'.' is a folder"},
            {"$dax lesson c.db Maß --export kept --force", 0, "Written: kept"},
            {"$dax lesson c.db Maß --export - | cmp - kept && $dax lesson c.db Maß --import - < kept", 0, "Saved: "},
            {"printf 'lesson\\t1\\nmap\\t\\xf6\\n' | $dax lesson c.db Maß --import -", 1, "not valid UTF-8 in line 2"},
            {"nohup $dax edit c.db add lesson T id new-1 && $dax tree c.db new-1", 0, "Added: new-1"},
        });
    // The reader may stop: the program ends by the signal, or as if it had.
    const Outcome closed = RunShell(
        folder.Path(), "$dax sample big.db --lessons 9000 >/dev/null 2>&1; for first in '' 'trap \"\" PIPE;'; do "
                       "bash -c \"$first $dax tree big.db --ids | head -n 1; exit \\${PIPESTATUS[0]}\"; echo $?; done");
    EXPECT_THAT(closed.output, ::testing::MatchesRegex("big.db[^\n]*\n141\nbig.db[^\n]*\n141\n"));
    EXPECT_EQ(closed.errors, "");
}

// A script that sends the signal as soon as the program has written a line that begins with the mark to its standard
// error, where --trace writes, and reads on: until then the program waits for the full pipe. The output is what it
// wrote from then on.
std::string Interrupt(const std::string& words, const std::string& mark, const std::string& signal = "INT") {
    return "set -m; p=$(mktemp -d); mkfifo $p/errors $p/input; exec 4<>$p/input; $dax --trace " + words +
           " 2>$p/errors <&4 & exec 3<$p/errors; while read -r line <&3; do [[ $line == '" + mark +
           "'* ]] && break; done; kill -" + signal + " $!; cat <&3; rm -r $p; wait $!";
}

TEST(StreamsTest, CtrlCLeavesEverythingAsItWas) {
    const TempFolder folder;
    ASSERT_EQ(RunShell(folder.Path(), "$dax sample c.db --lessons 9000 && $dax sample a.db").exitCode, 0);
    const auto saved = [&] {
        return RunShell(folder.Path(), "$dax tree c.db --json | md5sum; $dax tree a.db --json | md5sum").output;
    };
    const std::string before = saved(), insert = "INSERT INTO velmoraLessons", full = "trap '' XFSZ; ulimit -f 500; ";
    ExpectOutputIn(
        folder,
        {{Interrupt("sample new.db --lessons 9000", insert), 130, "\ndax sample: Interrupted. No file was made.\n"},
         {Interrupt("sample new.db --lessons 9000", insert, "TERM"), 143, "Interrupted. No file was made.\n"},
         {Interrupt("sample a.db --force --lessons 9000", insert), 130, "'a.db' is as it was."},
         {Interrupt("edit c.db remove SAF-2", "UPDATE velmoraLessons"), 130, "Interrupted. Nothing was saved.\n"},
         {Interrupt("copy c.db new.db", insert), 130, "dax copy: Interrupted. Nothing was copied.\n"},
         {Interrupt("copy c.db a.db --force", insert), 130, "dax copy: Interrupted. Nothing was copied.\n"},
         // Larger than the disk allows.
         {full + "$dax copy c.db new.db", 3, " Nothing was copied."},
         {full + "$dax copy c.db a.db --force", 3, " Nothing was copied."},
         // Where nothing was begun, it ends at once.
         {Interrupt("tree \"Driver={None}\" --password-prompt", "Password:"), 130, ""}});
    EXPECT_EQ(saved(), before);
    EXPECT_EQ(CountFiles(folder), 2u);
}

} // namespace
} // namespace dax::test

#endif
