// How many windows and GDI objects this process has, to see that none is left behind.
#pragma once

#include "controls/win32/Windows.h"

#include "../../apps/workbench/selftest/ResourceCounts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace dax::test {

inline int WindowCount() { return workbench::selftest::ResourceCounts::CountWindows(); }
inline int GdiObjectCount() { return workbench::selftest::ResourceCounts::CountGdiObjects(); }

// What it does leaves nothing behind, but for what the system makes the first times and keeps.
template <typename Cycle>
void ExpectNothingLeft(int times, const Cycle& cycle) {
    for (int count = 0; count < std::min(times, 3); ++count) cycle(count);
    const int windows = WindowCount(), objects = GdiObjectCount();
    EXPECT_GT(objects, 0);
    for (int count = 0; count < times; ++count) {
        cycle(count);
        EXPECT_EQ(WindowCount(), windows) << "time " << count;
        EXPECT_EQ(GdiObjectCount(), objects) << "time " << count;
    }
}

} // namespace dax::test
