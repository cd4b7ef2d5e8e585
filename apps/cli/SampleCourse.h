// A made-up course that looks like a real one: titles in several scripts, nested groups, locks of every kind.
#pragma once

#include "base/Value.h"

#include <functional>

namespace dax::cli {

struct SampleCounts {
    size_t lessons = 0, groups = 0, milestones = 0, locks = 0, posts = 0;
};

// Hands the statements that fill an empty content database to `take`, one after the other. The same course for the
// same number of lessons, but for the dates, which lie before `now`.
SampleCounts WriteSampleCourse(size_t lessons, const DateTime& now, bool isMDB, const std::function<void(Text)>& take);

struct SampleConnectorCounts {
    size_t users = 0, catalogs = 0;
};

// The same for a connector: a super user, users with every right, one without any. The login is that of its catalogs.
SampleConnectorCounts WriteSampleConnector(const DateTime& now, bool isMDB, const Text& login, const Text& password,
                                           const std::function<void(Text)>& take);

// `seconds` before a moment.
constexpr long long Minute = 60, Hour = 60 * Minute, Day = 24 * Hour;
DateTime Before(const DateTime& moment, long long seconds);

} // namespace dax::cli
