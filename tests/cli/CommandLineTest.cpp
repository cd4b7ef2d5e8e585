// The words on the command line: help, wrong usage, scripts.
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(CommandLineTest, HelpsOnStandardOutput) {
    const Outcome overview = RunDax({u"--help"});
    EXPECT_EQ(overview.exitCode, 0);
    EXPECT_THAT(overview.errors, IsEmpty());
    for (const Text name : {u"sample", u"create", u"validate", u"validate-connector", u"catalogs", u"pick", u"tree",
                            u"lesson", u"info", u"find", u"locks", u"edit", u"map", u"copy"}) {
        EXPECT_THAT(overview.output, HasSubstr("\n  " + ToUtf8(name) + " "));
    }
    const Outcome help = RunDax({u"map", u"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("usage: dax map"));
    EXPECT_EQ(RunDax({u"map", u"a", u"-h"}).output, help.output);
    EXPECT_EQ(RunDax({u"help", u"map"}).output, help.output);
    EXPECT_EQ(RunDax({u"help"}).output, overview.output);
    EXPECT_THAT(RunDax({u"--version"}).output, AllOf(HasSubstr("dax 3.3"), HasSubstr("SQLite 3.")));
}

TEST(CommandLineTest, NamesWhatIsWrongWithTheUsage) {
    const struct {
        std::vector<Text> words;
        std::string named;
    } cases[] = {
        {{}, "usage: dax COMMAND"},
        {{u"vaildate"}, "'vaildate'. Did you mean 'validate'?"},
        {{u"help", u"catalog"}, "Did you mean 'catalogs'?"},
        {{u"tree", u"a", u"--jsno"}, "no option '--jsno'. Did you mean '--json'?"},
        {{u"locks", u"a", u"-j"}, "no option '-j'."},
        {{u"tree", u"Driver=x;PWD=geheim1", u"2", u"3", u"4"}, "too many arguments"},
        {{u"find", u"a", u""}, "is empty"},
        {{u"map", u"a", u"b", u"--rename", u"c"}, "--title TEXT"},
        {{u"map", u"a", u"b", u"--add", u"c", u"--in", u"d", u"--after", u"e"}, "only one of"},
        {{u"map", u"a", u"b", u"--add", u"c", u"--remove", u"d"}, "not both"},
        {{u"map", u"a", u"b", u"--keep-children"}, "--remove"},
        {{u"validate"}, "FILE-or-CONNECTION"},
        {{u"validate", u"a", u"b"}, "'b'"},
        {{u"validate", u"a", u"--catalog"}, "--catalog NAME"},
        {{u"validate", u"a", u"--mdb=yes"}, "'--mdb' takes no value"},
        {{u"validate", u"a", u"--größe"}, "--größe"},
        {{u"sample", u"a", u"--lessons", u"many"}, "'many'"},
        {{u"sample", u"a", u"--lessons=1000001"}, "'1000001'"},
        {{u"sample", u"a", u"--connector", u"--lessons", u"5"}, "--lessons"},
        {{u"create"}, "--print ENGINE"},
        {{u"create", u"--print", u"paper"}, "'paper'"},
        {{u"validate-connector", u"a", u"--user", u"u"}, "--source"},
        {{u"catalogs", u"a"}, "--user"},
        {{u"catalogs", u"a", u"--user", u"u", u"--ip", u"1.2.3.4"}, "--record"},
        {{u"tree", u"a", u"--depth", u"-1"}, "'-1'"},
        {{u"info", u"a", u"--level=4"}, "'4'"},
        {{u"locks", u"a", u"--delete"}, "--as USER"},
        {{u"locks", u"a", u"--delete", u"--as="}, "--as USER"},
        {{u"locks", u"a", u"--admin"}, "--delete"},
        {{u"locks", u"a", u"--sort", u"colour"}, "'colour'"},
        {{u"locks", u"a", u"--descending"}, "--sort"},
        {{u"lesson", u"a", u"b", u"--utf-16"}, "--export"},
        {{u"sample", u"a", u"--login", u"b"}, "--connector"},
        {{u"pick", u"a"}, "--user"},
        {{u"edit", u"a"}, "--file COMMANDS"},
        {{u"edit", u"a", u"remove", u"b", u"--file", u"c"}, "not both"},
        {{u"map", u"a"}, "LESSON"},
        {{u"copy", u"a"}, "FROM TO"},
        {{u"map", u"a", u"b", u"--move", u"c"}, "--to DIRECTION"},
        {{u"map", u"a", u"b", u"--exact"}, "--find"},
    };
    for (const auto& [words, named] : cases) {
        const Outcome outcome = RunDax(words);
        EXPECT_EQ(outcome.exitCode, 2) << named;
        EXPECT_THAT(outcome.errors, HasSubstr(named));
        EXPECT_THAT(outcome.output, IsEmpty()) << named;
    }
}

} // namespace
} // namespace dax::test
