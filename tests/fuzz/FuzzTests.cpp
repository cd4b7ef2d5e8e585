// A fixed number of inputs, the same ones at every run. DAX_FUZZ_INPUTS asks for another number, DAX_FUZZ_SEED for
// other ones.
#include "fuzz/FuzzEntry.h"

#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <sstream>
#include <vector>

namespace {

unsigned Setting(const char* name, unsigned usual) {
    const char* const value = std::getenv(name);
    return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : usual;
}

std::string Listed(const std::vector<uint8_t>& input, size_t length) {
    std::ostringstream text;
    for (size_t i = 0; i < length; ++i) text << (i ? "," : "") << static_cast<int>(input[i]);
    return text.str();
}

// What went wrong; empty when nothing did.
std::string Drive(const std::vector<uint8_t>& input, size_t length) {
    try {
        LLVMFuzzerTestOneInput(input.data(), length);
        return {};
    } catch (const std::exception& finding) {
        return finding.what();
    }
}

void DriveMany(uint8_t driver, unsigned inputs, size_t longest) {
    std::mt19937 random(Setting("DAX_FUZZ_SEED", 1) * 2 + driver);
    for (unsigned i = 0; i < inputs; ++i) {
        std::vector<uint8_t> input(2 + random() % longest);
        for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
        input[0] = driver;
        size_t length = input.size();
        std::string finding = Drive(input, length);
        if (finding.empty()) continue;
        // The shortest beginning that is enough.
        for (size_t shorter = 2; shorter < input.size(); ++shorter) {
            const std::string same = Drive(input, shorter);
            if (same.empty()) continue;
            finding = same;
            length = shorter;
            break;
        }
        FAIL() << "input " << i << ": " << Listed(input, length) << "\n" << finding;
    }
}

TEST(Fuzz, HierarchyFollowsItsModel) { DriveMany(0, Setting("DAX_FUZZ_INPUTS", 60), 200); }

// The same against the servers, where a save goes in batches: one long input each, without listeners that call back.
class FuzzOnEngine : public dax::test::EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, FuzzOnEngine, ::testing::ValuesIn(dax::test::AllEngines()), dax::test::EngineName);

TEST_P(FuzzOnEngine, HierarchyFollowsItsModel) {
    dax::test::CreateTables(*database);
    std::mt19937 random(Setting("DAX_FUZZ_SEED", 1));
    std::vector<uint8_t> input(1500);
    for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
    input[0] = 1;
    EXPECT_NO_THROW(dax::fuzz::DriveHierarchy(input, *database));
}

TEST(Fuzz, LessonMapStaysConsistent) { DriveMany(1, Setting("DAX_FUZZ_INPUTS", 60) * 4, 200); }

} // namespace
