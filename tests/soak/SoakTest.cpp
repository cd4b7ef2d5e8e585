// The soak of tools/bench, for some seconds.

#include "soak/Soak.h"
#include "support/OwnServer.h"

namespace dax {
namespace {

TEST(Soak, FourAuthorsAndAServerThatStops) {
    if (const std::string why = test::OwnServer::SkipReason(); !why.empty()) GTEST_SKIP() << why;
    for (const bool isOnCluster : {false, true}) {
        const soak::Result result = soak::Run(3, 0, isOnCluster);
        EXPECT_EQ(result.faults, std::vector<std::string>());
        std::cout << result.summary << std::endl;
    }
}

} // namespace
} // namespace dax
