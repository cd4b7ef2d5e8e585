// For a fuzzer that guides itself by coverage: the program `fuzzer` of a build with clang (tests/CMakeLists.txt), run
// as `DAX_FUZZ_TARGET=statement fuzzer -only_ascii=1 FOLDER tests/fuzz/seeds/statement`.
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

Text TextOf(Input input) {
    if (!input.empty() && input.back() == '\n') input = input.first(input.size() - 1);
    const Text all = FromUtf8({reinterpret_cast<const char*>(input.data()), input.size()});
    Text text;
    for (size_t i = 0; i < all.size(); ++i) {
        unsigned unit = 0;
        size_t digits = 0;
        if (all[i] == u'~') {
            for (; digits < 4 && i + 1 + digits < all.size(); ++digits) {
                const size_t value = TextView(u"0123456789ABCDEF").find(all[i + 1 + digits]);
                if (value == TextView::npos) break;
                unit = unit * 16 + static_cast<unsigned>(value);
            }
        }
        text.push_back(digits == 4 ? static_cast<char16_t>(unit) : all[i]);
        if (digits == 4) i += 4;
    }
    return text;
}

} // namespace dax::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Any exception that leaves it is a finding. Without a target named in the environment the first byte chooses it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const wanted = std::getenv("DAX_FUZZ_TARGET");
    const auto targets = dax::fuzz::Targets();
    for (const dax::fuzz::Target& target : targets) {
        if (!wanted || std::string(target.name) != wanted) continue;
        target.drive({data, size});
        return 0;
    }
    if (size > 0) targets[*data % targets.size()].drive({data + 1, size - 1});
    return 0;
}
