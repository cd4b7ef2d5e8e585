// The rows of velmoraLessons as a tree, and the tree as rows.
#pragma once

#include "base/Enumerations.h"
#include "base/IDCollection.h"
#include "content/LessonPropertyStore.h"
#include "hierarchy/RowFingerprints.h"
#include "tree/NodeTree.h"

namespace dax {

// Receives the progress of a long operation. It must not call the component back.
using HierarchyProgress = std::function<void(int64_t done, int64_t total)>; // total 0: not known

namespace HierarchyRows {

// The node pictures, by their index in the picture list, from 1.
enum Pictures : int { picDatabase = 1, picGroup = 2, picLesson = 3, picOther = 4 };

int PictureOf(int32_t lessonType);
// The type is read back from the picture: every type but group and lesson comes back as ltUnknown.
LessonTypes TypeOf(const Node& node);

// Adds the rows under the tree's root, in the order in which the database gives them: shallowest first. A row whose
// parent is not there (yet) comes to the top level. Throws Error; one of a row with an empty identifier, or one that
// another row has, names the row. What was added by then stays. `known` gets the rows' fingerprints.
void Load(const Text& connectionString, NodeTree& tree, LessonPropertyStore& store, RowFingerprints& known,
          const HierarchyProgress& progress = {});

// Deletes, inserts and rewrites rows in one transaction: all or nothing. Throws Error; with `checks`, when the rows are
// no longer the known ones. When it succeeds `known` is what was written.
void Save(const Text& connectionString, NodeTree& tree, const IDCollection& deleted, const IDCollection& added,
          RowFingerprints& known, bool checks, const HierarchyProgress& progress = {});

} // namespace HierarchyRows

} // namespace dax
