// The words on the command line: help and wrong usage.
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
    for (const Text& name : Words("sample create validate validate-connector catalogs pick tree lesson info find locks "
                                  "edit map copy")) {
        EXPECT_THAT(overview.output, HasSubstr("\n  " + ToUtf8(name) + " "));
    }
    const Outcome help = RunDax({u"map", u"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("usage: dax map"));
    EXPECT_EQ(RunDax({u"map", u"a", u"-h"}).output, help.output);
    EXPECT_EQ(RunDax({u"help", u"map"}).output, help.output);
    EXPECT_EQ(RunDax({u"help"}).output, overview.output);
}

TEST(CommandLineTest, NamesWhatIsWrongWithTheUsage) {
    const struct {
        std::string line, named;
    } cases[] = {
        {"", "usage: dax COMMAND"},
        {"vaildate", "'vaildate'. Did you mean 'validate'?"},
        {"help catalog", "Did you mean 'catalogs'?"},
        {"locks a -j", "no option '-j'."},
        {"find a \"\"", "is empty"},
        {"map a b --rename c", "--title TEXT"},
        {"map a b --add c --in d --after e", "only one of"},
        {"map a b --add c --remove d", "not both"},
        {"map a b --move c", "--to DIRECTION"},
        {"validate", "FILE-or-CONNECTION"},
        {"validate a b", "'b'"},
        {"validate a --catalog", "--catalog NAME"},
        {"validate a --mdb=yes", "'--mdb' takes no value"},
        {"validate a --größe", "--größe"},
        {"sample a --lessons many", "'many'"},
        {"sample a --lessons=1000001", "'1000001'"},
        {"sample a --connector --lessons 5", "--lessons"},
        {"create --print paper", "'paper'"},
        {"validate-connector a --user u", "--source"},
        {"catalogs a --user u --ip 1.2.3.4", "--record"},
        {"tree a --depth -1", "'-1'"},
        {"info a --level=4", "'4'"},
        {"locks a --delete --as=", "--as USER"},
        {"locks a --admin", "--delete"},
        {"locks a --sort colour", "'colour'"},
        {"lesson a b --utf-16", "--export"},
        {"edit a", "--file COMMANDS"},
    };
    for (const auto& [line, named] : cases) {
        const Outcome outcome = RunDax(Words(line));
        EXPECT_EQ(outcome.exitCode, 2) << line;
        EXPECT_THAT(outcome.errors, HasSubstr(named));
        EXPECT_THAT(outcome.output, IsEmpty()) << line;
    }
}

} // namespace
} // namespace dax::test
