// Courses of any size, and what is done with each of them in several measurements.
#pragma once

#include "Measure.h"

#include "hierarchy/GroupEditor.h"

namespace dax::bench {

// A database with an ordinary tree: ten children to a node. Made at the first call and kept.
const test::TestDatabase& Hierarchy(int64_t size, Engine engine = Engine::SQLite);

// An editor that has loaded it; where that fails, the measurement is skipped with the reason.
std::shared_ptr<GroupEditor> Loaded(const test::TestDatabase& database, int64_t size, benchmark::State& state);

// The updates that a save of it sends.
std::vector<Text> UpdatesOf(GroupEditor& editor);

// The rows of a tree in the order in which they can be joined to one.
inline constexpr const char* treeQuery =
    "SELECT lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, indentLevel, sortPosition, lessonType "
    "FROM velmoraLessons ORDER BY indentLevel, sortPosition";

// The numbers of lessons that are measured, each with its number of turns.
inline constexpr std::pair<int64_t, int64_t> sizes[] = {{10'000, 25}, {100'000, 7}, {1'000'000, 3}};

// A measurement whose work decides how often it is done.
template <typename Measurement>
void Register(const std::string& name, Measurement measurement, int64_t turns) {
    benchmark::RegisterBenchmark(name.c_str(), measurement)->Iterations(turns)->Repetitions(1);
}

} // namespace dax::bench
