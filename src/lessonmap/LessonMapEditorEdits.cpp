// The editing part of LessonMapEditor: adding, removing, moving and checking storyboards.
#include "lessonmap/LessonMapEditor.h"

#include "lessonmap/DetachedMap.h"
#include "lessonmap/LessonMapEditorGuards.h"
#include "lessonmap/MapBuilder.h"
#include "lessonmap/modLME.h"
#include "tree/modTVW.h"
#include "tree/modTreeviewAPI.h"

namespace dax {

namespace {

std::shared_ptr<Storyboards> StoryboardsOf(const Lesson& lesson) {
    auto storyboards = lesson.Storyboards();
    if (!storyboards) Refuse(u"The lesson has no list of storyboards.");
    return storyboards;
}

// The new node is placed after the selected one; first in the default map when that is none or a map.
Node& AddNode(NodeTree& tree, const Text& sbid) {
    Node* const selected = tree.Selected();
    if (selected && selected->Parent()) return tree.Add(selected, InsertPosition::After, sbid);
    if (tree.IsEmpty()) Refuse(u"The lesson has no map that could take the storyboard.");
    return tree.Add(tree.First(), InsertPosition::FirstChild, sbid);
}

// Removes the node, with its branch or replaced by it, and returns the storyboards of the removed nodes.
IDCollection RemoveNode(NodeTree& tree, Node& node, bool includeChildren) {
    const TreeUpdate update(tree);
    IDCollection removed;
    if (includeChildren) {
        modTVW::AddSubtreeKeys(&node, removed);
    } else {
        removed.Add(node.Key());
        modTVW::MoveChildrenAfter(tree, node);
    }
    tree.Remove(node);
    modLME::UpdateMapCaptions(tree);
    return removed;
}

// The storyboards of a map that `isChosen` names, each under the nearest ancestor that is chosen, too.
template <typename Chosen>
std::vector<LayoutEntry> ChoosePlaces(const Node& root, const Chosen& isChosen) {
    std::vector<LayoutEntry> places;
    std::vector<int32_t> chosenAbove{0}; // by depth
    for (const Node* node = modTVW::GetNextNode(&root, &root); node; node = modTVW::GetNextNode(node, &root)) {
        chosenAbove.resize(static_cast<size_t>(node->Depth()));
        int32_t chosen = chosenAbove.back();
        if (isChosen(*node)) places.push_back({node->Key(), ++chosen});
        chosenAbove.push_back(chosen);
    }
    return places;
}

} // namespace

void LessonMapEditor::AddStoryboard(const StoryboardRef& storyboard) {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    StoryboardRef added = storyboard;
    if (!was || !added) return;
    bool isNew = false;
    const Text sbidBefore = CurrentSBID();
    Text sbid;
    {
        const OperationGuard busy(*this);
        const NotificationGuard silence(*this);
        sbid = added->SBID();
        if (sbid.empty()) Refuse(u"A storyboard without an SBID cannot be added.");
        const auto storyboards = StoryboardsOf(*was);
        if (tree->IsEmpty()) Refuse(u"The lesson has no map that could take the storyboard.");
        if (const Node* const node = tree->Find(sbid); node && !node->Parent()) {
            Refuse(u"The storyboard cannot be added: a map has the name '" + sbid + u"'.");
        }
        if (showDefaultMapOnly && !tree->Find(sbid)) {
            // A page that a hidden map lists moves to the one that is shown: none is in two maps. A map may also
            // list one that the lesson does not have any more.
            IDCollection moved;
            moved.Add(sbid);
            RemoveFromHiddenMaps(*tree, *was, moved, false);
        }
        if (StoryboardRef own = storyboards->Item(sbid)) {
            added = own;
        } else {
            storyboards->Add(added);
            isNew = true;
        }
        {
            const TreeUpdate update(*tree);
            Node* node = tree->Find(sbid);
            if (!node) {
                node = &AddNode(*tree, sbid);
                isNew = true;
            }
            tree->Select(node);
            modLME::UpdateMapCaptions(*tree);
            if (isNew) KeepEdit([] {});
            RecordSelection();
            UpdateCaption(sbid, *added);
        }
    }
    if (isNew && IsCurrentLesson(was)) Raise(MapChanged, mctStoryboardAdded);
    if (sbid != sbidBefore) RaiseSelectionChange(was);
}

void LessonMapEditor::UpdateCaption(const Text& sbid, const Storyboard& storyboard) {
    const auto images = imageList; // the host may set another one meanwhile
    Node* const node = tree->Find(sbid);
    if (node && node->Parent()) modLME::SetStoryboardCaption(&storyboard, *node, captionStyle, *images);
}

void LessonMapEditor::UpdateStoryboard(const StoryboardRef& storyboard) {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    if (const StoryboardRef kept = storyboard) UpdateCaption(kept->SBID(), *kept);
}

void LessonMapEditor::UpdateSBID(const Text& sbid) {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    if (const StoryboardRef found = modLME::FindStoryboard(lesson, sbid)) UpdateCaption(sbid, *found);
}

void LessonMapEditor::RemoveStoryboard(const StoryboardRef& storyboard, bool includeChildren) {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    const StoryboardRef kept = storyboard;
    if (!was || !kept) return;
    const Text sbidBefore = CurrentSBID();
    bool isOther{};
    {
        const OperationGuard busy(*this);
        const NotificationGuard silence(*this);
        const Text sbid = kept->SBID();
        const auto storyboards = StoryboardsOf(*was);
        IDCollection removed;
        const Node* const shown = tree->Find(sbid);
        bool isKnown = (shown && shown->Parent()) || storyboards->Item(sbid);
        if (!isKnown && !showDefaultMapOnly) return;
        // The maps drop the pages before the lesson does: a failure in between leaves orphans, nothing worse.
        KeepEdit([&] {
            Node* const node = tree->Find(sbid);
            const bool isShown = node && node->Parent();
            if (isShown) {
                removed = RemoveNode(*tree, *node, includeChildren);
            } else {
                removed.Add(sbid);
            }
            const bool isHidden =
                showDefaultMapOnly && RemoveFromHiddenMaps(*tree, *was, removed, includeChildren && !isShown);
            isKnown = isKnown || isHidden;
        });
        if (!isKnown) return;
        if (!includeChildren) ShowSelected();
        isOther = CurrentSBID() != sbidBefore;
        if (isOther) RecordSelection();
        for (const Text& each : removed) {
            if (storyboards->Item(each)) storyboards->Remove(each);
        }
    }
    if (IsCurrentLesson(was)) Raise(MapChanged, mctStoryboardDeleted);
    if (isOther) RaiseSelectionChange(was);
}

bool LessonMapEditor::CanMoveCurrent(StoryboardMovementTypes movement) const {
    return lesson && !dragDrop.Active() && modLME::CanMoveNode(*tree, tree->Selected(), movement);
}

void LessonMapEditor::MoveCurrent(StoryboardMovementTypes movement) {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    {
        const OperationGuard busy(*this);
        const NotificationGuard silence(*this);
        if (!CanMoveCurrent(movement)) return;
        KeepEdit([&] { modLME::MoveNode(*tree, tree->Selected(), movement); });
        ShowSelected();
    }
    if (IsCurrentLesson(was)) Raise(MapChanged, mctStoryboardMoved);
}

// Started by the user: no caller receives a failure. OnMouseUp raises the event of the selection.
void LessonMapEditor::OnDrop(Node& dragged, const DropTarget& target) {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    if (!was || !dragged.Parent()) return;
    bool isKept = false;
    ReportFailures(u"Drop", [&] {
        const OperationGuard busy(*this);
        const NotificationGuard silence(*this);
        KeepEdit([&] {
            const TreeUpdate update(*tree);
            DropNode(*tree, dragged, target);
            modLME::UpdateMapCaptions(*tree);
        });
        isKept = true;
        if (CurrentSBID() != sbidBeforeDrag) RecordSelection();
    });
    if (isKept && IsCurrentLesson(was)) Raise(MapChanged, mctStoryboardMoved);
}

void LessonMapEditor::SetAllChecks(bool checked) {
    const auto self = shared_from_this();
    const NotificationGuard silence(*this);
    const DrawingGuard drawing(*this);
    const TreeUpdate update(*tree);
    for (Node* node = tree->FirstInCollection(); node; node = node->NextInCollection()) node->SetChecked(checked);
}

std::vector<Text> LessonMapEditor::CheckedKeys() const {
    std::vector<Text> keys;
    for (const Node* node = tree->First(); node; node = modTVW::GetNextNode(node)) {
        if (node->IsChecked() && node->Parent()) keys.push_back(node->Key());
    }
    return keys;
}

std::vector<LessonMapEditor::StoryboardRef> LessonMapEditor::CheckedStoryboards() {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    std::vector<StoryboardRef> checked;
    if (!was) return checked;
    const OperationGuard busy(*this);
    SaveLayouts();
    for (const Text& key : CheckedKeys()) {
        if (StoryboardRef storyboard = modLME::FindStoryboard(was, key)) checked.push_back(std::move(storyboard));
    }
    return checked;
}

int32_t LessonMapEditor::CheckedStoryboardCount() const {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    const LessonRef was = lesson;
    int32_t count = 0;
    for (const Text& key : CheckedKeys()) count += modLME::FindStoryboard(was, key) != nullptr;
    return count;
}

std::shared_ptr<dax::Lesson> LessonMapEditor::GetCheckedLesson() {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    if (!was) return nullptr;
    const auto checked = std::make_shared<ContentLesson>();
    const OperationGuard busy(*this);
    SaveLayouts();
    // First which are checked and have a storyboard, which calls the host; then the places, which does not.
    for (const Text& key : CheckedKeys()) {
        const StoryboardRef storyboard = modLME::FindStoryboard(was, key);
        // The new lesson keeps it under the SBID that it gives itself.
        if (storyboard && storyboard->SBID() == key) checked->Storyboards()->Add(storyboard);
    }
    const auto isChosen = [&checked](const Node& node) {
        return !node.Key().empty() && checked->Storyboards()->Item(node.Key()) != nullptr;
    };
    tree->Number();
    for (const Node* root = tree->First(); root; root = root->Next()) {
        std::vector<LayoutEntry> places = ChoosePlaces(*root, isChosen);
        if (places.empty() && root != tree->First()) continue;
        const auto map = std::make_shared<ContentMap>(root->Key());
        map->SetLayout(std::move(places));
        checked->Maps()->Add(map);
        if (root == tree->First()) checked->Maps()->SetDefaultMap(map);
    }
    if (checked->Storyboards()->Item(CurrentSBID())) checked->SetCurrentSBID(CurrentSBID());
    return checked;
}

std::vector<LessonMapEditor::StoryboardRef> LessonMapEditor::OrphanedStoryboards() {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    std::vector<StoryboardRef> orphans;
    if (!was) return orphans;
    const OperationGuard busy(*this);
    SaveLayouts();
    for (const StoryboardRef& storyboard : StoryboardsOf(*was)->All()) {
        if (storyboard && !tree->Find(storyboard->SBID())) orphans.push_back(storyboard);
    }
    return orphans;
}

int32_t LessonMapEditor::GetChildStoryboardCount(const Text& sbid) const {
    return modTVW::CountDescendants(tree->Find(sbid));
}

} // namespace dax
