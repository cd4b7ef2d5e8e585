// For a fuzzer that guides itself by coverage, link this file, the drivers and the library with -fsanitize=fuzzer and
// leave FuzzTests.cpp out.
#include "fuzz/FuzzEntry.h"

#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const dax::fuzz::Input rest(data + 1, size - 1);
    if (*data % 2 == 0) {
        static const dax::test::TestDatabase database(dax::Engine::SQLite);
        static const bool isMade = (dax::test::CreateTables(database), true);
        (void)isMade;
        dax::fuzz::DriveHierarchy(rest, database);
    } else {
        dax::fuzz::DriveLessonMap(rest);
    }
    return 0;
}
