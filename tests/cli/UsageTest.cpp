// The words on the command line: help and wrong usage.
#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dax::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(UsageTest, HelpGoesToTheStandardOutput) {
    const Outcome overview = RunDax({u"--help"});
    EXPECT_EQ(overview.exitCode, 0);
    EXPECT_EQ(overview.errors, "");
    EXPECT_EQ(RunDax({u"help"}).output, overview.output);
    for (const Text& name : Words("sample create validate validate-connector catalogs pick tree lesson info find locks "
                                  "edit map copy")) {
        EXPECT_THAT(overview.output, HasSubstr("\n  " + ToUtf8(name) + " "));
        EXPECT_THAT(RunDax({name, u"-h"}).output, StartsWith("usage: dax " + ToUtf8(name) + " "));
    }
    EXPECT_EQ(RunDax({u"help", u"map"}).output, RunDax({u"map", u"a", u"--help"}).output);
}

TEST(UsageTest, WhatIsWrongIsNamed) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "usage: dax COMMAND"},
        {"vaildate", "'vaildate'. Did you mean 'validate'?"},
        {"locks a -j", "no option '-j'."},
        {"find a \"\"", "is empty"},
        {"map a b --add c --in d --after e", "only one of"},
        {"map a b --move c", "--to DIRECTION"},
        {"validate", "FILE-or-CONNECTION"},
        {"validate a b", "'b'"},
        {"validate a --catalog", "--catalog NAME"},
        {"validate a --mdb=yes", "'--mdb' takes no value"},
        {"sample a --lessons=1000001", "'1000001'"},
        {"sample a --connector --lessons 5", "--lessons"},
        {"create --print paper", "'paper'"},
        {"validate-connector a --user u", "--source"},
        {"info a --level=4", "'4'"},
        {"locks a --delete --as=", "--as USER"},
        {"locks a --admin", "--delete"},
        {"locks a --sort colour", "'colour'"},
        {"edit a", "--file COMMANDS"},
    };
    for (const auto& [line, named] : cases) {
        const Outcome outcome = RunDax(Words(line));
        EXPECT_EQ(outcome.exitCode, 2) << line;
        EXPECT_THAT(outcome.errors, HasSubstr(named));
        EXPECT_EQ(outcome.output, "") << line;
    }
}

} // namespace
} // namespace dax::test
