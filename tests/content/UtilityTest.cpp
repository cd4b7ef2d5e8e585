#include "content/Utility.h"

#include <gtest/gtest.h>

#include <set>

namespace dax {
namespace {

TEST(UtilityTest, IdentifiersAreUniqueKeys) {
    std::set<Text> seen;
    for (int i = 0; i < 10000; ++i) {
        const Text id = Utility::NewIdentifier();
        ASSERT_EQ(id.size(), 32u);
        ASSERT_EQ(id.find_first_not_of(u"0123456789abcdef"), Text::npos) << ToUtf8(id);
        ASSERT_TRUE(seen.insert(id).second) << "twice: " << ToUtf8(id);
    }
}

} // namespace
} // namespace dax
