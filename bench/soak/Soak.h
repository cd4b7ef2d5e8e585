// Four authors at work on one catalog at the same time: on a PostgreSQL server of their own, which stops in the middle,
// or on the three nodes of a MariaDB cluster, of which one is killed and started again.
#pragma once

#include <string>
#include <vector>

namespace dax::soak {

struct Result {
    std::vector<std::string> faults; // empty: all is well
    std::string summary;             // for people
};

// So many rounds of each author before the server stops and as many after it; with `minutes` that long instead.
// A short run of the same precedes it, so that what is held at the end can be compared with what was held then.
// Throws std::runtime_error when the server does not start.
Result Run(int rounds, double minutes = 0, bool isOnCluster = false);

} // namespace dax::soak
