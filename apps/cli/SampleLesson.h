// What is in a lesson of the sample course: its pages, its maps, its properties, in the stored form.
#pragma once

#include "base/Value.h"

#include <cstdint>

namespace dax::cli {

// Evenly spread bits of a counter: identifiers that look like real ones and are the same each time.
uint64_t MixBits(uint64_t number);

struct SampleLesson {
    Text text; // as lessonData keeps it
    Text firstSBID;
    size_t storyboards = 0; // that are in a map
};

// The same for the same number. Most have a second map, some a page within a page, a page that no map shows, a map
// without pages.
SampleLesson MakeSampleLesson(size_t number, TextView code);

// As lessonProperties keeps them.
Text SampleProperties(size_t number, size_t storyboards, const DateTime& now);

TextView SampleAuthor(size_t number);

} // namespace dax::cli
