// The lesson map on a tree of nodes: one top-level node per map, keyed by its name, and below it a node per
// storyboard, keyed by SBID. Content objects are a host's: their exceptions reach the caller, and they may
// change the tree while they are called.
#pragma once

#include "base/Enumerations.h"
#include "content/Lesson.h"
#include "lessonmap/PictureKeys.h"
#include "tree/NodeTree.h"

namespace dax::modLME {

// Rebuilds the tree; expansion, checks and selection stay with the keys that are still there, and a map that was
// not shown before is expanded. True when the lesson had to be repaired: it got its first map, or a map a name that
// neither another map nor a storyboard has. When anything fails the tree is empty.
bool BuildMap(NodeTree* tree, const PictureKeys& imageList, std::shared_ptr<Lesson> lesson,
              LessonMapEditorCaptionStyles captionStyle, bool showDefaultMapOnly);

// Caption and picture of one node. Null is a storyboard that is missing: it has a picture, but no caption.
void SetStoryboardCaption(const Storyboard* storyboard, Node& node, LessonMapEditorCaptionStyles captionStyle,
                          const PictureKeys& imageList);
void SetStoryboardImage(const Storyboard* storyboard, Node& node, const PictureKeys& imageList);
void UpdateMapCaptions(NodeTree& tree); // name and number of storyboards of each map

// Passes each map its part of the tree. All maps are called, even when one fails; then the first failure is thrown.
void SaveMapLayouts(NodeTree& tree, std::shared_ptr<Lesson> lesson);

// Null: no lesson, or none of that SBID.
std::shared_ptr<Storyboard> FindStoryboard(const std::shared_ptr<Lesson>& lesson, const Text& sbid);

bool CanMoveNode(const NodeTree& tree, const Node* node, StoryboardMovementTypes movement);
// Only where CanMoveNode is true.
void MoveNode(NodeTree& tree, Node* node, StoryboardMovementTypes movement);

// Whether title, identifier or SBID of the node's storyboard holds the criteria or, with `exactMatch`, is the criteria,
// whatever the case. `findType` deliberately does not narrow the search.
bool MatchStoryboard(const Node* node, const Text& criteria, FindTypes findType, bool exactMatch,
                     const std::shared_ptr<Lesson>& lesson);
// The first match after the selected node, which is never the result itself; empty when there is none.
Text FindNextSBID(const NodeTree& tree, std::shared_ptr<Lesson> lesson, const Text& criteria, FindTypes findType,
                  bool exactMatch, bool wrapSearch);

} // namespace dax::modLME
