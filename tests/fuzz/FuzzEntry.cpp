// For a fuzzer that guides itself by coverage: the program `fuzzer` of a build with clang (tests/CMakeLists.txt), run
// as `DAX_FUZZ_TARGET=statement fuzzer FOLDER tests/fuzz/seeds/statement`.
#include "fuzz/Driver.h"

#include <cstdlib>

namespace dax::fuzz {

std::span<const Target> Targets() {
    static constexpr Target targets[] = {
        {"connection", DriveConnectionString, 1500, 120},
        {"statement", DriveStatement, 1500, 120},
        {"properties", DriveProperties, 1500, 200},
        {"lesson", DriveLesson, 1500, 200},
        {"hierarchy", DriveHierarchy, 60, 200},
        {"lessonmap", DriveLessonMap, 300, 200},
        {"locks", DriveLocks, 60, 60},
        {"file", DriveFile, 300, 30},
    };
    return targets;
}

} // namespace dax::fuzz

// Any exception that leaves it is a finding. Without a target named in the environment each is driven.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const requested = std::getenv("DAX_FUZZ_TARGET");
    for (const dax::fuzz::Target& target : dax::fuzz::Targets())
        if (!requested || std::string(target.name) == requested) target.drive({data, size});
    return 0;
}
