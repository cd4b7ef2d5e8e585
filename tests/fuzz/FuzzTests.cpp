// The seeds, and a fixed number of inputs made from them or made up, the same ones at every run. DAX_FUZZ_INPUTS asks
// for so many times the number, DAX_FUZZ_SEED for other ones.
#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <vector>

namespace dax::fuzz {

namespace {

using Chosen = std::vector<uint8_t>;

unsigned Setting(const char* name, unsigned usual) {
    const char* const value = std::getenv(name);
    return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : usual;
}

std::vector<Chosen> SeedsOf(const Target& target) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(DAX_FUZZ_SEEDS) / target.name))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<Chosen> seeds;
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    return seeds;
}

// A few changes: a byte, a piece left out, a piece of this seed or another put in, a mark that means something.
Chosen Changed(const std::vector<Chosen>& seeds, std::mt19937& random) {
    const auto below = [&random](size_t number) { return static_cast<std::ptrdiff_t>(random() % number); };
    Chosen input = seeds[random() % seeds.size()];
    for (auto changes = 1 + below(4); changes > 0; --changes) {
        const auto place = input.begin() + below(input.size() + 1);
        const auto rest = static_cast<size_t>(input.end() - place);
        const Chosen& other = seeds[random() % seeds.size()];
        const auto from = other.begin() + below(other.size() + 1);
        switch (below(4)) {
        case 0:
            if (rest > 0) *place = static_cast<uint8_t>(random());
            break;
        case 1:
            input.erase(place, place + below(std::min<size_t>(rest, 20) + 1));
            break;
        case 2: {
            const Chosen piece(from, from + below(std::min<size_t>(static_cast<size_t>(other.end() - from), 40) + 1));
            input.insert(place, piece.begin(), piece.end());
            break;
        }
        default:
            input.insert(place, static_cast<uint8_t>("'\"`{}[]#;=\\\n\t/*-~ "[below(18)]));
        }
    }
    return input;
}

// What went wrong; empty when nothing did.
std::string Drive(const Target& target, Input input) {
    try {
        target.drive(input);
        return {};
    } catch (const std::exception& finding) {
        return finding.what();
    }
}

void ExpectNothing(const Target& target, const Chosen& input, const std::string& which) {
    std::string finding = Drive(target, input);
    if (finding.empty()) return;
    // The shortest beginning that is enough.
    size_t length = 0;
    for (std::string same; length < input.size() && same.empty(); ++length) {
        same = Drive(target, Input(input).first(length));
        if (!same.empty()) finding = same;
    }
    std::ostringstream bytes;
    for (size_t i = 0; i < length; ++i) bytes << (i ? "," : "") << static_cast<int>(input[i]);
    FAIL() << which << ": " << bytes.str() << "\n" << std::string(input.begin(), input.end()) << "\n" << finding;
}

class Fuzz : public ::testing::TestWithParam<Target> {};
INSTANTIATE_TEST_SUITE_P(Targets, Fuzz, ::testing::ValuesIn(Targets().begin(), Targets().end()),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(Fuzz, BreaksNoPromise) {
    const Target& target = GetParam();
    const std::vector<Chosen> seeds = SeedsOf(target);
    ASSERT_FALSE(seeds.empty());
    for (size_t i = 0; i < seeds.size(); ++i)
        ASSERT_NO_FATAL_FAILURE(ExpectNothing(target, seeds[i], "seed " + std::to_string(i)));
    std::mt19937 random(Setting("DAX_FUZZ_SEED", 1));
    for (unsigned i = 0; i < target.inputs * Setting("DAX_FUZZ_INPUTS", 1); ++i) {
        Chosen input(2 + random() % target.longest);
        for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
        if (i % 3) input = Changed(seeds, random);
        ASSERT_NO_FATAL_FAILURE(ExpectNothing(target, input, "input " + std::to_string(i)));
    }
}

// The hierarchy on the servers, where a save goes in batches: one long input each, without listeners that call back.
class FuzzOnEngine : public test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, FuzzOnEngine, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(FuzzOnEngine, HierarchyFollowsItsModel) {
    test::CreateTables(*database);
    std::mt19937 random(Setting("DAX_FUZZ_SEED", 1));
    Chosen input(1500);
    for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
    input[0] = 1;
    EXPECT_NO_THROW(DriveHierarchyOn(input, *database));
}

} // namespace

} // namespace dax::fuzz
