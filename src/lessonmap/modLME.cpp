#include "lessonmap/modLME.h"

#include "base/TextComparison.h"
#include "lessonmap/MapBuilder.h"
#include "lessonmap/NodeMapTree.h"
#include "tree/modTVW.h"

#include <exception>
#include <unordered_map>

namespace dax::modLME {

namespace {

constexpr size_t maxCaption = 80;

struct Appearance {
    Text caption;
    int image;
};

// Reads the storyboard; no node is changed yet, since the call may change the tree.
Appearance AppearanceOf(const Storyboard& storyboard, LessonMapEditorCaptionStyles captionStyle,
                        const PictureKeys& imageList) {
    Text caption = captionStyle == csIdentifier ? storyboard.Identifier() : storyboard.Title();
    if (caption.empty()) caption = captionStyle == csIdentifier ? u"(no identifier)" : u"(untitled)";
    if (caption.size() > maxCaption) caption = Text(Shorten(caption, maxCaption)) + u"...";
    return {std::move(caption), imageList.IndexOfType(storyboard.StoryboardType())};
}

// What a search looks for, prepared once.
class Criteria {
public:
    Criteria(const Text& text, FindTypes findType, bool exactMatch)
        : requested(exactMatch ? LowerCase(text) : FoldCase(text)), findType(findType), exactMatch(exactMatch) {}

    bool Match(const Storyboard& storyboard) const {
        return (IsSearched(ftTitle) && MatchField(storyboard.Title())) ||
               (IsSearched(ftIdentifier) && MatchField(storyboard.Identifier())) ||
               (IsSearched(ftID) && MatchField(storyboard.SBID()));
    }

private:
    // Deliberately "or", which always holds: all three fields are tested whatever `findType` is.
    bool IsSearched(FindTypes field) const { return (findType | field) != 0; }
    bool MatchField(const Text& field) const {
        // An exact match is of lower-cased texts and no more: "ß" and "SS" differ.
        return exactMatch ? LowerCase(field) == requested : FoldCase(field).find(requested) != Text::npos;
    }

    Text requested;
    FindTypes findType;
    bool exactMatch;
};

// Tests the nodes after `from` (null: the first of all) up to `stop`. Each is found again by its key after the host
// was called, and there are no more tests than there were nodes, whatever the host does meanwhile.
Text FindInRange(const NodeTree& tree, const std::shared_ptr<Lesson>& lesson, const Criteria& criteria,
                 const Node* from, const Text* stop) {
    int32_t left = tree.Count();
    for (const Node* node = from ? modTVW::GetNextNode(from) : tree.First(); node && left-- > 0;
         node = modTVW::GetNextNode(node)) {
        const Text key = node->Key();
        if (stop && key == *stop) return {};
        if (key.empty() || !node->Parent()) continue; // a map may have the name of an orphan
        const auto storyboard = FindStoryboard(lesson, key);
        if (storyboard && criteria.Match(*storyboard)) return storyboard->SBID();
        node = tree.Find(key);
        if (!node) return {};
    }
    return {};
}

} // namespace

bool BuildMap(NodeTree* tree, const PictureKeys& imageList, std::shared_ptr<Lesson> lesson,
              LessonMapEditorCaptionStyles captionStyle, bool showDefaultMapOnly) {
    if (!tree) return false;
    const TreeUpdate update(*tree);
    if (!lesson) {
        tree->Clear();
        return false;
    }
    const TreeState state(*tree);
    tree->Clear();
    try {
        MapBuilder builder(*tree, imageList, *lesson);
        builder.AddMaps(showDefaultMapOnly);
        for (const auto& [sbid, storyboard] : builder.Storyboards()) {
            const Appearance appearance = AppearanceOf(*storyboard, captionStyle, imageList);
            Node* const node = tree->Find(sbid);
            if (!node || !node->Parent()) continue;
            node->SetCaption(appearance.caption);
            node->SetImage(appearance.image);
        }
        builder.MarkMissing();
        builder.CheckRoots();
        UpdateMapCaptions(*tree);
        state.Restore(*tree);
        return builder.IsLessonChanged();
    } catch (...) {
        // Half a tree, written back, would lose pages.
        tree->Clear();
        throw;
    }
}

void SetStoryboardCaption(const Storyboard* storyboard, Node& node, LessonMapEditorCaptionStyles captionStyle,
                          const PictureKeys& imageList) {
    if (!storyboard) {
        SetStoryboardImage(nullptr, node, imageList);
        return;
    }
    const NodeTree& tree = node.Tree();
    const Text key = node.Key();
    const Appearance appearance = AppearanceOf(*storyboard, captionStyle, imageList);
    Node* const found = tree.Find(key);
    if (!found) return;
    const TreeUpdate update(found->Tree());
    found->SetCaption(appearance.caption);
    found->SetImage(appearance.image);
}

void SetStoryboardImage(const Storyboard* storyboard, Node& node, const PictureKeys& imageList) {
    const NodeTree& tree = node.Tree();
    const Text key = node.Key();
    const int image = imageList.IndexOfType(storyboard ? storyboard->StoryboardType() : Text());
    if (Node* const found = storyboard ? tree.Find(key) : &node) found->SetImage(image);
}

void UpdateMapCaptions(NodeTree& tree) {
    const TreeUpdate update(tree);
    for (Node* root = tree.First(); root; root = root->Next()) {
        root->SetCaption(root->Key() + u" (" + ToText(modTVW::CountDescendants(root)) + u")");
    }
}

void SaveMapLayouts(NodeTree& tree, std::shared_ptr<Lesson> lesson) {
    if (!lesson || tree.IsEmpty()) return;
    std::unordered_map<Text, std::shared_ptr<StoryboardMap>> maps;
    for (const auto& map : MapBuilder::ListMaps(*lesson)) maps.emplace(map->Name(), map);
    std::vector<Text> names;
    for (const Node* root = tree.First(); root; root = root->Next()) names.push_back(root->Key());

    std::exception_ptr failure;
    for (const Text& name : names) {
        const auto map = maps.find(name);
        const Node* const root = tree.Find(name); // the map before may have changed the tree
        if (map == maps.end() || !root || root->Parent()) continue;
        try {
            map->second->ReadLayout(NodeMapTree(tree), NodeMapTree::RefOf(root));
        } catch (...) {
            if (!failure) failure = std::current_exception();
        }
    }
    if (failure) std::rethrow_exception(failure);
}

std::shared_ptr<Storyboard> FindStoryboard(const std::shared_ptr<Lesson>& lesson, const Text& sbid) {
    if (!lesson || sbid.empty()) return nullptr;
    const std::shared_ptr<Lesson> kept = lesson;
    const auto storyboards = kept->Storyboards();
    return storyboards ? storyboards->Item(sbid) : nullptr;
}

bool CanMoveNode(const NodeTree& tree, const Node* node, StoryboardMovementTypes movement) {
    if (modTVW::IsRootNode(node)) return false;
    const Node* root = node;
    while (root->Parent()) root = root->Parent();
    switch (movement) {
    case smtUp:
    case smtDown:
    case smtIndent:
    case smtOutdent:
        return modTVW::CanMoveTreeNode(tree, node, static_cast<GroupMovementTypes>(movement));
    case smtNextMap:
        return root->Next() != nullptr;
    case smtPreviousMap:
        return root->Previous() != nullptr;
    }
    return false;
}

// The node itself is relinked with its branch; no temporary node replaces it meanwhile.
void MoveNode(NodeTree& tree, Node* node, StoryboardMovementTypes movement) {
    const TreeUpdate update(tree);
    if (movement == smtNextMap) {
        tree.Move(*node, modTVW::GetRootNode(node)->Next(), InsertPosition::FirstChild);
    } else if (movement == smtPreviousMap) {
        tree.Move(*node, modTVW::GetRootNode(node)->Previous(), InsertPosition::LastChild);
    } else {
        modTVW::MoveTreeNode(tree, node, static_cast<GroupMovementTypes>(movement));
    }
    UpdateMapCaptions(tree);
}

bool MatchStoryboard(const Node* node, const Text& criteria, FindTypes findType, bool exactMatch,
                     const std::shared_ptr<Lesson>& lesson) {
    const auto storyboard = FindStoryboard(lesson, modTVW::GetNodeKey(node));
    return storyboard && Criteria(criteria, findType, exactMatch).Match(*storyboard);
}

Text FindNextSBID(const NodeTree& tree, std::shared_ptr<Lesson> lesson, const Text& criteria, FindTypes findType,
                  bool exactMatch, bool wrapSearch) {
    if (!lesson || tree.IsEmpty()) return {};
    const Node* const start = tree.Selected() ? tree.Selected() : tree.First();
    const Text startKey = start->Key();
    const Criteria prepared(criteria, findType, exactMatch);
    const Text found = FindInRange(tree, lesson, prepared, start, nullptr);
    if (!found.empty() || !wrapSearch) return found;
    return FindInRange(tree, lesson, prepared, nullptr, &startKey);
}

} // namespace dax::modLME
