// The seeds, and a fixed number of inputs made from them or made up, the same ones at every run. DAX_FUZZ_INPUTS sets
// for so many times the number, DAX_FUZZ_SEED for other ones.
#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace dax::fuzz {

namespace {

std::vector<std::string> SeedsOf(const Target& target) {
    const std::filesystem::directory_iterator folder(std::filesystem::path(DAX_FUZZ_SEEDS) / target.name);
    std::vector<std::string> seeds;
    for (const auto& file : std::set<std::filesystem::path>(begin(folder), end(folder))) {
        seeds.push_back(test::ReadFile(file));
        seeds.back().pop_back(); // the line's end
    }
    return seeds;
}

std::string RandomInput(size_t length, std::mt19937& random) {
    std::string input(length, ' ');
    for (char& byte : input) byte = static_cast<char>(random());
    return input;
}

// A few changes: something left out, a byte put in, a mark that means something, or a piece of this seed or another.
std::string Changed(const std::vector<std::string>& seeds, std::mt19937& random) {
    std::string input = seeds[random() % seeds.size()];
    for (auto changes = 1 + random() % 4; changes > 0; --changes) {
        const std::string& other = seeds[random() % seeds.size()];
        const std::string pieces[] = {"",
                                      RandomInput(1, random),
                                      {"'\"`{}[]#;=\\\n\r\t/*- "[random() % 18]},
                                      other.substr(random() % (other.size() + 1), random() % 40)};
        const std::string& piece = pieces[random() % 4];
        const size_t gone = piece.empty() ? 1 + random() % 20 : random() % 2;
        input.replace(random() % (input.size() + 1), gone, piece);
    }
    return input;
}

Input BytesOf(const std::string& input) { return {reinterpret_cast<const uint8_t*>(input.data()), input.size()}; }

// What went wrong; empty when nothing did.
std::string FindingOf(const Target& target, const std::string& input) {
    try {
        target.drive(BytesOf(input));
        return {};
    } catch (const std::exception& finding) {
        return finding.what();
    }
}

void ExpectNothing(const Target& target, const std::string& input) {
    if (FindingOf(target, input).empty()) return;
    // The shortest beginning that is enough.
    std::string start;
    for (; start.size() < input.size() && FindingOf(target, start).empty(); start += input[start.size()]) {
    }
    FAIL() << testing::PrintToString(start) << "\n" << FindingOf(target, start);
}

class Fuzz : public ::testing::TestWithParam<Target> {};
INSTANTIATE_TEST_SUITE_P(Targets, Fuzz, ::testing::ValuesIn(Targets().begin(), Targets().end()),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(Fuzz, KeepsTheInvariants) {
    const Target& target = GetParam();
    const std::vector<std::string> seeds = SeedsOf(target);
    ASSERT_FALSE(seeds.empty());
    for (const std::string& seed : seeds) ASSERT_NO_FATAL_FAILURE(ExpectNothing(target, seed));
    std::mt19937 random(static_cast<unsigned>(test::Setting("DAX_FUZZ_SEED", 1)));
    for (int i = 0; i < target.inputs * test::Setting("DAX_FUZZ_INPUTS", 1); ++i) {
        const std::string input = i % 3 ? Changed(seeds, random) : RandomInput(2 + random() % target.longest, random);
        ASSERT_NO_FATAL_FAILURE(ExpectNothing(target, input)) << "input " << i;
    }
}

// The hierarchy on the servers, where a save is sent in batches: one long input each, without listeners that call back.
class FuzzOnEngine : public test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, FuzzOnEngine, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(FuzzOnEngine, HierarchyFollowsItsModel) {
    test::CreateTables(*database);
    std::mt19937 random(static_cast<unsigned>(test::Setting("DAX_FUZZ_SEED", 1)));
    EXPECT_NO_THROW(DriveHierarchyOn(BytesOf("\1" + RandomInput(1500, random)), *database));
}

} // namespace

} // namespace dax::fuzz
